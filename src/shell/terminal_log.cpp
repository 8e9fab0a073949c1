#include "shell/terminal_log.h"

#include "notice/error.h"
#include "platform/files.h"
#include "platform/format.h"
#include "serial/terminal_history.h"

namespace {

AppendFile terminalLog;
std::string terminalLogPath;
uint64_t terminalLogEnd = 0; // of what is in the file, in the history

void endTerminalLog() {
    terminalLog.close();
    terminalLogPath.clear();
}

bool isTerminalLogged(const FileResult& result) {
    if (!result.ok()) {
        const std::string path = terminalLogPath;
        endTerminalLog(); // before a box in which this is called again
        ERROR_Out(nullptr,
                  formatText("The terminal's log cannot be written (%s: %s)", path.c_str(),
                             result.reason.c_str()),
                  1);
    }
    return result.ok();
}

} // namespace

bool TERMLOG_Start(const std::string& path) {
    TERMLOG_Stop();
    terminalLogPath = path;
    terminalLogEnd = TERMHISTORY_Since(UINT64_MAX).end;
    return isTerminalLogged(terminalLog.open(path));
}

void TERMLOG_Stop() {
    TERMLOG_Write();
    endTerminalLog();
}

const std::string& TERMLOG_Path() {
    return terminalLogPath;
}

void TERMLOG_Write() {
    if (terminalLogPath.empty()) {
        return;
    }
    const TerminalNews news = TERMHISTORY_Since(terminalLogEnd);
    terminalLogEnd = news.end;
    std::string text;
    if (news.missing != 0) {
        text = formatText("\n[%llu bytes are missing here]\n",
                          static_cast<unsigned long long>(news.missing));
    }
    for (const TerminalPiece& piece : news.pieces) {
        if (piece.source == TerminalSource::received) {
            text += piece.bytes;
        }
    }
    if (!text.empty()) {
        isTerminalLogged(terminalLog.write(text));
    }
}
