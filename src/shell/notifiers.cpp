#include "shell/notifiers.h"

#include "notice/error.h"
#include "notice/log.h"
#include "notice/run.h"
#include "platform/format.h"
#include "shell/account.h"
#include "shell/command_verdict.h"
#include "shell/console.h"
#include "shell/front_end.h"

namespace {

constexpr unsigned kButtonsMask = 0xF;

// A blank in place of each line end; a carriage return that ends no line is a character of the
// text.
std::string onOneLine(const std::string& text) {
    std::string line;
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\r' && text.substr(i + 1, 1) == "\n") {
            continue;
        }
        if (text[i] != '\n') {
            line += text[i];
        } else if (!line.empty() && line.back() != ' ') {
            line += ' ';
        }
    }
    line.erase(line.find_last_not_of(' ') + 1);
    return line;
}

// The console shows it as it shows every line of the log.
void logHint(const std::string& hint) {
    if (!hint.empty()) {
        LOG_Add("Hint: " + hint);
    }
}

void notifyError(WindowHandle window, const std::string& text, const std::string& hint, int) {
    LOG_AddMessage(formatText("Error: %s", text.c_str()));
    if (RUN_IsQuiet()) {
        RUN_SetExitCode(1);
    }
    if (RUN_IsQuiet() || !FRONTEND_Get().hasWindows) {
        CONSOLE_PrintError(onOneLine(text));
        ACCOUNT_Error(onOneLine(text), hint);
        logHint(hint);
    } else {
        logHint(hint);
        COMMANDVERDICT_Error(onOneLine(text));
        FRONTEND_Get().showError(window, text, hint);
    }
}

int notifyQuestion(WindowHandle window, const std::string& text, const std::string& caption,
                   unsigned boxType) {
    if (RUN_IsQuiet() || !FRONTEND_Get().hasWindows) {
        const std::string line = NOTIFIERS_UnattendedLine(text, caption, boxType);
        CONSOLE_PrintLine(line);
        if ((boxType & kButtonsMask) != BOX_OK) {
            ACCOUNT_Note(line);
            if (FRONTEND_Get().hasWindows) {
                LOG_Add(line);
            }
        }
        return ANSWER_NONE;
    }
    return FRONTEND_Get().ask(window, text, caption, boxType);
}

} // namespace

void NOTIFIERS_Register() {
    ERROR_SetHandlers(notifyError, notifyQuestion, RUN_SetExitCode);
}

std::string NOTIFIERS_UnattendedLine(const std::string& text, const std::string& caption,
                                     unsigned boxType) {
    const bool question = (boxType & kButtonsMask) != BOX_OK;
    const std::string start = caption.empty() ? "" : onOneLine(caption) + ": ";
    return start + onOneLine(text) + (question ? " [not asked]" : "");
}
