#include "data/data_rows.h"

#include "platform/format.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace {

constexpr std::string_view kHexDigits = "0123456789ABCDEF";
constexpr std::string_view kNotHeld = "--";

// The bytes that one row shows.
struct RowBytes {
    std::array<uint8_t, kBytesPerRow> bytes{};
    std::array<bool, kBytesPerRow> held{};
    size_t count = 0;
};

RowBytes readBytes(uint32_t address, size_t count) {
    RowBytes row;
    row.count = std::min<size_t>(count, kBytesPerRow);
    HEXDATA_Copy(address, std::span(row.bytes).first(row.count),
                 std::span(row.held).first(row.count));
    return row;
}

void setHex(std::string& text, uint32_t value, size_t digits) {
    text.resize(digits);
    for (size_t at = digits; at-- > 0; value >>= 4) {
        text[at] = kHexDigits[value & 0xF];
    }
}

// As many digits as the value needs, but not fewer than `digits`.
void setHexAtLeast(std::string& text, uint32_t value, size_t digits) {
    while (digits < 8 && value >> (4 * digits) != 0) {
        ++digits;
    }
    setHex(text, value, digits);
}

void appendByte(std::string& text, const RowBytes& row, size_t index) {
    if (row.held[index]) {
        text += kHexDigits[row.bytes[index] >> 4];
        text += kHexDigits[row.bytes[index] & 0xF];
    } else {
        text += kNotHeld;
    }
}

// Bytes with a blank behind each of the first fifteen.
void setBytes(std::string& text, const RowBytes& row) {
    text.clear();
    for (size_t index = 0; index < row.count; ++index) {
        appendByte(text, row, index);
        if (index + 1 < kBytesPerRow) {
            text += ' ';
        }
    }
}

// The bytes from `lowest` to 0x7F stand for themselves.
void appendCharacters(std::string& text, const RowBytes& row, uint8_t lowest) {
    for (size_t index = 0; index < row.count; ++index) {
        const uint8_t byte = row.bytes[index];
        const bool shown = row.held[index] && byte >= lowest && byte <= 0x7F;
        text += shown ? static_cast<char>(byte) : '.';
    }
}

constexpr uint8_t kListLowest = 0x20;
constexpr uint8_t kDumpLowest = 33;

// Calls `use` for the rows of sixteen that a copied range consists of.
template <class Use>
void forCopiedRows(const AddressRange& range, const Use& use) {
    const uint64_t count = std::min<uint64_t>(range.size(), kMaxCopiedBytes);
    for (uint64_t at = 0; at < count; at += kBytesPerRow) {
        use(readBytes(static_cast<uint32_t>(range.start + at), static_cast<size_t>(count - at)));
    }
}

} // namespace

void HEXLISTVIEW_MakeRow(std::span<const AddressRange> areas, size_t index, HexListRow& row) {
    const AddressRange& area = areas[index];
    row.number = std::to_string(index + 1);
    row.number.insert(0, 4 - std::min<size_t>(row.number.size(), 4), '0');
    setHex(row.address, area.start, 8);
    setHex(row.length, static_cast<uint32_t>(area.size()), 8);
    row.gap.clear();
    if (index + 1 < areas.size()) {
        setHexAtLeast(row.gap, static_cast<uint32_t>(areas[index + 1].start - area.end), 6);
    }
    const RowBytes bytes = readBytes(area.start, area.size());
    setBytes(row.hex, bytes);
    row.characters.clear();
    appendCharacters(row.characters, bytes, kListLowest);
}

HexListSummary HEXLISTVIEW_MakeSummary() {
    HexListSummary summary;
    summary.range = formatText("0x%06X-0x%06X", HEXDATA_GetFirstAddr(), HEXDATA_GetLastAddr());
    summary.fits = HEXDATA_GetFits();
    summary.checksum =
        formatText("%s 0x%04X", HEXDATA_GetChecksumLabel().c_str(), HEXDATA_GetChecksum());
    summary.bytes = formatText("Number of bytes: %u", HEXDATA_GetNumBytes());
    return summary;
}

AddressRange HEXDUMPVIEW_GetRange() {
    return AddressRange::upTo(HEXDATA_GetFirstAddr(), HEXDATA_GetLastAddr());
}

uint32_t HEXDUMPVIEW_NumLines(const AddressRange& range) {
    return HEXDUMPVIEW_LineOf(range, range.last()) + 1;
}

uint32_t HEXDUMPVIEW_LineOf(const AddressRange& range, uint32_t address) {
    return (address - range.start) / kBytesPerRow;
}

void HEXDUMPVIEW_MakeLine(const AddressRange& range, uint32_t line, DumpLine& texts) {
    const uint32_t address = range.start + line * kBytesPerRow;
    const RowBytes bytes = readBytes(address, kBytesPerRow);
    setHex(texts.address, address, 8);
    setBytes(texts.hex, bytes);
    texts.characters.clear();
    appendCharacters(texts.characters, bytes, kDumpLowest);
}

std::string HEXDUMPVIEW_CopyHex(const AddressRange& range) {
    std::string text;
    forCopiedRows(range, [&text](const RowBytes& row) {
        if (!text.empty()) {
            text.back() = '\n';
        }
        for (size_t index = 0; index < row.count; ++index) {
            appendByte(text, row, index);
            text += ' ';
        }
    });
    text.pop_back();
    return text;
}

std::string HEXDUMPVIEW_CopyCharacters(const AddressRange& range) {
    std::string text;
    forCopiedRows(range,
                  [&text](const RowBytes& row) { appendCharacters(text, row, kDumpLowest); });
    return text;
}
