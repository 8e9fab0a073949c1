// Project files (*.tpu): port, baud rate, logging, program file, device and password settings as
// text, one statement a line. User-interface thread only.
#pragma once

#include <string>

enum class ProjectRead { whole, partly, failed };

// Replaces the file in one step, with a password readable for its owner alone; `programFile` empty,
// or a path that no project can hold (too long, with a double quote in it, a device or pipe): no
// File line. A file that this run could not read whole is kept beside it as *.bad first. A failure
// is logged, not reported.
bool PROJECT_Save(const std::string& path, const std::string& programFile);
// Applies each statement as it is read; what is wrong is reported and ends the reading, but for a
// device that is not known: then the selected one stays and the file counts as partly read. Without
// `opensFile` the program file is not opened.
[[nodiscard]] ProjectRead PROJECT_Load(const std::string& path, bool opensFile = true);

// By the suffix of its name.
bool PROJECT_IsProjectFile(const std::string& path);

// The commands of the Project menu.
void PROJECT_New();
void PROJECT_OpenDialog();
void PROJECT_Open(const std::string& path);
void PROJECT_SaveCurrent();
void PROJECT_SaveAsDialog();

// Rate and port where none was chosen.
void PROJECT_FillDefaults();
// All blocks selected, and those defaults.
void PROJECT_UseDefaults();
// The sequence of a first start and of a new project: all blocks selected, then the dialogs for
// device, reset and port; defaults where one is cancelled.
void PROJECT_FirstStart();
