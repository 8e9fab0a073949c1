#include "bootrom/boot_wire.h"
#include "bootrom/download.h"
#include "bootrom/handshake.h"
#include "bootrom/password_frame.h"
#include "bootrom/ram_image.h"
#include "device/device.h"
#include "device/devprops.h"
#include "link/target_state.h"
#include "notice/log.h"
#include "notice/progress.h"
#include "notice/run.h"
#include "platform/clock.h"
#include "platform/event_queue.h"
#include "serial/sio.h"

#include <vector>

namespace {

constexpr int kRecordPauseMs = 10; // the boot ROM writes to RAM while it receives

// Tells the loader the timer value that gives the baud rate, as a data record at `address`.
std::vector<uint8_t> timerRecord(uint16_t address) {
    const uint32_t baudrate = SIO_GetBaudrate();
    const uint32_t ticks = static_cast<uint32_t>(DEVPROPS_GetSpeed()) / 16;
    const uint32_t timer = baudrate == 0 ? 0 : ticks / baudrate;
    std::vector<uint8_t> record = {
        2, static_cast<uint8_t>(address >> 8), static_cast<uint8_t>(address),
        0, static_cast<uint8_t>(timer),        0};
    record.push_back(_BootChecksum(record));
    record.insert(record.begin(), ':');
    return record;
}

// A failure when the user has ended it.
Result<> sendRecords(const RamImageA& image) {
    PROGRESS_SetMax(static_cast<int32_t>(image.length));
    uint16_t next = 0;
    for (const RamRecord& record : image.records) {
        PROGRESS_SetPos(static_cast<int32_t>(record.consumed));
        if (TARGET_State().Cancel != 0 || RUN_IsInterrupted()) {
            return Failure{TERR_CANCELLED};
        }
        if (record.count() > 0) {
            next = static_cast<uint16_t>(record.address() + record.count());
        } else if (DEVICE_GetTimerInit() == 1) {
            SIO_Write(timerRecord(next));
            CLOCK_Sleep(kRecordPauseMs);
        }
        SIO_Write(record.bytes);
        EVENTS_ProcessOne();
        CLOCK_Sleep(kRecordPauseMs);
    }
    return {};
}

Result<> transfer(const RamImageA& image, bool showProgress) {
    if (Result<> sent = _BootCommand(0x60, "Echoback RAM loader command failed"); !sent) {
        return sent;
    }
    PROGRESS_SetText(showProgress ? "Downloading RAM Image..."
                                  : "Downloading internal used RAM image...");
    _SendPasswordTypeA();
    if (Result<> sent = sendRecords(image); !sent) {
        return sent;
    }
    _SetBootSum(0);
    Result<> summed = _ReadBootSum(DEVICE_GetTimeoutGetSUM());
    if (image.malformed) { // what a boot ROM says of half an image is no success
        return Failure{.reason = "Error parsing RAM-image"};
    }
    if (summed) {
        LOG_Add("Downloading RAM-Image finished");
    }
    return summed;
}

} // namespace

Result<> _DownloadTypeA(const std::string& path, bool showProgress) {
    RamImageA image;
    LoaderDownload family;
    family.accept = [&image](const std::string& text) {
        image = _ParseRamImageA(text);
        return _BootCheck(_RamImageFits(text), "RAM-Image does not fit into memory");
    };
    family.handshake = [] { return _BootHandshake(_MatchTypeA, _GetSumTypeA, true); };
    family.transfer = [&image](bool progress) { return transfer(image, progress); };
    return _DownloadRamImage(path, showProgress, family);
}
