// The flash of a virtual chip from and to files.
#pragma once

#include "sim/chip.h"

#include <string>

// Fills the flash: a name in ".bin" is taken byte by byte from the first address on, any other as
// Intel HEX or S-record text. Nothing for an empty path. False with the reason in `error`.
bool SIM_ReadFlash(Chip& chip, const std::string& path, std::string& error);
// Writes the flash from its first to its last byte, what lies between blocks as 0xFF. Nothing for
// an empty path. False when that failed, said on standard error.
bool SIM_WriteFlash(Chip& chip, const std::string& path);
