#include "data/image_walk.h"
#include "data/program_format.h"

#include <array>
#include <string_view>

namespace {

// The shortest address that reaches the last byte of a record.
uint32_t addressLength(uint32_t last) {
    if (last < 0x10000) {
        return 2;
    }
    return last > 0xFFFFFF ? 4 : 3;
}

void writeData(RecordWriter& writer, uint32_t address, std::span<const uint8_t> data) {
    constexpr std::array<std::string_view, 3> kStarts = {"S1", "S2", "S3"};
    const uint32_t length = addressLength(static_cast<uint32_t>(address + (data.size() - 1)));
    std::array<uint8_t, 5> head{};
    head[0] = static_cast<uint8_t>(length + data.size() + 1);
    for (uint32_t i = 0; i < length; ++i) {
        head[1 + i] = static_cast<uint8_t>(address >> (8 * (length - 1 - i)));
    }
    writer.record(kStarts[length - 2], std::span(head).first(1 + length), data, false);
}

} // namespace

void writeSRecords(RecordWriter& writer, const AddressRange& range) {
    forEachPiece(kRecordData, range, [&](uint32_t address, std::span<const uint8_t> data) {
        writeData(writer, address, data);
    });
    constexpr std::array<uint8_t, 3> kEnd = {3, 0, 0};
    writer.record("S9", kEnd, {}, false);
}
