// What the two views of the loaded data show, as plain texts: the rows of the hex list, one an
// area, and the lines of the hex dump, sixteen addresses each. Rows are made one by one when they
// are drawn, into texts that the caller keeps, so that drawing allocates nothing a row.
#pragma once

#include "data/hexdata.h"

#include <cstdint>
#include <span>
#include <string>

inline constexpr uint32_t kBytesPerRow = 16;

struct HexListRow {
    std::string number; // counted from 1
    std::string address;
    std::string length;
    std::string gap; // bytes up to the next area; empty for the last one
    std::string hex; // of the first bytes
    std::string characters;
};

// The row of areas[index]; `areas` is a snapshot of the image. A byte that the image has lost since
// shows as "--". Any thread.
void HEXLISTVIEW_MakeRow(std::span<const AddressRange> areas, size_t index, HexListRow& row);

// The line above the list.
struct HexListSummary {
    std::string range; // first and last address
    bool fits = false; // the data lies within the selected blocks
    std::string checksum;
    std::string bytes;
};
HexListSummary HEXLISTVIEW_MakeSummary();

// The addresses that a dump shows; address 0 alone for an empty image.
AddressRange HEXDUMPVIEW_GetRange();
// Lines of a dump; they begin at the first address, whatever it is. At most 2^28.
uint32_t HEXDUMPVIEW_NumLines(const AddressRange& range);
// The line that shows `address`, which lies in the range.
uint32_t HEXDUMPVIEW_LineOf(const AddressRange& range, uint32_t address);

struct DumpLine {
    std::string address;
    std::string hex;        // "--" for a byte that the image does not hold
    std::string characters; // "." for what cannot be shown
};

// The texts of a line below HEXDUMPVIEW_NumLines. Any thread.
void HEXDUMPVIEW_MakeLine(const AddressRange& range, uint32_t line, DumpLine& texts);

// The bytes of a range as a user copies them: hex, lines of sixteen, or characters without line
// ends, each as in the dump. At most kMaxCopiedBytes are taken.
inline constexpr uint32_t kMaxCopiedBytes = 16 * 1024 * 1024;
std::string HEXDUMPVIEW_CopyHex(const AddressRange& range);
std::string HEXDUMPVIEW_CopyCharacters(const AddressRange& range);
