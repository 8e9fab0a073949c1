// What became of the last command that worked on the target, in one line that stays in the status
// bar when the boxes are closed. User-interface thread.
#pragma once

#include "notice/progress.h"
#include "shell/command_table.h"

#include <string>

// Lives beside a command: "Passed: Auto, 2.6 s" or "Failed: Auto: WHAT" stands in the status bar
// once it has ended. Of one that does not work on the target, or that was not begun, nothing is
// said.
class CommandVerdict {
public:
    explicit CommandVerdict(const Command& command);
    ~CommandVerdict();
    CommandVerdict(const CommandVerdict&) = delete;
    CommandVerdict& operator=(const CommandVerdict&) = delete;

private:
    std::string line() const;

    const Command& command_;
    const ProgressTotal progress_;
    const unsigned judgements_;
};

// The first thing that is reported while a command runs is what it fails at.
void COMMANDVERDICT_Error(const std::string& text);
