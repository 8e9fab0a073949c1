#include "data/hexdata.h"
#include "data/program_format.h"

#include <array>

namespace {

enum IntelType : uint8_t {
    TYPE_DATA = 0x00,
    TYPE_END = 0x01,
    TYPE_SEGMENT = 0x02,
    TYPE_START_SEGMENT = 0x03,
    TYPE_LINEAR = 0x04,
    TYPE_START_LINEAR = 0x05,
    TYPE_LINEAR_OLD = 0xFF,
};

// Where the data records stand: both kinds of address record add up.
struct IntelBase {
    uint32_t linear = 0;
    uint32_t segment = 0;
};

// Both bases together may lead out of the address space.
const char* addData(const IntelBase& base, uint16_t offset, std::span<const uint8_t> data,
                    ImageBatch& image) {
    const uint64_t address = uint64_t{base.linear} + base.segment + offset;
    if (data.empty()) {
        return nullptr;
    }
    if (address > UINT32_MAX) {
        return kPastAddressSpace;
    }
    return image.add(static_cast<uint32_t>(address), data);
}

const char* setBase(uint32_t& base, unsigned shift, std::span<const uint8_t> data) {
    if (data.size() < 2) {
        return kRecordTooShort;
    }
    base = static_cast<uint32_t>(data[0] << 8 | data[1]) << shift;
    return nullptr;
}

const char* applyRecord(uint8_t type, uint16_t offset, std::span<const uint8_t> data,
                        IntelBase& base, ImageBatch& image) {
    switch (type) {
    case TYPE_DATA:
        return addData(base, offset, data, image);
    case TYPE_SEGMENT:
        return setBase(base.segment, 4, data);
    case TYPE_LINEAR:
    case TYPE_LINEAR_OLD:
        return setBase(base.linear, 16, data);
    case TYPE_END:
    case TYPE_START_SEGMENT:
    case TYPE_START_LINEAR:
        return nullptr;
    default:
        return "Unknown record !";
    }
}

void readIntelRecord(RecordReader& reader, IntelBase& base, ImageBatch& image) {
    reader.expect(':');
    reader.startChecksum();
    std::array<uint8_t, 4> head{}; // count, address, type
    reader.takeBytes(head);
    std::array<uint8_t, 256> room;
    const std::span content(room.data(), head[0] + size_t{1}); // data and checksum
    reader.takeBytes(content);
    if (reader.error() == nullptr && reader.checksum() != 0) {
        reader.fail(kChecksumError);
    }
    if (reader.error() != nullptr) {
        return;
    }
    reader.noteEndRecord(head[3] == TYPE_END);
    const std::span<const uint8_t> data = content.first(head[0]);
    const auto offset = static_cast<uint16_t>(head[1] << 8 | head[2]);
    if (const char* error = applyRecord(head[3], offset, data, base, image)) {
        reader.fail(error);
    }
}

} // namespace

RecordParser startIntelHex() {
    return [base = IntelBase()](RecordReader& reader, ImageBatch& image) mutable {
        readIntelRecord(reader, base, image);
    };
}

bool isIntelEnd(std::string_view line) {
    constexpr size_t kTypeAt = 7; // behind colon, count and address
    constexpr size_t kShortest = 11;
    return line.size() >= kShortest && line.substr(kTypeAt).starts_with("01");
}
