// Waiting for a descriptor together with everything else that a thread waits for. Always the system
// clock: a virtual clock knows no descriptors.
#pragma once

#include "platform/clock.h"

// Waits until the descriptor reports one of `events` (or an error or hang-up), `stop` holds (an
// empty condition never does) or the deadline has passed. Result: the events that poll reported, 0
// when the wait ended for another reason. A descriptor below 0 is not looked at.
short waitDescriptor(int descriptor, short events, Moment deadline, const Condition& stop);
