// The conversation that begins every boot-ROM operation: reset into the boot ROM, synchronisation,
// flash checksum, product information. User-interface thread; 0 done, 1 failed.
#pragma once

#include <cstdint>

using BootStep = int (*)();

// The whole of it. `changeBaudrate`: the synchronisation runs at 9600 Bd, the rest at the user's
// rate. Reset and synchronisation are left out while the boot ROM still awaits a command.
int _BootHandshake(BootStep matchFn, BootStep sumFn, bool changeBaudrate);
int _ResetAndMatch(BootStep matchFn, bool changeBaudrate);

int _MatchTypeA();
int _MatchTypeB();
int _GetSumTypeA();
int _GetSumTypeB();
int _ProductInfo();

// The byte that tells a TYPE_A boot ROM the rate to use.
uint8_t _BaudCode(uint32_t rate);

// The flash checksum that the boot ROM reported last.
uint32_t _GetBootSum();
void _SetBootSum(uint32_t sum);
// Reads a checksum, high byte first, as the last reported one.
int _ReadBootSum(uint32_t timeoutMs);
// Whether that is the checksum of an erased flash: of 0xFF from the first block's start to the last
// block's end.
bool _IsBlank();
