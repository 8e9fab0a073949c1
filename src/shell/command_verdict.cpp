#include "shell/command_verdict.h"

#include "notice/run.h"
#include "notice/status.h"
#include "platform/format.h"

namespace {

std::string firstReport; // of the command that runs

// The menu's text without mnemonic and dots.
std::string plainName(const Command& command) {
    std::string name;
    for (const char character : std::string(command.text)) {
        if (character != '&' && character != '.') {
            name += character;
        }
    }
    return name;
}

} // namespace

CommandVerdict::CommandVerdict(const Command& command)
    : command_(command), progress_(PROGRESS_Total()), judgements_(RUN_Judgements()) {
    if (command_.worksOn == WorksOn::target) {
        firstReport.clear();
        STATUS_SetText("Ready", STATUS_GENERAL);
    }
}

CommandVerdict::~CommandVerdict() {
    const std::string verdict = command_.worksOn == WorksOn::target ? line() : "";
    if (!verdict.empty()) {
        STATUS_SetText(verdict, STATUS_GENERAL);
    }
}

// A boot ROM that does not answer leaves some commands without a report, but never without the
// exit code.
std::string CommandVerdict::line() const {
    const bool judged = RUN_Judgements() != judgements_;
    if (judged && RUN_GetExitCode() != 0) {
        return "Failed: " + plainName(command_) + (firstReport.empty() ? "" : ": " + firstReport);
    }
    const ProgressTotal total = PROGRESS_Total();
    if (total.openings == progress_.openings) {
        return "";
    }
    return formatText("Passed: %s, %.1f s", plainName(command_).c_str(),
                      (total.ms - progress_.ms) / 1000.0);
}

void COMMANDVERDICT_Error(const std::string& text) {
    if (firstReport.empty()) {
        firstReport = text;
    }
}
