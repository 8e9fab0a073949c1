// The memory image of the target program: bytes by 32-bit target address, kept as ascending areas
// that neither overlap nor touch. There is one image in the process. Every operation takes the
// image's own lock, so that the worker thread may add while the user interface reads.
#pragma once

#include "data/address_range.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

// The message of an addition that would define an address twice.
inline constexpr char kMultipleDefinitions[] = "Multiple definitions for same address !";

// The message of an addition that would go on behind the last 32-bit address.
inline constexpr char kPastAddressSpace[] = "Data beyond address 0xFFFFFFFF !";

// Adds bytes; touching areas join. When they overlap held bytes the user is asked whether to
// overwrite; the consent holds for the rest of the run. Without it nothing is added and the
// add-error text is set. Result: null, or that text. Any thread; the lock is not held during the
// question.
const char* HEXDATA_AddData(uint32_t address, std::span<const uint8_t> bytes);
// The text of the last refused addition, empty when there was none since the last clear.
std::string HEXDATA_GetAddError();
void HEXDATA_ClearAddError();

// Removes the held bytes among the `count` addresses from `address` on.
void HEXDATA_DeleteRange(uint32_t address, uint64_t count);
void HEXDATA_Clear();
// Adds the offset to every area's start address (32-bit). False, and nothing is changed, when some
// areas would pass the end of the address space and others not, or one would be torn by it.
[[nodiscard]] bool HEXDATA_Relocate(int32_t offset);
// Back to the state of a fresh process, for tests: empty, and nothing agreed to.
void HEXDATA_Reset();

// Moves `address` to the first held byte at or after it and points `data` to it. Result: the number
// of held bytes from there to the end of their area, 0 when there are none. The pointer is valid
// until the image changes.
uint32_t HEXDATA_GetData(uint32_t& address, const uint8_t*& data);
// Copies the held bytes of a range and leaves the others as they are; held[i] tells which of them
// the image holds (as long as `bytes`, or empty).
void HEXDATA_Copy(uint32_t address, std::span<uint8_t> bytes, std::span<bool> held);
// The number of addresses from `address` up to the next held one, or to the end of the address
// space.
uint64_t HEXDATA_GetRoom(uint32_t address);

uint32_t HEXDATA_GetFirstAddr(); // 0 when empty
uint32_t HEXDATA_GetLastAddr();  // 0 when empty
uint32_t HEXDATA_GetNumAreas();
uint32_t HEXDATA_GetNumBytes();
bool HEXDATA_IsEmpty();
// A snapshot of all areas in ascending order, none of them empty.
std::vector<AddressRange> HEXDATA_GetAreas();

int HEXDATA_GetFileType(); // a FileType, of the last file read
void HEXDATA_SetFileType(int type);
// Whether the loaded data fits into the selected blocks (the loaded-data summary).
void HEXDATA_SetFits(bool fits);
bool HEXDATA_GetFits();

// Accumulate the 16-bit sum or CRC over `count` bytes from `address`; bytes that the image does not
// hold, or that lie behind the last address, count as `fill`. `restart` begins a new value and is
// cleared. CRC: polynomial 0x1021, start 0xFFFF, no reflection, no final XOR, each byte fed into
// the low end (see checksum.cpp).
void HEXDATA_CalcSum(uint32_t address, uint32_t count, bool& restart, uint8_t fill);
void HEXDATA_CalcCRC(uint32_t address, uint32_t count, bool& restart, uint8_t fill);
// The value and its label, "SUM:" or "CRC:", of whichever was computed last.
uint16_t HEXDATA_GetChecksum();
std::string HEXDATA_GetChecksumLabel();
