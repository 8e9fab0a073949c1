#include "target/frame.h"

#include "link/target_state.h"
#include "serial/sio_line.h"

#include <algorithm>
#include <numeric>

namespace {

constexpr uint8_t kStart1 = 0xEB;
constexpr uint8_t kStart2 = 0xED;
constexpr uint8_t kEnd = 0xEC;
constexpr int64_t kWholeMs = 1000;
constexpr int64_t kSilentMs = 500;
constexpr int64_t kDripMs = 10000; // of a line that keeps sending, but hardly
constexpr int64_t kSoonMs = 300;

uint32_t sumOf(std::span<const uint8_t> bytes) {
    return std::accumulate(bytes.begin(), bytes.end(), 0U);
}

// The sum byte over the length and the payload's pieces.
uint8_t frameSum(std::span<const uint8_t> head, std::span<const uint8_t> data) {
    const size_t length = head.size() + data.size();
    return static_cast<uint8_t>(length + (length >> 8) + sumOf(head) + sumOf(data));
}

bool frameBegins(Moment deadline, const FrameStop& stop) {
    uint8_t value = 0;
    if (SIO_ReadUntil(&value, 1, deadline, [&stop] { return stop.now() || stop.soon(); }) == 0 &&
        SIO_ReadUntil(&value, 1, std::min(deadline, CLOCK_After(kSoonMs)), stop.now) == 0) {
        return false;
    }
    return value == kStart1;
}

// The bytes of a frame that has begun.
class FrameRest {
public:
    explicit FrameRest(const Condition& stop) : stop_(stop) {}

    // Whether the whole buffer could be filled.
    bool read(std::span<uint8_t> buffer) {
        due_.us += SIO_TransferMs(buffer.size()) * int64_t{1000};
        size_t filled = 0;
        while (filled < buffer.size()) {
            const Moment end =
                std::min(std::max(due_, CLOCK_After(kSilentMs)), Moment{due_.us + kDripMs * 1000});
            const auto rest = buffer.subspan(filled);
            const size_t count = SIO_ReadUntil(rest.data(), rest.size(), end, stop_);
            if (count == 0) {
                return false;
            }
            filled += count;
        }
        return true;
    }
    bool expect(uint8_t expected) {
        uint8_t value = 0;
        return read({&value, 1}) && value == expected;
    }

private:
    const Condition& stop_;
    Moment due_ = CLOCK_After(kWholeMs);
};

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

int TARGET_ReceiveFrame(std::vector<uint8_t>& payload, Moment deadline, const FrameStop& stop) {
    if (!frameBegins(deadline, stop)) {
        return -1;
    }
    FrameRest rest(stop.now);
    uint8_t size[2] = {};
    if (!rest.expect(kStart2) || !rest.read(size)) {
        return -1;
    }
    const size_t length = size[0] + size[1] * size_t{256};
    if (length > kMaxReply) {
        return -1;
    }
    payload.resize(length);
    const bool good = rest.read(payload) && rest.expect(frameSum(payload, {})) && rest.expect(kEnd);
    return good ? static_cast<int>(length) : -1;
}
