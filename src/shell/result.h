// The result of a run that machines read: one JSON object, whose fields docs/result.md lists.
// User-interface thread.
#pragma once

#include <string>

// The object as text, one line with its end.
std::string RESULT_Text();
// Writes it where the command line asks for it; nothing when it does not. What cannot be written is
// printed and makes the exit code 1.
void RESULT_Write();
// What was written is not that of the round that begins now.
void RESULT_BeginRound();
// The same for a run that a fault of its own ends, unless it has been written: a failure at the
// stage "fault" and nothing of what the run was about. Any thread; may throw.
void RESULT_WriteFault(const char* reason);
