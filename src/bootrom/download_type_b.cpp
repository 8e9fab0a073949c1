#include "bootrom/boot_wire.h"
#include "bootrom/download.h"
#include "bootrom/handshake.h"
#include "bootrom/password_frame.h"
#include "bootrom/ram_image.h"
#include "device/device.h"
#include "link/target_state.h"
#include "notice/progress.h"
#include "notice/run.h"
#include "platform/clock.h"
#include "platform/event_queue.h"
#include "serial/sio.h"

#include <algorithm>
#include <span>

namespace {

constexpr uint8_t kAcknowledge = 0x10;
constexpr int kPauseMs = 10;          // the boot ROM writes to RAM while it receives
constexpr uint32_t kFillPerStep = 32; // bytes

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
    header[6] = _BootChecksum(std::span(header).first(6));
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
        stream.sum = static_cast<uint8_t>(stream.sum - _BootChecksum(block.data));
        finishStep(stream);
    }
    SIO_WriteByte(static_cast<uint8_t>(0 - stream.sum));
    return {};
}

Result<> transfer(const RamImageB& image) {
    if (Result<> sent = _BootCommand(0x10, "Echoback RAM loader command failed"); !sent) {
        return sent;
    }
    _SendPasswordTypeB();
    if (Result<> taken = _BootAwait(kAcknowledge, "Password checksum failed"); !taken) {
        return taken;
    }
    sendHeader(image);
    if (Result<> taken = _BootAwait(kAcknowledge, "Password checksum failed"); !taken) {
        return taken;
    }
    if (Result<> sent = sendData(image); !sent) {
        return sent;
    }
    return _BootAwait(kAcknowledge, "Data checksum failed", DEVICE_GetTimeoutGetSUM());
}

} // namespace

Result<> _DownloadTypeB(const std::string& path, bool showProgress) {
    RamImageB image;
    LoaderDownload family;
    family.accept = [&image](const std::string& text) {
        const std::string error = _ParseRamImageB(text, image);
        return _BootCheck(error.empty(), error);
    };
    family.handshake = [] { return _BootHandshake(_MatchTypeB, _GetSumTypeB, false); };
    family.transfer = [&image](bool) { return transfer(image); };
    return _DownloadRamImage(path, showProgress, family);
}
