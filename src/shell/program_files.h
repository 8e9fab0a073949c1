// Opening, merging, saving and closing program files as the main frame does it: log line, image,
// session, views. Failures are reported where they are found.
#pragma once

#include "shell/watched_file.h"

#include <optional>
#include <string>

// Each is false when it failed; then nothing is remembered of it.
// Loads a file in place of the image. A failed load leaves the image empty and the path unchanged.
bool PROGRAM_Open(const std::string& path);
// Loads what a watched file was found to be; one that was cut off is refused as one that is
// damaged.
bool PROGRAM_Reload(const std::string& path, FileLook look);
bool PROGRAM_Merge(const std::string& path);
bool PROGRAM_Save(const std::string& path, int type);
void PROGRAM_Unload(); // empties the image
void PROGRAM_Close();  // its views too

// Whether the image may be given up: asked where it holds changes that are saved nowhere, but never
// in an unattended run or without windows.
bool PROGRAM_MayLoseChanges();

// The program file that the user chooses; none when he cancels.
std::optional<std::string> PROGRAM_AskForFile(const std::string& title);

// The file commands with their dialogs and questions.
void PROGRAM_OpenDialog();
void PROGRAM_CloseCurrent();
void PROGRAM_MergeDialog();
void PROGRAM_OpenRecent(const std::string& path);
void PROGRAM_SaveCurrent(); // Save As unless the image is that of one file
void PROGRAM_SaveAsDialog();

// The file that the image is, or would be had it not failed to load again: whoever changes it
// changes the program. Empty when there is none.
std::string PROGRAM_CurrentFile();
// Asks whether to reload when the current file has changed on disk since it was opened or saved.
void PROGRAM_CheckChanged();
