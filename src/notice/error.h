// The one way to report a failure and the one way to ask a question. Every failure goes to the
// error log beside the program and to the handlers that the shell has registered.
#pragma once

#include "notice/hint.h"

#include <functional>
#include <string>
#include <string_view>

// A window of the front end, which alone knows what is behind it; null means the main window.
using WindowHandle = void*;

// Buttons and defaults of a question, and its answers, with the values of the platform's message
// boxes that the settings of the program have always used.
enum BoxType : unsigned {
    BOX_OK = 0,
    BOX_OK_CANCEL = 1,
    BOX_YES_NO = 4,
    BOX_ICON_INFORMATION = 0x40,
    BOX_DEFAULT_SECOND = 0x100, // the second button is preselected
};
enum BoxAnswer : int {
    ANSWER_NONE = 0,
    ANSWER_OK = 1,
    ANSWER_CANCEL = 2,
    ANSWER_YES = 6,
    ANSWER_NO = 7
};

// `hint` is the text of the hint, empty where there is none.
using ErrorNotifier = std::function<void(WindowHandle, const std::string& text,
                                         const std::string& hint, int exitCode)>;
using QuestionNotifier = std::function<int(WindowHandle, const std::string& text,
                                           const std::string& caption, unsigned boxType)>;
using ExitCodeSetter = std::function<void(int)>;

// Registers the handlers; at start-up, before the worker thread runs. Empty ones unregister.
void ERROR_SetHandlers(ErrorNotifier errorNotifier, QuestionNotifier questionNotifier,
                       ExitCodeSetter exitCodeSetter);

// Reports a failure, and what to do about it where that is known: error log, notifier, then exit
// code, in this order and all done on return. Any thread.
void ERROR_Out(WindowHandle window, std::string_view text, int exitCode, const Hint& hint = {});

// The text with the reason behind it in parentheses, on the same line; the text alone without one.
std::string ERROR_WithReason(std::string_view text, std::string_view reason);

// Asks or informs through the question notifier; its answer, 0 when none is registered. Any thread.
int ERROR_Ask(WindowHandle window, std::string_view text, std::string_view caption,
              unsigned boxType);

// Passes a text to the error notifier alone, for messages that do not belong in the error log; the
// exit code is set as for ERROR_Out.
void ERROR_Notify(std::string_view text);

// Writes the closing line of the error log and forgets the file and the handlers.
void ERROR_Exit();
