#include "notice/error.h"

#include "notice/log_text.h"
#include "notice/run.h"
#include "platform/clock.h"
#include "platform/files.h"
#include "platform/format.h"
#include "platform/process.h"

#include <mutex>

namespace {

std::mutex handlersMutex;
ErrorNotifier errorNotifier;
QuestionNotifier questionNotifier;
ExitCodeSetter exitCodeSetter;

std::mutex fileMutex;
AppendFile errorFile;
bool fileTried = false;

void writeToErrorLog(std::string_view text, const std::string& hint) {
    const std::lock_guard lock(fileMutex);
    if (!fileTried) {
        fileTried = true;
        if (!RUN_IsIsolated()) {
            errorFile.create(FILES_KeptFile(Kept::state, "err"));
        }
        errorFile.write(
            formatText("%s error log file, compiled at ", FILES_ProgramBaseName().c_str()) +
            LOG_BuildTime() + "\r\n" + LOG_HeaderBlock());
    }
    const CivilTime now = CLOCK_LocalTime();
    errorFile.write(
        formatText("* %4d-%02d-%02d, %02d:%02d:%02d\r\n", now.year, now.month, now.day, now.hour,
                   now.minute, now.second) +
        formatPrintable(text, LineEnds::stay) + "\r\n" +
        (hint.empty() ? "" : formatPrintable("Hint: " + hint, LineEnds::shown) + "\r\n"));
}

template <class Handler>
Handler current(const Handler& handler) {
    const std::lock_guard lock(handlersMutex);
    return handler;
}

void passOn(WindowHandle window, const std::string& text, const std::string& hint, int exitCode) {
    if (exitCode != 0) {
        RUN_NoteFailure();
    }
    if (const auto notify = current(errorNotifier)) {
        notify(window, text, hint, exitCode);
    } else {
        PROCESS_Beep();
    }
    if (const auto setExitCode = current(exitCodeSetter)) {
        setExitCode(exitCode);
    }
}

} // namespace

void ERROR_SetHandlers(ErrorNotifier newErrorNotifier, QuestionNotifier newQuestionNotifier,
                       ExitCodeSetter newExitCodeSetter) {
    const std::lock_guard lock(handlersMutex);
    errorNotifier = std::move(newErrorNotifier);
    questionNotifier = std::move(newQuestionNotifier);
    exitCodeSetter = std::move(newExitCodeSetter);
}

void ERROR_Out(WindowHandle window, std::string_view text, int exitCode, const Hint& hint) {
    const std::string whatToDo = HINT_Text(hint);
    writeToErrorLog(text, whatToDo);
    passOn(window, std::string(text), whatToDo, exitCode);
}

void ERROR_Notify(std::string_view text) {
    passOn(nullptr, std::string(text), "", 1);
}

std::string ERROR_WithReason(std::string_view text, std::string_view reason) {
    return std::string(text) + (reason.empty() ? "" : " (" + std::string(reason) + ")");
}

int ERROR_Ask(WindowHandle window, std::string_view text, std::string_view caption,
              unsigned boxType) {
    if (const auto ask = current(questionNotifier)) {
        return ask(window, std::string(text), std::string(caption), boxType);
    }
    PROCESS_Beep();
    return ANSWER_NONE;
}

void ERROR_Exit() {
    ERROR_SetHandlers({}, {}, {});
    const std::lock_guard lock(fileMutex);
    errorFile.write(LOG_Rule());
    errorFile.close();
    fileTried = false;
}
