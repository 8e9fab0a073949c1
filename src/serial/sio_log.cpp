#include "serial/sio_log.h"

#include "notice/log.h"
#include "platform/clock.h"
#include "platform/files.h"
#include "platform/format.h"
#include "serial/poll_fold.h"

#include <atomic>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace {

constexpr int64_t kClosePauseMs = 100;

// The file is shared by the two threads. What cannot be written is told outside the lock.
std::mutex logMutex;
std::optional<AppendFile> logFile; // there while logging is on, even when it could not be created
std::atomic<bool> loggingOn{false};
uint32_t startTick = 0;
std::string transcript;   // the path of a log of this run alone
std::string cannotCreate; // why there is no file
uint64_t lostEntries = 0; // since logging was started
PollFold polls;
thread_local bool polling = false; // the calling thread's entries belong to a poll

// With the lock held.
std::string logPath() {
    return transcript.empty() ? FILES_KeptFile(Kept::state, "sio") : transcript;
}

std::string ruleLine() {
    return std::string(56, '-') + "\r\n";
}

std::string headerText() {
    return formatText("%s communication protocoll file, compiled at ",
                      FILES_ProgramBaseName().c_str()) +
           LOG_BuildTime() + "\r\n" + LOG_HeaderBlock() + ruleLine() +
           "H:MM:SS: MS  Len Dir   Data/Event\r\n" + ruleLine();
}

// With the lock held and logging on. What there is to tell: only the first failure is, the run
// needs no communication log.
std::string writeOrCount(std::string_view text) {
    FileResult result{FileStatus::failed, cannotCreate};
    if (logFile->isOpen()) {
        result = logFile->write(text);
    }
    if (result.ok() || lostEntries++ > 0) {
        return {};
    }
    return formatText("The communication log cannot be written (%s: %s); the run goes on",
                      logPath().c_str(), result.reason.c_str());
}

void tell(const std::string& problem) {
    if (!problem.empty()) {
        LOG_Add(problem);
    }
}

// With the lock held and logging on: lets `step` have its way with the polls and writes what it
// gives out. One entry, one write; the stamp has the form of those in the program's log.
template <typename Step>
std::string writeWhatIsDue(const Step& step) {
    std::vector<LogEntry> due;
    step(CLOCK_Tick() - startTick, due);
    std::string problem;
    for (const LogEntry& entry : due) {
        const std::string told = writeOrCount(LOG_Stamp(entry.atMs) + " " + entry.text + "\r\n");
        problem = problem.empty() ? told : problem;
    }
    return problem;
}

// Logging may stop while the other thread is about to add an entry: it is dropped.
template <typename Step>
void withPolls(const Step& step) {
    std::string problem;
    {
        const std::lock_guard lock(logMutex);
        if (logFile) {
            problem = writeWhatIsDue(step);
        }
    }
    tell(problem);
}

void writeEntry(std::string text) {
    withPolls([&text](uint32_t nowMs, std::vector<LogEntry>& due) {
        polls.take({nowMs, std::move(text)}, polling, due);
    });
}

void flushPolls(uint32_t, std::vector<LogEntry>& due) {
    polls.flush(due);
}

} // namespace

void SIO_EnableLogging() {
    std::string problem;
    {
        const std::lock_guard lock(logMutex);
        if (logFile) {
            return;
        }
        cannotCreate = logFile.emplace().create(logPath()).reason;
        startTick = CLOCK_Tick();
        lostEntries = 0;
        polls = {};
        problem = writeOrCount(headerText());
    }
    loggingOn = true;
    LOG_Add("SIO-Logging started");
    tell(problem);
}

FileResult SIO_StartTranscript(const std::string& path) {
    {
        const std::lock_guard lock(logMutex);
        transcript = path;
    }
    SIO_EnableLogging();
    const std::lock_guard lock(logMutex);
    return {cannotCreate.empty() ? FileStatus::ok : FileStatus::failed, cannotCreate};
}

void SIO_EndTranscript() {
    {
        const std::lock_guard lock(logMutex);
        transcript.clear();
    }
    SIO_DisableLogging();
}

void SIO_DisableLogging() {
    {
        const std::lock_guard lock(logMutex);
        if (!transcript.empty()) {
            return;
        }
    }
    if (!loggingOn.exchange(false)) {
        return;
    }
    std::string problem;
    bool wasOpen = false;
    {
        const std::lock_guard lock(logMutex);
        wasOpen = logFile->isOpen();
        problem = writeWhatIsDue(flushPolls);
        const std::string atRule = writeOrCount(ruleLine());
        problem = problem.empty() ? atRule : problem;
        static_cast<void>(logFile->flush()); // what did not reach the disk is not missed
    }
    tell(problem);
    if (wasOpen) {
        CLOCK_Sleep(kClosePauseMs);
    }
    {
        const std::lock_guard lock(logMutex);
        logFile.reset();
    }
    SIO_TellLostEntries();
    LOG_Add("SIO-Logging stopped");
}

void SIO_FlushLog() {
    if (loggingOn) {
        withPolls(flushPolls);
    }
}

SioLogPoll::SioLogPoll() {
    polling = loggingOn;
    if (polling) {
        withPolls([](uint32_t, std::vector<LogEntry>&) { polls.beginPoll(); });
    }
}

SioLogPoll::~SioLogPoll() {
    if (std::exchange(polling, false)) {
        withPolls([](uint32_t nowMs, std::vector<LogEntry>& due) { polls.endPoll(nowMs, due); });
    }
}

void SIO_TellLostEntries() {
    SIO_FlushLog();
    uint64_t lost = 0;
    {
        const std::lock_guard lock(logMutex);
        lost = std::exchange(lostEntries, 0);
    }
    if (lost > 0) {
        LOG_Add(formatText("%ju entries of the communication log were lost", uintmax_t{lost}));
    }
}

void _LogEvent(std::string_view text) {
    if (loggingOn) {
        writeEntry("           " + formatPrintable(text, LineEnds::shown));
    }
}

void _LogData(std::span<const uint8_t> bytes, std::string_view direction) {
    if (!loggingOn) {
        return;
    }
    static constexpr char kDigits[] = "0123456789ABCDEF";
    std::string text = formatText("%4zu %.*s ", bytes.size(), static_cast<int>(direction.size()),
                                  direction.data());
    text.reserve(text.size() + 3 * bytes.size());
    for (const uint8_t byte : bytes) {
        text += kDigits[byte >> 4];
        text += kDigits[byte & 0x0F];
        text += ' ';
    }
    writeEntry(std::move(text));
}
