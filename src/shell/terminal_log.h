// The file that takes down what the terminal receives, byte by byte as it came. It is written now
// and then from the history, so that no disk holds the line up. User-interface thread.
#pragma once

#include <string>

// Appends to the file what is received from now on. False when it cannot be written, reported.
bool TERMLOG_Start(const std::string& path);
// Writes what has come so far and closes the file.
void TERMLOG_Stop();
// Of the file being written; empty while there is none.
const std::string& TERMLOG_Path();
// Writes what has come since; called several times a second. A file that takes no more is reported
// once and ends the log.
void TERMLOG_Write();
