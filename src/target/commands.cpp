#include "target/commands.h"

#include "bootrom/boot_wire.h"
#include "bootrom/connect.h"
#include "bootrom/download.h"
#include "bootrom/flash_commands.h"
#include "device/device.h"
#include "device/image_checksum.h"
#include "link/target_link.h"
#include "link/target_state.h"
#include "notice/error.h"
#include "notice/log.h"
#include "notice/progress.h"
#include "platform/clock.h"
#include "platform/event_queue.h"
#include "platform/format.h"
#include "serial/sio.h"
#include "target/checksum_commands.h"
#include "target/worker.h"

#include <optional>
#include <string>

namespace {

constexpr int kConnectPauseMs = 500;
constexpr int kCommandPauseMs = 100;

// What the user is told of a command that posts one operation.
struct CommandRow {
    const char* caption;
    const char* line;
    const char* finished;
    const char* boxText;
    const char* boxCaption;
    const char* failed;
};

constexpr CommandRow kEraseBlocks = {
    "Erasing Blocks",          "Erasing Blocks...",
    "Erasing Blocks finished", "Blocks have been\nsuccessfully erased",
    "Erasing Blocks",          "Erasing Blocks failed"};
constexpr CommandRow kEraseChip = {"Erasing Chip",          "Erasing Chip...",
                                   "Erasing Chip finished", "Chip has been\nsuccessfully erased",
                                   "Erasing Chip",          "Erasing Chip failed"};
constexpr CommandRow kProgram = {"Programming",          "Programming...",
                                 "Programming finished", "All bytes\nwritten successfully",
                                 "Programming",          "Programming failed"};
constexpr CommandRow kProgramTarget = {
    "Programming target",          "Programming target...",
    "Programming target finished", "Target has been\nsuccessfully programmed",
    "Programming target",          "Programming target failed"};
constexpr CommandRow kReadBack = {"Reading",          "Reading...",
                                  "Reading finished", "All bytes\nread successfully",
                                  "Reading",          "Reading failed"};
constexpr CommandRow kVerify = {"Verifying",    "Verifying...", "Verifying finished",
                                "Verifying ok", "Verifying",    "Verifying failed"};
constexpr CommandRow kBlankChip = {"Blank check",     "Blank check...",   "Blank check finished",
                                   "Target is blank", "Blank check chip", "Blank check failed"};
constexpr CommandRow kBlankBlocks = {"Blank check",          "Blank check...",
                                     "Blank check finished", "Selected blocks are blank",
                                     "Blank check blocks",   "Blank check failed"};
constexpr CommandRow kProtectBlocks = {
    "Protecting Blocks",          "Protecting Blocks...",
    "Protecting Blocks finished", "Blocks have been\nsuccessfully protected",
    "Protecting Blocks",          "Protecting Blocks failed"};
constexpr CommandRow kProtectChip = {
    "Protecting Chip",          "Protecting Chip...",
    "Protecting Chip finished", "Chip has been\nsuccessfully protected",
    "Protecting Chip",          "Protecting Chip failed"};

void inform(const char* text, const char* caption) {
    ERROR_Ask(nullptr, text, caption, BOX_OK);
}

void showResult(const CommandRow& row, bool done, bool showBox = true) {
    LOG_Add(done ? row.finished : row.failed);
    if (done && showBox) {
        inform(row.boxText, row.boxCaption);
    }
}

// Opens the progress display and gets the loader to run; closed again when that fails.
bool connect(const char* caption) {
    TARGET_BeginCommand(caption);
    if (TARGET_Connect() == 0) {
        PROGRESS_Close();
        return false;
    }
    return true;
}

// The pattern of the commands: connect, operation, result. Whether it was done.
bool runCommand(const CommandRow& row, const std::string& started, const Operation& operation) {
    if (!connect(row.caption)) {
        return false;
    }
    LOG_Add(started);
    const bool done = TARGET_RunOperation(operation, row.line).has_value();
    showResult(row, done);
    return done;
}

std::string rangeStarted(const char* what, uint32_t first, uint32_t last) {
    return formatText("%s 0x%06X - 0x%06X started", what, first, last);
}

bool eraseBlocks() {
    LOG_Add("Erasing Blocks started");
    if (!connect(kEraseBlocks.caption)) {
        return false;
    }
    const auto code = DEVICE_GetSprtErase() != 0 ? OP_ERASE_BLOCKS : OP_FILL_BLOCKS;
    const bool done =
        TARGET_RunOperation({code, {}, DEVICE_SelectedBlocks()}, kEraseBlocks.line).has_value();
    showResult(kEraseBlocks, done);
    return done;
}

// A Cancel does not end the boot ROM's erase, but what would follow it.
bool bootRomErased(const BootRomProtocol& family, bool showBox) {
    Result<> erased = _EraseChip(family);
    if (erased) {
        return !TARGET_TakeCancel();
    }
    _BootFail(erased.error(), showBox ? "" : kEraseChip.failed);
    return false;
}

int eraseChipByBootRom(const BootRomProtocol& family, bool showBox) {
    TARGET_SetLinkState(LINK_BOOTROM);
    EVENTS_Sleep(kConnectPauseMs);
    const bool done = bootRomErased(family, showBox);
    PROGRESS_Close();
    if (showBox) {
        inform(done ? kEraseChip.boxText : kEraseChip.failed, kEraseChip.boxCaption);
    }
    TARGET_SetLinkState(LINK_IDLE);
    return done ? 0 : 1;
}

int eraseChipByLoader(bool showBox) {
    if (TARGET_Connect() == 0) {
        PROGRESS_Close();
        return 1;
    }
    LOG_Add("Erasing Chip started");
    const auto code = DEVICE_GetSprtErase() != 0 ? OP_ERASE_CHIP : OP_FILL_CHIP;
    const bool done = TARGET_RunOperation({code, {}, DEVICE_Blocks()}, kEraseChip.line).has_value();
    showResult(kEraseChip, done, showBox);
    return done ? 0 : 1;
}

// Whether the chip now holds what was written; the difference is reported.
bool checksumsAgree() {
    const bool crc = DEVICE_GetSprtCRC() != 0;
    const std::optional<uint16_t> target = getTargetChecksum(crc, false);
    if (!target) {
        return false; // which has been reported
    }
    if (*target == DEVICE_CalcImageChecksum(crc)) {
        return true;
    }
    ERROR_Out(nullptr, crc ? "CRC-error" : "SUM-error", 1);
    return false;
}

bool confirmProtect() {
    return ERROR_Ask(nullptr,
                     "WHEN PROTECTING BLOCKS YOU CAN NOT PROGRAM\nOR ERASE THESE BLOCKS AFTER THIS "
                     "COMMAND.\n\nARE YOU SURE YOU WANT TO EXECUTE THE PROTECT COMMAND?",
                     "WARNING", BOX_OK_CANCEL) == ANSWER_OK;
}

} // namespace

