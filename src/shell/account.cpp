#include "shell/account.h"

#include "data/sha256.h"
#include "notice/run.h"
#include "platform/clock.h"
#include "platform/files.h"
#include "shell/run_words.h"

#include <array>
#include <mutex>
#include <utility>

namespace {

constexpr size_t kReadBytes = 1 << 16;

std::mutex accountMutex;
Account account;
std::string currentStage;
Moment runBegun;
Moment tryBegun;
Moment commandBegun;
bool commandRuns = false;

double secondsSince(Moment moment) {
    return static_cast<double>(CLOCK_Now().us - moment.us) / 1e6;
}

// With the lock held; an account that was never begun has a try of its own.
AccountedTry& present() {
    if (account.tries.empty()) {
        account.tries.emplace_back();
    }
    return account.tries.back();
}

// With the lock held.
void failsHere() {
    if (present().stage.empty()) {
        present().stage = currentStage;
    }
}

// Size and digest of a file; neither when it cannot be read again.
AccountedFile describe(const std::string& path) {
    AccountedFile file{path, {}, {}};
    FileReader reader;
    if (FILES_IsStream(path) || !reader.open(path).ok()) {
        return file;
    }
    Sha256 digest;
    uint64_t bytes = 0;
    std::array<char, kReadBytes> buffer{};
    ptrdiff_t count = 0;
    while ((count = reader.read(buffer)) > 0) {
        digest.add(std::span(buffer).first(static_cast<size_t>(count)));
        bytes += static_cast<uint64_t>(count);
    }
    if (count == 0) {
        file.bytes = bytes;
        file.sha256 = digest.finish();
    }
    return file;
}

} // namespace

void ACCOUNT_Begin() {
    const std::lock_guard lock(accountMutex);
    account = {};
    present();
    currentStage = "start";
    runBegun = CLOCK_Now();
    tryBegun = runBegun;
    commandRuns = false;
}

Account ACCOUNT_Get() {
    const std::lock_guard lock(accountMutex);
    if (RUN_GetExitCode() != 0) {
        failsHere(); // nothing was reported: the user has interrupted it
    }
    present().seconds = secondsSince(tryBegun);
    account.seconds = secondsSince(runBegun);
    return account;
}

void ACCOUNT_Stage(const std::string& stage) {
    const std::lock_guard lock(accountMutex);
    currentStage = stage;
}

void ACCOUNT_CommandStarts(const Command& command) {
    const std::lock_guard lock(accountMutex);
    currentStage = command.line.name;
    commandBegun = CLOCK_Now();
    commandRuns = true;
}

void ACCOUNT_CommandEnds(const Command& command) {
    const std::lock_guard lock(accountMutex);
    AccountedCommand entry{command.line.name};
    if (std::exchange(commandRuns, false)) {
        const bool passed = RUN_GetExitCode() == 0;
        entry.outcome = passed ? Outcome::passed : Outcome::failed;
        entry.seconds = secondsSince(commandBegun);
        if (!passed) {
            failsHere();
        }
    }
    present().commands.push_back(std::move(entry));
    currentStage = "end";
}

void ACCOUNT_NextTry() {
    const std::lock_guard lock(accountMutex);
    present().seconds = secondsSince(tryBegun);
    account.tries.emplace_back();
    account.patches.clear();
    tryBegun = CLOCK_Now();
}

void ACCOUNT_File(const std::string& path) {
    if (RUNWORDS_Get().resultPath.empty()) {
        return;
    }
    AccountedFile file = describe(path);
    const std::lock_guard lock(accountMutex);
    account.files.push_back(std::move(file));
}

void ACCOUNT_Patch(AccountedPatch patch) {
    const std::lock_guard lock(accountMutex);
    account.patches.push_back(std::move(patch));
}

void ACCOUNT_Error(const std::string& text, const std::string& hint) {
    const std::lock_guard lock(accountMutex);
    failsHere();
    present().errors.push_back(text);
    if (!hint.empty()) {
        present().hints.push_back(hint);
    }
}

void ACCOUNT_Note(const std::string& text) {
    const std::lock_guard lock(accountMutex);
    account.notes.push_back(text);
}
