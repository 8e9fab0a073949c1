#include "data/image_walk.h"
#include "data/program_format.h"

#include <array>

namespace {

constexpr uint32_t kWindowUse = 0xFF00;      // offsets beyond this open a new window
constexpr uint32_t kSegmentLimit = 0x100000; // what segment addresses reach
constexpr uint8_t kTypeData = 0x00;
constexpr uint8_t kTypeEnd = 0x01;
constexpr uint8_t kTypeSegment = 0x02;
constexpr uint8_t kTypeLinear = 0x04;

void writeRecord(RecordWriter& writer, uint8_t type, uint32_t offset,
                 std::span<const uint8_t> data) {
    const std::array<uint8_t, 4> head = {static_cast<uint8_t>(data.size()),
                                         static_cast<uint8_t>(offset >> 8),
                                         static_cast<uint8_t>(offset), type};
    writer.record(":", head, data, true);
}

void writeBase(RecordWriter& writer, uint8_t type, uint32_t value) {
    const std::array<uint8_t, 2> bytes = {static_cast<uint8_t>(value >> 8),
                                          static_cast<uint8_t>(value)};
    writeRecord(writer, type, 0, bytes);
}

// The window that the last address record opened.
struct Window {
    uint32_t base = 0;
    bool segmentSet = false;
};

void openWindow(RecordWriter& writer, Window& window, uint32_t address) {
    if (address < kSegmentLimit) {
        window.base = address & ~0xFU;
        window.segmentSet = true;
        writeBase(writer, kTypeSegment, address >> 4);
        return;
    }
    if (window.segmentSet) { // readers add both bases, so the old one has to go
        window.segmentSet = false;
        writeBase(writer, kTypeSegment, 0);
    }
    window.base = address & ~0xFFFFU;
    writeBase(writer, kTypeLinear, address >> 16);
}

} // namespace

void writeIntelHex(RecordWriter& writer, const AddressRange& range) {
    Window window;
    forEachPiece(kRecordData, range, [&](uint32_t address, std::span<const uint8_t> data) {
        if (address > window.base + kWindowUse) {
            openWindow(writer, window, address);
        }
        writeRecord(writer, kTypeData, address - window.base, data);
    });
    writeRecord(writer, kTypeEnd, 0, {});
}
