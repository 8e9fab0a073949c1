// The view windows of the frame: at most one of each kind, each remembering placement and column
// widths in its own section of the settings. User-interface thread.
#pragma once

#include "shell/front_end.h"

#include <QMdiArea>
#include <functional>

// The area that holds them; `dataViewsClosed` is called when the last of the two views of the data
// has been closed and is not about to come back.
void VIEWS_Init(QMdiArea* area, std::function<void()> dataViewsClosed);
// Forgets the area; its windows are gone with it.
void VIEWS_Exit();

// Makes the view, or brings the open one to the front and gives it the present title.
void VIEWS_Open(View view);
// After the image has got another origin.
void VIEWS_RefreshTitles();
void VIEWS_Close(View view);
bool VIEWS_IsOpen(View view);
void VIEWS_Refresh(View view);
// As FrontEnd::showBytes.
void VIEWS_ShowBytes(const AddressRange& range);
// Stores placement and column widths of the open views, as the program ends.
void VIEWS_StoreAll();
// Moves windows that lie outside of the area into it.
void VIEWS_BringBack();

void VIEWS_Cascade();
// The area has another size: views at their standard places, and those that the user placed, keep
// their shares of it.
void VIEWS_FollowArea();
void VIEWS_Tile(bool wide); // wide: one below the other
void VIEWS_RestoreDefault();
