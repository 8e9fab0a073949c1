// The main window: menu, area of the view windows, status bar. User-interface thread.
#pragma once

#include <QMainWindow>
#include <string>

// Makes the frame, hidden. It takes its place from the session when it is first shown or used.
void FRAME_Create();
// Destroys it, its views stored or not.
void FRAME_Destroy();
QMainWindow* FRAME_Get(); // nullptr when there is none

void FRAME_Show(bool visible);
// Closes the frame as the user does; false when he wants to stay.
bool FRAME_Close();
void FRAME_SetTitle(const std::string& title);
// Applies the menu's rules; also what has been put off while a command ran.
void FRAME_UpdateMenu();
// Gives the frame its place of the last run; once.
void FRAME_Place();
