// What may be done in the frame while something is under way there, and what is put off until it
// has ended. A command may wait in a loop of its own, in which the user goes on choosing, closing
// and dropping. User-interface thread only.
#pragma once

#include <functional>
#include <string>

// Whether the command with this identifier may begin now.
bool FRAMERULES_MayRun(int id);
// Runs it if it may.
void FRAMERULES_Run(int id);

// Runs what the program does with the chip by itself, as one command that changes it.
void FRAMERULES_RunRound(const std::function<void()>& round);

// Whether the frame may be closed now: the user is asked while a command changes the chip.
bool FRAMERULES_MayClose();

// Whether nothing is under way or open that a file to open, or a key typed into the data, would
// come in between.
bool FRAMERULES_IsFree();
// Opens a file that the user has brought, a project or a program file, if it may be opened.
void FRAMERULES_OpenFile(const std::string& path);

// The user has closed the last view of the data: it is unloaded, but never under an operation.
void FRAMERULES_DataViewsClosed();
// The user comes back to the frame, perhaps from changing the program file.
void FRAMERULES_Activated();
// Does what has been put off, if it can be done now. Called by whoever ends something.
void FRAMERULES_CatchUp();
void FRAMERULES_Reset();
