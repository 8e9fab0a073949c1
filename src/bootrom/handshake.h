// The conversation that begins every boot-ROM operation: reset into the boot ROM, synchronisation,
// flash checksum, product information. User-interface thread.
#pragma once

#include "link/failure.h"

#include <cstdint>

using BootStep = Result<> (*)();

// The whole of it. `changeBaudrate`: the synchronisation runs at 9600 Bd, the rest at the user's
// rate. Reset and synchronisation are left out while the boot ROM still awaits a command.
Result<> _BootHandshake(BootStep matchFn, BootStep sumFn, bool changeBaudrate);
Result<> _ResetAndMatch(BootStep matchFn, bool changeBaudrate);

Result<> _MatchTypeA();
Result<> _MatchTypeB();
Result<> _GetSumTypeA();
Result<> _GetSumTypeB();
Result<> _ProductInfo();

// The byte that tells a TYPE_A boot ROM the rate to use.
uint8_t _BaudCode(uint32_t rate);

// The flash checksum that the boot ROM reported last.
uint32_t _GetBootSum();
void _SetBootSum(uint32_t sum);
// Reads a checksum, high byte first, as the last reported one.
Result<> _ReadBootSum(uint32_t timeoutMs);
// Whether that is the checksum of an erased flash: of 0xFF from the first block's start to the last
// block's end.
bool _IsBlank();
