// The program's event queue over Qt's event loop: the main loop waits in Qt, and what is posted
// runs also while Qt runs a loop of its own (a modal dialog, an open menu). User-interface thread.
#pragma once

#include <functional>

// Puts Qt's loop in the place of the plain queue. `afterPosted` is called after every posted event
// that ran inside Qt's loop, where the program's main loop cannot look at what has changed.
void EVENTHOOK_Install(std::function<void()> afterPosted);
// Puts the plain queue back.
void EVENTHOOK_Remove();
