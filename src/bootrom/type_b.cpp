// The boot ROM of TYPE_B: synchronised at the user's rate, its loader sent as one block with a
// checksum.

#include "bootrom/boot_wire.h"
#include "bootrom/family.h"
#include "bootrom/flash_commands.h"
#include "bootrom/handshake.h"
#include "bootrom/password_choice.h"
#include "bootrom/ram_image.h"
#include "device/device.h"
#include "link/target_state.h"
#include "notice/log.h"
#include "notice/progress.h"
#include "notice/run.h"
#include "platform/clock.h"
#include "platform/event_queue.h"
#include "serial/sio_line.h"

#include <algorithm>
#include <span>
#include <vector>

extern const BootRomProtocol kBootRomTypeB;

namespace {

constexpr uint8_t kErased = 0x4F;
constexpr uint8_t kEraseEnable = 0x54;
constexpr uint8_t kAcknowledge = 0x10;
constexpr int kPauseMs = 10;          // the boot ROM writes to RAM while it receives
constexpr uint32_t kFillPerStep = 32; // bytes
constexpr size_t kPasswordTypeB = 12; // bytes

Result<> _MatchTypeB(uint32_t) {
    return familyMatchByte(0x86);
}

Result<> _GetSumTypeB() {
    if (Result<> sent = bootCommand(0x20, "Get SUM Command failed"); !sent) {
        return sent;
    }
    if (Result<> read = readBootSum(kSumMs); !read) {
        return read;
    }
    const uint8_t sum[] = {static_cast<uint8_t>(getBootSum() >> 8),
                           static_cast<uint8_t>(getBootSum())};
    return bootAwait(bootChecksum(sum), "Checksum of checksum failed");
}

// Twelve bytes and their checksum.
void _SendPasswordTypeB() {
    const BootPassword password = passwordInForce();
    const bool blank = password.origin == BootPassword::Origin::blankChip;
    std::vector<uint8_t> frame(kPasswordTypeB, 0xFF);
    if (!blank) {
        frame = password.bytes;
        frame.resize(kPasswordTypeB);
    }
    const SioFrame together;
    SIO_Write(frame);
    SIO_WriteByte(bootChecksum(frame));
}

// What the data step has sent so far.
struct Stream {
    uint32_t sent = 0;
    uint8_t sum = 0;
};

void sendHeader(const RamImageB& image) {
    uint8_t header[] = {static_cast<uint8_t>(image.start >> 24),
                        static_cast<uint8_t>(image.start >> 16),
                        static_cast<uint8_t>(image.start >> 8),
                        static_cast<uint8_t>(image.start),
                        static_cast<uint8_t>(image.size >> 8),
                        static_cast<uint8_t>(image.size),
                        0};
    header[6] = bootChecksum(std::span(header).first(6));
    PROGRESS_SetMax(static_cast<int32_t>(image.size));
    const SioFrame together;
    for (const uint8_t byte : header) {
        SIO_WriteByte(byte);
    }
}

void finishStep(const Stream& stream) {
    PROGRESS_SetPos(static_cast<int32_t>(stream.sent));
    EVENTS_ProcessOne();
    CLOCK_Sleep(kPauseMs);
}

// Fills the gap before a block; the pause comes after every full step only.
void sendFill(Stream& stream, uint32_t count) {
    while (count > 0) {
        const uint32_t step = std::min(count, kFillPerStep);
        {
            const SioFrame together;
            for (uint32_t i = 0; i < step; ++i) {
                SIO_WriteByte(0xFF);
            }
        }
        stream.sent += step;
        stream.sum = static_cast<uint8_t>(stream.sum + step * 0xFF);
        count -= step;
        if (step == kFillPerStep) {
            finishStep(stream);
        }
    }
}

// A failure when the user has ended it.
Result<> sendData(const RamImageB& image) {
    Stream stream;
    for (const RamBlock& block : image.blocks) {
        if (TARGET_State().Cancel != 0 || RUN_IsInterrupted()) {
            return Failure{TERR_CANCELLED};
        }
        sendFill(stream, block.address - image.start - stream.sent);
        SIO_Write(block.data);
        stream.sent += static_cast<uint32_t>(block.data.size());
        stream.sum = static_cast<uint8_t>(stream.sum - bootChecksum(block.data));
        finishStep(stream);
    }
    SIO_WriteByte(static_cast<uint8_t>(0 - stream.sum));
    return {};
}

Result<> transferTypeB(const RamImageB& image, bool showProgress) {
    if (Result<> sent = bootCommand(0x10, "Echoback RAM loader command failed"); !sent) {
        return sent;
    }
    showDownload(showProgress);
    _SendPasswordTypeB();
    if (Result<> taken = afterPassword(bootAwait(kAcknowledge, kPasswordRefused)); !taken) {
        return taken;
    }
    sendHeader(image);
    if (Result<> taken = afterPassword(bootAwait(kAcknowledge, kPasswordRefused)); !taken) {
        return taken;
    }
    if (Result<> sent = sendData(image); !sent) {
        return sent;
    }
    return loaderAnswer(bootAwait(kAcknowledge, "Data checksum failed", DEVICE_GetTimeoutGetSUM()));
}

Result<LoaderTransfer> prepareTypeB(const std::string& text) {
    RamImageB image;
    if (const std::string error = parseRamImageB(text, image); !error.empty()) {
        return Failure{.reason = error};
    }
    return LoaderTransfer(
        [image = std::move(image)](bool show) { return transferTypeB(image, show); });
}

// The erase result and its check byte, which covers `covered`.
Result<> eraseResult(const std::vector<uint8_t>& covered) {
    constexpr const char* failure = "Erase operation result failure";
    uint8_t answer[1] = {};
    if (Result<> answered = _EraseWait(answer); !answered) {
        return answered;
    }
    if (Result<> erased = bootMatches(answer[0], kErased, failure); !erased) {
        return erased;
    }
    Result<> checked = bootAwait(bootChecksum(covered), failure);
    if (checked) {
        setBootSum(0);
        LOG_Add("Compared nothing: the boot ROM reported the erase (Blankcheck reads the chip)");
        PROGRESS_Done();
    }
    return checked;
}

Result<> _EraseChipTypeB() {
    if (DEVICE_GetRewriteVersion() > 1) {
        return Failure{}; // nobody knows how
    }
    Result<> sent = bootCommand(0x40, "Echoback flash memory rewrite command failed");
    if (!sent) {
        return sent;
    }
    if (DEVICE_GetRewriteVersion() == 0) {
        return eraseResult({kErased});
    }
    Result<> enabled = bootCommand(kEraseEnable, "Echoback erase enable command failed");
    return enabled ? eraseResult({kErased, kEraseEnable}) : enabled;
}

Result<> _ProtectChipTypeB() {
    if (Result<> matched = _ResetAndMatch(kBootRomTypeB); !matched) {
        return matched;
    }
    if (bootSumIsForgotten()) { // else the password of a blank chip would be sent to a programmed
                                // one
        if (Result<> summed = _GetSumTypeB(); !summed) {
            return summed;
        }
    }
    if (Result<> sent = bootCommand(0x60, "Echoback protect command failed"); !sent) {
        return sent;
    }
    _SendPasswordTypeB();
    return afterPassword(bootAwait(0x60, kPasswordRefused));
}

} // namespace

const BootRomProtocol kBootRomTypeB = {
    .Match = _MatchTypeB,
    .GetSum = _GetSumTypeB,
    .PrepareImage = prepareTypeB,
    .EraseChip = _EraseChipTypeB,
    .ProtectChip = _ProtectChipTypeB,
    .passwordInProgram = true,
    .passwordLength = kPasswordTypeB,
};
