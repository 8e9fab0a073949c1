#include "shell/terminal_sender.h"

#include "link/target_link.h"
#include "link/target_state.h"
#include "notice/error.h"
#include "persist/chars.h"
#include "persist/hex_text.h"
#include "platform/files.h"
#include "platform/format.h"
#include "serial/sio.h"
#include "serial/sio_line.h"
#include "target/worker.h"

#include <algorithm>
#include <optional>
#include <vector>

namespace {

constexpr size_t kMostHexBytes = 4096;
constexpr size_t kMostBytesATurn = 8192;
constexpr uint32_t kSentPartOfTurn = 80; // percent of what the line takes meanwhile

struct SendJob {
    std::string name;
    FileReader file;
    std::vector<uint8_t> bytes; // in place of a file
    uint64_t size = 0;
    uint64_t sent = 0;
};
std::optional<SendJob> sendJob;

// Why the terminal cannot send now; empty when nothing is known to be in the way.
std::string whyNotSent() {
    if (TARGET_State().LinkState != LINK_IDLE) {
        return "the connection to the chip has the port";
    }
    if (BOOT_IsChipInRom()) {
        return "the chip is in its boot ROM until Start Application or a reset";
    }
    return SIO_IsOpen() && !SIO_IsLost() ? std::string() : SIO_GetRefusal();
}

void reportUnsent(const std::string& what, const std::string& reason) {
    ERROR_Out(nullptr, formatText("%s (%s)", what.c_str(), reason.c_str()), 1);
}

void endUnsent(const std::string& reason) {
    const std::string what = "Not all was sent: " + TERMSEND_Progress();
    sendJob.reset(); // before a box in which the next turn comes
    reportUnsent(what, reason);
}

size_t bytesATurn() {
    constexpr size_t kMeasured = 10'000; // bytes
    const uint64_t ms = std::max(SIO_TransferMs(kMeasured), 1U);
    const uint64_t bytes = kMeasured * kTermSendTurnMs * kSentPartOfTurn / 100 / ms;
    return std::clamp<size_t>(bytes, 1, kMostBytesATurn);
}

// The next portion of the job; empty at its end, none on a failure.
std::optional<std::vector<uint8_t>> nextPortion() {
    std::vector<uint8_t> portion(bytesATurn());
    if (sendJob->file.size() == 0) {
        const auto sent = static_cast<size_t>(sendJob->sent);
        const size_t count = std::min(portion.size(), sendJob->bytes.size() - sent);
        const auto begin = sendJob->bytes.begin() + static_cast<ptrdiff_t>(sent);
        return std::vector(begin, begin + static_cast<ptrdiff_t>(count));
    }
    const ptrdiff_t count =
        sendJob->file.read({reinterpret_cast<char*>(portion.data()), portion.size()});
    if (count < 0) {
        return std::nullopt;
    }
    portion.resize(static_cast<size_t>(count));
    return portion;
}

// Where the digits are wrong; empty when they are pairs.
std::string hexFault(std::string_view text) {
    size_t digits = 0;
    for (size_t i = 0; i < text.size(); ++i) {
        if (isBlank(text[i])) {
            continue;
        }
        if (hexDigitValue(text[i]) < 0) {
            return formatText("No hex digit at character %zu", i + 1);
        }
        ++digits;
    }
    return digits % 2 == 0 ? std::string()
                           : formatText("A hex digit is missing: %zu make no pairs", digits);
}

} // namespace

bool TERMSEND_File(const std::string& path) {
    SendJob job;
    job.name = std::filesystem::path(path).filename().string();
    std::string reason;
    if (sendJob) {
        reason = "something is being sent already";
    } else if (FILES_IsStream(path)) {
        reason = "it is a device or a pipe";
    } else if (const FileResult opened = job.file.open(path); !opened.ok()) {
        reason = opened.reason;
    } else {
        job.size = job.file.size();
        reason = job.size == 0 ? "it is empty" : whyNotSent();
    }
    if (!reason.empty()) {
        reportUnsent("The file cannot be sent: " + path, reason);
        return false;
    }
    sendJob = std::move(job);
    return true;
}

bool TERMSEND_Hex(std::string_view text, std::string& error) {
    error = sendJob ? "Something is being sent already" : hexFault(text);
    std::string digits(text);
    std::erase_if(digits, isBlank);
    SendJob job;
    if (error.empty()) {
        job.bytes = HEXTEXT_ToBytes(digits, kMostHexBytes, error);
    }
    if (error.empty()) {
        error = job.bytes.empty() ? "No hex digits" : whyNotSent();
    }
    if (!error.empty()) {
        return false;
    }
    job.name = "Hex string";
    job.size = job.bytes.size();
    sendJob = std::move(job);
    return true;
}

void TERMSEND_Turn() {
    if (!sendJob) {
        return;
    }
    const auto portion = nextPortion();
    if (!portion) {
        endUnsent(sendJob->file.failure().reason);
        return;
    }
    if (!portion->empty() && !TARGET_TerminalWrite(*portion)) {
        const std::string reason = whyNotSent();
        endUnsent(reason.empty() ? "the port did not take it" : reason);
        return;
    }
    sendJob->sent += portion->size();
    if (portion->empty() || sendJob->sent >= sendJob->size) {
        sendJob.reset();
    }
}

bool TERMSEND_IsRunning() {
    return sendJob.has_value();
}

void TERMSEND_Cancel() {
    sendJob.reset();
}

std::string TERMSEND_Progress() {
    return sendJob ? formatText("%s: %llu of %llu bytes sent", sendJob->name.c_str(),
                                static_cast<unsigned long long>(sendJob->sent),
                                static_cast<unsigned long long>(sendJob->size))
                   : std::string();
}
