// The desktop as a front end: one application object, the frame and what belongs to it.
// User-interface thread.
#pragma once

#include "shell/front_end.h"

// Makes the application object and the record's slots; windows appear when they are first needed.
FrontEnd DESKTOP_Create();
