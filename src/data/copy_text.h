// Bytes of the image as texts for other programs, and bytes from the texts of others: what goes
// through the clipboard. Any thread, but for CopyFormat::intelHex: user-interface thread.
#pragma once

#include "data/address_range.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// Lines end with LF. At most kMaxCopiedBytes (data_rows.h) of the range are taken.
enum class CopyFormat {
    hex,      // as the dump shows them, sixteen a line, "--" where nothing is held
    cArray,   // 0xFF where nothing is held, which a comment says then
    intelHex, // what is held, with the records of addresses and of the end
    text,     // the characters of the dump
};
std::string COPYTEXT_Make(CopyFormat format, const AddressRange& range);

struct PastedHex {
    std::vector<uint8_t> bytes;
    std::string fault; // what is no hex and where; there are no bytes then
};
// Pairs of hex digits with or without blanks, commas, line ends and "0x" between them. A text
// without any digit gives no bytes and no fault.
PastedHex COPYTEXT_Parse(std::string_view text);
