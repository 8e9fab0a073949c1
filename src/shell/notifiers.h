// The error and question notifiers that the shell registers with error reporting: what an attended
// run shows in boxes and an unattended run prints.
#pragma once

#include <string>

// Registers both, and the setter of the run's exit code.
void NOTIFIERS_Register();

// The line that an unattended run prints in place of a box: "CAPTION: TEXT" with line ends as
// blanks, a question with " [not asked]" behind it.
std::string NOTIFIERS_UnattendedLine(const std::string& text, const std::string& caption,
                                     unsigned boxType);
