// Program When The File Changes: while it is on, each new state of the loaded program file is
// loaded, programmed, verified and started, one round a change, and the terminal comes to the
// front. Nobody is asked anything during a round but whether changes of the image may be lost
// before it; what fails is told by a notice. User-interface thread.
#pragma once

#include "shell/port_notice.h"

// Whether the image is that of a file, which can be watched.
bool ONCHANGE_MayBegin();
bool ONCHANGE_IsOn();
void ONCHANGE_Toggle();

// Called several times a second: begins a round when the file has changed, is whole and nothing
// else is under way. It ends by itself when another file or none is loaded.
void ONCHANGE_Glance();

// What the last round failed at; until the next one.
Notice ONCHANGE_Notice();
// The next round need not wait for a change.
void ONCHANGE_TryAgain();

void ONCHANGE_Reset();
