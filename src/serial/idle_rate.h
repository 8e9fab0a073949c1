// The terminal's rate of its own: the line has it while no command uses the chip, and the rate of
// the options again before the boot ROM is spoken to. User-interface thread.
#pragma once

#include <cstdint>

// Bits per second; 0: the rate of the options. Takes effect with the next IDLERATE_Use.
void IDLERATE_Set(uint32_t baudrate);
// Puts the rate in force, to be called while the link is idle; DTR and RTS stay as they are. Cheap
// when the line has it; a port that refuses it is not asked again. The terminal's history says so
// of each choice and of each refusal.
void IDLERATE_Use();
// Puts the rate of the options back where another one is in force. False when that failed, which
// has been reported.
bool IDLERATE_End();
