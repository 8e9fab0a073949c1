// The result of a run that machines read: one JSON object, whose fields docs/result.md lists.
// User-interface thread.
#pragma once

#include <string>

// The object as text, one line with its end.
std::string RESULT_Text();
// Writes it where the command line asks for it; nothing when it does not. What cannot be written is
// printed and makes the exit code 1.
void RESULT_Write();
