#include "target/page_buffer.h"

#include "device/device.h"
#include "link/chip_record.h"
#include "link/target_state.h"
#include "platform/format.h"
#include "target/operation.h"
#include "target/reply.h"

#include <algorithm>
#include <array>
#include <bit>

namespace {

constexpr uint32_t kWord = 4; // bytes
constexpr uint32_t kMinPacket = 2 * kWord;

struct PageBuffer {
    std::array<uint8_t, kMaxPage> bytes;
    uint32_t base = 0; // address of the first byte
    uint32_t last = 0; // offset of the last byte stored
    bool open = false;
};

PageBuffer page; // the worker's own

uint32_t wholeWords(uint32_t count) {
    return count & ~(kWord - 1);
}

// Whether the open window has room for the address. A backward jump wraps to a large offset.
bool windowHolds(uint32_t address) {
    const TargetState& state = TARGET_State();
    const uint32_t offset = address - page.base;
    if (state.PageLen != 0) {
        return offset < state.PageLen;
    }
    const uint32_t packet = wholeWords(state.PacketSize);
    return offset < packet && wholeWords(offset + kWord) < packet;
}

void openWindow(uint32_t address) {
    const uint32_t pageLen = TARGET_State().PageLen;
    page.bytes.fill(0xFF);
    page.base = address & ~((pageLen != 0 ? pageLen : kWord) - 1);
    page.last = 0;
    page.open = true;
}

Result<> storeByte(uint32_t address, uint8_t value) {
    if (page.open && !windowHolds(address)) {
        if (Result<> sent = TARGET_FlushPage(); !sent) {
            return sent;
        }
    }
    if (!page.open) {
        openWindow(address);
    }
    const uint32_t offset = address - page.base;
    page.bytes[offset] = value;
    page.last = std::max(page.last, offset);
    return {};
}

// What is known of the page that the loader has refused.
Failure pageFailure(Failure failure) {
    if (failure.code == TERR_TIMEOUT) {
        return failure;
    }
    const uint32_t address = DEVICE_RelocateAddr(page.base);
    const std::string read =
        failure.code == TERR_NAK
            ? ""
            : formatText("; address %X holds %02X", failure.address, failure.contents);
    failure.hint = {Cause::pageRefused, formatText("the page at %X of %s%s", address,
                                                   blockTextAt(address).c_str(), read.c_str())};
    return failure;
}

// Why nothing can be written with these sizes, in bytes; empty when it can.
std::string pageFault(uint32_t pageLen, uint32_t packet, bool needsPages) {
    if (pageLen > kMaxPage || (pageLen == 0 && packet > kMaxPage)) {
        return formatText("%s of %u bytes is not supported. Maximum %u bytes",
                          pageLen != 0 ? "A page length" : "A packet size",
                          pageLen != 0 ? pageLen : packet, kMaxPage);
    }
    if (pageLen != 0 && !std::has_single_bit(pageLen)) {
        return formatText("A page length of %u bytes is not a power of two", pageLen);
    }
    if (pageLen == 0 && needsPages) {
        return "The operation needs a device description with a page length";
    }
    if (pageLen == 0 && packet < kMinPacket) {
        return formatText("A packet size of %u bytes is not supported. Minimum %u bytes", packet,
                          kMinPacket);
    }
    return "";
}

} // namespace

Result<> checkPageSizes(bool needsPages) {
    const std::string fault =
        pageFault(TARGET_State().PageLen, TARGET_State().PacketSize, needsPages);
    return fault.empty() ? Result<>() : Failure{.reason = fault};
}

void dropPage() {
    page.open = false;
}

Result<> TARGET_WriteBytes(uint32_t address, std::span<const uint8_t> data) {
    for (const uint8_t value : data) {
        if (Result<> stored = storeByte(address++, value); !stored) {
            return stored;
        }
    }
    return {};
}

Result<> TARGET_FlushPage() {
    if (!page.open) {
        return {};
    }
    const uint32_t pageLen = TARGET_State().PageLen;
    const uint32_t length = pageLen != 0 ? pageLen : wholeWords(page.last + kWord);
    const Result<Reply> reply = exchange(kProgramPage, Fields().u32(page.base).u16(length),
                                         std::span(page.bytes).first(length));
    CHIPRECORD_Note(AddressRange::of(DEVICE_RelocateAddr(page.base), length),
                    reply ? ChipMark::written : ChipMark::unknown);
    if (!reply) {
        return pageFailure(reply.error());
    }
    page.open = false;
    return {};
}
