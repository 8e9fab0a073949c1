#include "notice/log.h"

#include "platform/clock.h"
#include "platform/files.h"
#include "platform/format.h"

#include <mutex>

namespace {

std::mutex logMutex;
AppendFile file;
uint32_t startTick = 0;
LogObserver observer;

} // namespace

void LOG_Init() {
    const std::lock_guard lock(logMutex);
    file.create(FILES_BesideProgram("log"));
    file.write(formatText("%s log file, compiled at ", FILES_ProgramBaseName().c_str()) +
               LOG_BuildTime() + "\r\n" + LOG_HeaderBlock());
}

void LOG_Exit() {
    const std::lock_guard lock(logMutex);
    file.write(LOG_Rule());
    file.close();
}

void LOG_RestartClock() {
    const std::lock_guard lock(logMutex);
    startTick = CLOCK_Tick();
}

void LOG_Add(std::string_view text) {
    const std::lock_guard lock(logMutex);
    const std::string line = LOG_Stamp(CLOCK_Tick() - startTick) + " " + std::string(text);
    if (observer) {
        observer(line, std::string(text));
    }
    file.write(line + "\r\n");
}

void LOG_SetObserver(LogObserver newObserver) {
    const std::lock_guard lock(logMutex);
    observer = std::move(newObserver);
}
