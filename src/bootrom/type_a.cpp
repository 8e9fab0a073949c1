// The boot ROM of TYPE_A: synchronised at 9600 Bd and told the rate by a code, its loader sent as
// Intel HEX records in binary form.

#include "bootrom/boot_wire.h"
#include "bootrom/family.h"
#include "bootrom/flash_commands.h"
#include "bootrom/handshake.h"
#include "bootrom/password_choice.h"
#include "bootrom/ram_image.h"
#include "device/device.h"
#include "device/devprops.h"
#include "link/target_state.h"
#include "notice/log.h"
#include "notice/progress.h"
#include "notice/run.h"
#include "platform/clock.h"
#include "platform/event_queue.h"
#include "platform/format.h"
#include "serial/sio.h"
#include "serial/sio_line.h"

#include <string>
#include <vector>

extern const BootRomProtocol kBootRomTypeA;

namespace {

constexpr int kRecordPauseMs = 10;          // the boot ROM writes to RAM while it receives
constexpr size_t kBlankPasswordTypeA = 255; // bytes of 0xFF
// An Intel HEX end record in binary: an empty program.
constexpr uint8_t kEndRecord[] = {0x3A, 0x00, 0x00, 0x00, 0x01, 0xFF};
constexpr uint8_t kFlashCleared = 0xC1;

// The byte that tells the boot ROM the rate to use.
uint8_t _BaudCode(uint32_t rate) {
    switch (rate) {
    case 9600:
        return 0x28;
    case 19200:
        return 0x18;
    case 31250:
        return 0x0A;
    case 38400:
        return 0x07;
    case 62500:
        return 0x05;
    case 76800:
        return 0x04;
    default:
        return 0x1C;
    }
}

Result<> _MatchTypeA(uint32_t baudrate) {
    if (Result<> matched = familyMatchByte(0x5A); !matched) {
        return matched;
    }
    const uint8_t code = _BaudCode(baudrate);
    SIO_WriteByte(code);
    // Late echoes of the match may come first.
    Result<> set = bootAwaitAmong(code, "Setting baudrate failed", kMatchMs);
    if (set) {
        if (SIO_ChangeBaudrate(baudrate) == 0) {
            return Failure{TERR_REPORTED};
        }
    }
    return set;
}

Result<> _GetSumTypeA() {
    Result<> sent = bootCommand(0x90, "SUM command failed");
    return sent ? readBootSum(kSumMs) : sent;
}

void appendAddress(std::vector<uint8_t>& frame, uint32_t address) {
    const uint32_t length = DEVICE_GetRAMCodeAdrLen();
    if (length == 0 || length > 2) {
        frame.push_back(static_cast<uint8_t>(address >> 16));
    }
    frame.push_back(static_cast<uint8_t>(address >> 8));
    frame.push_back(static_cast<uint8_t>(address));
}

// Count address, compare address, password; a blank chip has 255 bytes of 0xFF.
void _SendPasswordTypeA() {
    const BootPassword password = passwordInForce();
    const bool blank = password.origin == BootPassword::Origin::blankChip;
    std::vector<uint8_t> frame;
    appendAddress(frame, password.adrCount);
    appendAddress(frame, password.adrCompare);
    const std::vector<uint8_t> bytes =
        blank ? std::vector<uint8_t>(kBlankPasswordTypeA, 0xFF) : password.bytes;
    frame.insert(frame.end(), bytes.begin(), bytes.end());
    SIO_Write(frame);
}

// Tells the loader the timer value that gives the baud rate, as a data record at `address`.
std::vector<uint8_t> timerRecord(uint16_t address) {
    const uint32_t baudrate = SIO_GetBaudrate();
    const uint32_t ticks = static_cast<uint32_t>(DEVPROPS_GetSpeed()) / 16;
    const uint32_t timer = baudrate == 0 ? 0 : ticks / baudrate;
    std::vector<uint8_t> record = {
        2, static_cast<uint8_t>(address >> 8), static_cast<uint8_t>(address),
        0, static_cast<uint8_t>(timer),        0};
    record.push_back(bootChecksum(record));
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

Result<> transferTypeA(const RamImageA& image, bool showProgress) {
    if (Result<> sent = bootCommand(0x60, "Echoback RAM loader command failed"); !sent) {
        return sent;
    }
    showDownload(showProgress);
    _SendPasswordTypeA();
    if (Result<> sent = sendRecords(image); !sent) {
        return sent;
    }
    setBootSum(0);
    Result<> summed = loaderAnswer(afterPassword(readBootSum(DEVICE_GetTimeoutGetSUM())));
    if (image.malformed) { // what a boot ROM says of half an image is no success
        return Failure{.reason = "Error parsing RAM-image"};
    }
    if (summed) {
        LOG_Add("Downloading RAM-Image finished");
    }
    return summed;
}

Result<LoaderTransfer> prepareTypeA(const std::string& text) {
    Result<> fits = _BootCheck(_RamImageFits(text), "RAM-Image does not fit into memory");
    if (!fits) {
        return fits.error();
    }
    return LoaderTransfer([image = parseRamImageA(text)](bool showProgress) {
        return transferTypeA(image, showProgress);
    });
}

// Runs the handshake and a command that the boot ROM echoes.
Result<> beginCommand(uint8_t command, const char* failure) {
    Result<> begun = _BootHandshake(kBootRomTypeA);
    return begun ? bootCommand(command, failure) : begun;
}

// Rewriting the flash with an empty program.
Result<> eraseByRewriteCommand() {
    Result<> sent = bootCommand(0x30, "Echoback flash memory rewrite command failed");
    if (!sent) {
        return sent;
    }
    setBootSum(0);
    uint8_t answer[1] = {};
    if (Result<> answered = _EraseWait(answer); !answered) {
        return answered;
    }
    Result<> cleared = bootMatches(answer[0], kFlashCleared, "Clearing flash memory failed");
    if (!cleared) {
        return cleared;
    }
    PROGRESS_SetPos(2);
    SIO_Write(kEndRecord);
    PROGRESS_SetText("Waiting for SUM...");
    Result<> summed = readBootSum(kReplyMs);
    if (summed) {
        LOG_Add(formatText("By its checksum %04X the chip is %s", getBootSum(),
                           _IsBlank() ? "blank" : "not blank"));
        PROGRESS_Done();
    }
    return summed;
}

Result<> eraseByEraseCommand() {
    Result<> sent = bootCommand(0xF0, "Echoback flash memory erase command failed");
    if (!sent) {
        return sent;
    }
    _SendPasswordTypeA();
    SIO_WriteByte(0xF1);
    setBootSum(0);
    uint8_t answer[2] = {};
    if (Result<> answered = _EraseWait(answer); !answered) {
        return answered;
    }
    setBootSum(answer[0] * 256U + answer[1]);
    PROGRESS_Done();
    return _IsBlank() ? Result<>() : Failure{};
}

Result<> _EraseChipTypeA() {
    return DEVICE_GetSprtFlashEraseCMD() == 1 ? eraseByEraseCommand() : eraseByRewriteCommand();
}

Result<> _FlashStatusTypeA() {
    Result<> begun = beginCommand(0xC3, "Flash memory status output command failed");
    if (!begun) {
        return begun;
    }
    uint8_t status[7] = {};
    if (Result<> read = bootRead(status, kReplyMs); !read) {
        return read;
    }
    std::string line;
    for (const uint8_t byte : status) {
        line += formatText("%02X ", byte);
    }
    LOG_Add("Flash memory status:");
    LOG_Add(line);
    return {};
}

Result<> _ReadProtectTypeA() {
    constexpr const char* failure = "Flash memory read protection command failed";
    if (Result<> begun = beginCommand(0xFA, failure); !begun) {
        return begun;
    }
    _SendPasswordTypeA();
    Result<> done = afterPassword(bootAwait(0xFB, failure));
    if (done) {
        LOG_Add("Flash memory read protection command executed");
    }
    return done;
}

} // namespace

const BootRomProtocol kBootRomTypeA = {
    .matchBaudrate = 9600,
    .Match = _MatchTypeA,
    .GetSum = _GetSumTypeA,
    .PrepareImage = prepareTypeA,
    .EraseChip = _EraseChipTypeA,
    .FlashStatus = _FlashStatusTypeA,
    .ReadProtect = _ReadProtectTypeA,
};