void TARGET_DownloadRamImage(const std::string& path) {
    TARGET_State().Cancel = 0;
    const BootRomProtocol* family = _SelectProtocol();
    if (family == nullptr) {
        return;
    }
    TARGET_SetLinkState(LINK_BOOTROM);
    CLOCK_Sleep(kCommandPauseMs);
    TARGET_AwaitPort();
    PROGRESS_SetCancelHandler(TARGET_Cancel);
    Result<> done = _DownloadRamImage(*family, path, true);
    PROGRESS_Close();
    if (done) {
        inform("All bytes\nwritten successfully", "Download RAM-Image");
    } else {
        _BootFail(done.error(), "Could not download RAM image. Please check password");
    }
    TARGET_SetLinkState(LINK_IDLE);
    CLOCK_Sleep(kCommandPauseMs);
    _BootReset();
}

void TARGET_StartApplication() {
    TARGET_Disconnect();
    if (!SIO_EnsureOpen()) {
        return; // the port has said why
    }
    bool done = SIO_SetLines(SETDTR);
    CLOCK_Sleep(50);
    done = SIO_SetLines(CLRRTS) && done;
    CLOCK_Sleep(250);
    done = SIO_SetLines(CLRDTR) && done;
    CLOCK_Sleep(250);
    if (!done) { // else nobody would learn that the application does not run
        ERROR_Out(nullptr, "Start Application failed", 1);
    }
}

