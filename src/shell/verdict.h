// The last line of an unattended run with a command that works on the target: what became of it, in
// one line that a bench can keep. User-interface thread.
#pragma once

#include "shell/command_table.h"

#include <string>

// Begins the account of a run.
void VERDICT_Begin();
// Another try begins; the time counts on.
void VERDICT_NextTry();
// A queued command runs next.
void VERDICT_CommandStarts(const Command& command);
// A queued command was run, or left out because something had failed before.
void VERDICT_CommandEnds(int command);
// "Passed: ..." or "Failed: ..." by the exit code as it is now. `refused`: nothing was begun.
std::string VERDICT_Line(bool refused);
// The four digits that the chip said last of what it holds now, "----" when it was not asked.
std::string VERDICT_ChipChecksum();
