#include "notice/log.h"

#include "platform/clock.h"
#include "platform/files.h"
#include "platform/format.h"

#include <mutex>

namespace {

std::mutex logMutex;
AppendFile logFile;
uint32_t logStartTick = 0;
LogObserver logObserver;

void add(const std::string& text) {
    const std::lock_guard lock(logMutex);
    const std::string line = LOG_Stamp(CLOCK_Tick() - logStartTick) + " " + text;
    if (logObserver) {
        logObserver(line, text);
    }
    logFile.write(line + "\r\n");
}

} // namespace

FileResult LOG_Init(const std::string& path) {
    const std::lock_guard lock(logMutex);
    FileResult created = logFile.create(path.empty() ? FILES_KeptFile(Kept::state, "log") : path);
    logFile.write(formatText("%s log file, compiled at ", FILES_ProgramBaseName().c_str()) +
                  LOG_BuildTime() + "\r\n" + LOG_HeaderBlock());
    return created;
}

void LOG_Exit() {
    const std::lock_guard lock(logMutex);
    logFile.write(LOG_Rule());
    logFile.close();
}

void LOG_RestartClock() {
    const std::lock_guard lock(logMutex);
    logStartTick = CLOCK_Tick();
}

void LOG_Add(std::string_view text) {
    add(formatPrintable(text, LineEnds::shown));
}

void LOG_AddMessage(std::string_view text) {
    add(formatPrintable(text, LineEnds::stay));
}

void LOG_SetObserver(LogObserver newObserver) {
    const std::lock_guard lock(logMutex);
    logObserver = std::move(newObserver);
}
