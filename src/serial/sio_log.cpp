#include "serial/sio_log.h"

#include "notice/error.h"
#include "notice/log.h"
#include "platform/clock.h"
#include "platform/files.h"
#include "platform/format.h"

#include <atomic>
#include <mutex>
#include <optional>
#include <string>

namespace {

constexpr int64_t kClosePauseMs = 100;

// The file is shared by the two threads. Errors are reported outside the lock, because the one who
// hears of them may itself be using the port.
std::mutex logMutex;
std::optional<AppendFile> logFile; // there while logging is on, even when it could not be created
std::atomic<bool> loggingOn{false};
uint32_t startTick = 0;

std::string ruleLine() {
    return std::string(56, '-') + "\r\n";
}

std::string headerText() {
    return formatText("%s communication protocoll file, compiled at ",
                      FILES_ProgramBaseName().c_str()) +
           LOG_BuildTime() + "\r\n" + LOG_HeaderBlock() + ruleLine() +
           "H:MM:SS: MS  Len Dir   Data/Event\r\n" + ruleLine();
}

// With the lock held and logging on: nothing, or what to report.
const char* writeProblem(std::string_view text) {
    const bool written = logFile->isOpen() && logFile->write(text).ok();
    return written ? nullptr : "SIO::_Write2Logfile: WriteFile failed";
}

void report(const char* problem) {
    if (problem != nullptr) {
        ERROR_Out(nullptr, problem, 1);
    }
}

void _Write2Logfile(std::string_view text) {
    const char* problem = "SIO::_Write2Logfile: _Invalid handle";
    {
        const std::lock_guard lock(logMutex);
        if (logFile) {
            problem = writeProblem(text);
        }
    }
    report(problem);
}

// One entry, one write. Logging may stop while the other thread is about to add one: it is dropped.
// The stamp has the form of those in the program's log.
void writeEntry(const std::string& text) {
    const char* problem = nullptr;
    {
        const std::lock_guard lock(logMutex);
        if (logFile) {
            problem = writeProblem(LOG_Stamp(CLOCK_Tick() - startTick) + " " + text + "\r\n");
        }
    }
    report(problem);
}

} // namespace

void SIO_EnableLogging() {
    bool created = false;
    {
        const std::lock_guard lock(logMutex);
        if (logFile) {
            return;
        }
        created = logFile.emplace().create(FILES_BesideProgram("sio")).ok();
        startTick = CLOCK_Tick();
    }
    if (created) {
        _Write2Logfile(headerText());
    }
    loggingOn = true;
    LOG_Add("SIO-Logging started");
}

void SIO_DisableLogging() {
    if (!loggingOn.exchange(false)) {
        return;
    }
    const char* problem = nullptr;
    bool wasOpen = false;
    {
        const std::lock_guard lock(logMutex);
        wasOpen = logFile->isOpen();
        problem = wasOpen ? writeProblem(ruleLine()) : nullptr;
        if (wasOpen && !logFile->flush().ok() && problem == nullptr) {
            problem = "SIO::SIO_DisableLogging: FlushFileBuffers failed";
        }
    }
    report(problem);
    if (wasOpen) {
        CLOCK_Sleep(kClosePauseMs);
    }
    {
        const std::lock_guard lock(logMutex);
        logFile.reset();
    }
    LOG_Add("SIO-Logging stopped");
}

void _LogEvent(std::string_view text) {
    if (loggingOn) {
        writeEntry("           " + std::string(text));
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
    writeEntry(text);
}
