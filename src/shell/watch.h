// --watch: the commands of the line run anew for every state of the program file that is whole, one
// round a state, until the user ends it. User-interface thread.
#pragma once

#include <optional>
#include <string>

// Waits until the file of the line is whole, no longer than for one that seems to be cut off.
void WATCH_AwaitFirst(const std::string& path);
// Ends a round: result and verdict. Waits for the next state of the file and loads it; what cannot
// be loaded fails its round. False when there is no watching, or the user ended it meanwhile.
bool WATCH_NextRound();
// The exit code of the last round where the user ended the run between two: it has been told.
std::optional<int> WATCH_ExitCode();
void WATCH_Reset();
