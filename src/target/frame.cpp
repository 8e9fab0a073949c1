#include "target/frame.h"

#include "link/target_state.h"
#include "serial/sio.h"

#include <algorithm>
#include <numeric>

namespace {

constexpr uint8_t kStart1 = 0xEB;
constexpr uint8_t kStart2 = 0xED;
constexpr uint8_t kEnd = 0xEC;
constexpr uint32_t kByteMs = 50;
constexpr uint32_t kPayloadMs = 1000;
constexpr int64_t kSoonMs = 300;

uint32_t sumOf(std::span<const uint8_t> bytes) {
    return std::accumulate(bytes.begin(), bytes.end(), 0U);
}

// The sum byte over the length and the payload's pieces.
uint8_t frameSum(std::span<const uint8_t> head, std::span<const uint8_t> data) {
    const size_t length = head.size() + data.size();
    return static_cast<uint8_t>(length + (length >> 8) + sumOf(head) + sumOf(data));
}

bool frameBegins(uint32_t timeoutMs, const FrameStop& stop) {
    const Moment deadline = CLOCK_After(timeoutMs);
    uint8_t value = 0;
    if (SIO_ReadUntil(&value, 1, deadline, [&stop] { return stop.now() || stop.soon(); }) == 0 &&
        SIO_ReadUntil(&value, 1, std::min(deadline, CLOCK_After(kSoonMs)), stop.now) == 0) {
        return false;
    }
    return value == kStart1;
}

bool readByte(uint8_t& value, uint32_t timeoutMs, const Condition& stop) {
    return SIO_Read(&value, 1, timeoutMs, stop) == 1;
}

bool readExpected(uint8_t expected, uint32_t timeoutMs, const Condition& stop) {
    uint8_t value = 0;
    return readByte(value, timeoutMs, stop) && value == expected;
}

} // namespace

Fields& Fields::u8(uint8_t value) {
    bytes_.push_back(value);
    return *this;
}

Fields& Fields::u16(uint32_t value) {
    return u8(static_cast<uint8_t>(value)).u8(static_cast<uint8_t>(value >> 8));
}

Fields& Fields::u32(uint32_t value) {
    return u16(value).u16(value >> 16);
}

void TARGET_SendFrame(std::span<const uint8_t> head, std::span<const uint8_t> data) {
    const size_t length = head.size() + data.size();
    const SioFrame together;
    SIO_WriteByte(kStart1);
    SIO_WriteByte(kStart2);
    SIO_WriteByte(static_cast<uint8_t>(length));
    SIO_WriteByte(static_cast<uint8_t>(length >> 8));
    for (const auto piece : {head, data}) {
        if (!piece.empty()) {
            SIO_Write(piece);
        }
    }
    SIO_WriteByte(frameSum(head, data));
    SIO_WriteByte(kEnd);
}

int TARGET_ReceiveFrame(std::vector<uint8_t>& payload, uint32_t timeoutMs, const FrameStop& stop) {
    payload.clear();
    uint8_t low = 0;
    uint8_t high = 0;
    if (!frameBegins(timeoutMs, stop) || !readExpected(kStart2, kByteMs, stop.now) ||
        !readByte(low, kByteMs, stop.now) || !readByte(high, kByteMs, stop.now)) {
        return -1;
    }
    const size_t length = low + high * size_t{256};
    if (length > kMaxReply) {
        return -1;
    }
    payload.resize(length);
    if (length != 0 && SIO_Read(payload.data(), length, kPayloadMs, stop.now) != length) {
        return -1;
    }
    if (!readExpected(frameSum(payload, {}), kByteMs, stop.now) ||
        !readExpected(kEnd, kByteMs, stop.now)) {
        return -1;
    }
    return static_cast<int>(length);
}