int TARGET_EraseChip(bool showBox) {
    TARGET_BeginCommand(kEraseChip.caption);
    if (TARGET_State().LinkState == LINK_IDLE) {
        const BootRomProtocol* family = _SelectProtocol();
        if (family == nullptr) {
            PROGRESS_Close();
            return 1;
        }
        if (family->EraseChip != nullptr && DEVICE_GetSprtEraseChip() != 0) {
            return eraseChipByBootRom(*family, showBox);
        }
        if (DEVICE_GetSprtErase() != 0) {
            return eraseBlocks() ? 0 : 1;
        }
    }
    return eraseChipByLoader(showBox);
}

void TARGET_EraseBlocks() {
    eraseBlocks();
}

void TARGET_Program(uint32_t first, uint32_t last) {
    if (!connect(kProgram.caption)) {
        return;
    }
    LOG_Add(rangeStarted("Programming", first, last));
    const Operation operation = {OP_PROGRAM, AddressRange::upTo(first, last)};
    const bool done = TARGET_RunOperation(operation, kProgram.line) && checksumsAgree();
    showResult(kProgram, done);
}

void TARGET_ProgramTarget() {
    runCommand(kProgramTarget, "Programming Chip started", {OP_PROGRAM_TARGET});
}

void TARGET_ReadBack(uint32_t start, uint32_t end) {
    runCommand(kReadBack, rangeStarted("Reading", start, end),
               {OP_READ_BACK, AddressRange::upTo(start, end)});
}

void TARGET_Verify(uint32_t first, uint32_t last) {
    runCommand(kVerify, rangeStarted("Verifying", first, last),
               {OP_VERIFY, AddressRange::upTo(first, last)});
}

void TARGET_BlankCheckChip() {
    const uint32_t first = DEVICE_GetFlashStart();
    const uint32_t last = DEVICE_GetFlashEnd();
    const auto code = DEVICE_GetSprtBlankCheck() != 0 ? OP_BLANK_CHECK : OP_BLANK_READ;
    runCommand(kBlankChip, rangeStarted("Blank check", first, last),
               {code, AddressRange::upTo(first, last), DEVICE_Blocks()});
}

void TARGET_BlankCheckBlocks() {
    const auto code = DEVICE_GetSprtBlankCheck() != 0 ? OP_BLANK_CHECK : OP_BLANK_READ_BLOCKS;
    runCommand(kBlankBlocks, "Blank check started", {code, {}, DEVICE_SelectedBlocks()});
}

void TARGET_ProtectChip() {
    if (DEVICE_GetSprtProtectBlock() == 0) {
        const bool done = _RunBootCommand(&BootRomProtocol::ProtectChip, "Protect Chip") == 0;
        showResult(kProtectChip, done);
    } else if (confirmProtect()) {
        runCommand(kProtectChip, "Protecting Chip started", {OP_PROTECT_CHIP, {}, DEVICE_Blocks()});
    }
}

void TARGET_ProtectBlocks() {
    if (confirmProtect()) {
        runCommand(kProtectBlocks, "Protecting Blocks started",
                   {OP_PROTECT_BLOCKS, {}, DEVICE_SelectedBlocks()});
    }
}

int TARGET_FlashStatus() {
    return _RunBootCommand(&BootRomProtocol::FlashStatus, "Flash Memory Status");
}
