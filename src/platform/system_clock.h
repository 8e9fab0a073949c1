// The face of the clock that is made of the kernel's waits.
#pragma once

#include "platform/clock.h"

const ClockFace& SYSTEMCLOCK_Face();
