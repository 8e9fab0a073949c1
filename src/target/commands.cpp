#include "target/commands.h"

#include "bootrom/boot_wire.h"
#include "bootrom/connect.h"
#include "bootrom/download.h"
#include "bootrom/flash_commands.h"
#include "bootrom/password_choice.h"
#include "device/device.h"
#include "device/image_checksum.h"
#include "link/chip_record.h"
#include "link/target_link.h"
#include "link/target_state.h"
#include "notice/error.h"
#include "notice/log.h"
#include "notice/progress.h"
#include "notice/run.h"
#include "platform/clock.h"
#include "platform/event_queue.h"
#include "platform/format.h"
#include "serial/idle_rate.h"
#include "serial/sio.h"
#include "serial/sio_line.h"
#include "target/checksum_commands.h"
#include "target/worker.h"

#include <functional>
#include <optional>
#include <string>

namespace {

constexpr int kConnectPauseMs = 500;
constexpr int kCommandPauseMs = 100;

// What a success rests on where nothing that the chip says can show every fault.
constexpr const char* kComparedSum =
    "Compared the 16-bit sum of the selected blocks, which does not see bytes that changed places";
constexpr const char* kAcknowledgedPages =
    "Compared nothing: the loader acknowledged every page (Verify reads them)";
constexpr const char* kAcknowledgedErase =
    "Compared nothing: the loader acknowledged the erase (Blankcheck reads the chip)";

// A command that posts one operation: what the user is told, and which operation it is.
struct CommandRow {
    std::string name;  // as progress display and log have it
    const char* done;  // what the box says
    const char* title; // of the box
    OperationCode operation;
    uint32_t (*supported)() = nullptr; // by the loader of the device; else `substitute` does it
    OperationCode substitute = operation;
    const char* restsOn = nullptr;

    OperationCode code() const {
        return supported == nullptr || supported() != 0 ? operation : substitute;
    }
    std::string line() const { return name + "..."; }
    std::string finished() const { return name + " finished"; }
    std::string failed() const { return name + " failed"; }
};

const CommandRow kEraseBlocks = {"Erasing Blocks",    "Blocks have been\nsuccessfully erased",
                                 "Erasing Blocks",    OP_ERASE_BLOCKS,
                                 DEVICE_GetSprtErase, OP_FILL_BLOCKS,
                                 kAcknowledgedErase};
const CommandRow kEraseChip = {"Erasing Chip",      "Chip has been\nsuccessfully erased",
                               "Erasing Chip",      OP_ERASE_CHIP,
                               DEVICE_GetSprtErase, OP_FILL_CHIP,
                               kAcknowledgedErase};
const CommandRow kProgram = {"Programming", "All bytes\nwritten successfully", "Programming",
                             OP_PROGRAM};
const CommandRow kProgramTarget = {"Programming target",
                                   "Target has been\nsuccessfully programmed",
                                   "Programming target",
                                   OP_PROGRAM_TARGET,
                                   nullptr,
                                   OP_PROGRAM_TARGET,
                                   kAcknowledgedPages};
const CommandRow kReadBack = {"Reading", "All bytes\nread successfully", "Reading", OP_READ_BACK};
const CommandRow kVerify = {"Verifying", "Verifying ok", "Verifying", OP_VERIFY};
const CommandRow kCompare = {"Comparing", "", "Comparing", OP_COMPARE};
const CommandRow kBlankChip = {"Blank check",  "Target is blank",        "Blank check chip",
                               OP_BLANK_CHECK, DEVICE_GetSprtBlankCheck, OP_BLANK_READ};
const CommandRow kBlankBlocks = {"Blank check",  "Selected blocks are blank", "Blank check blocks",
                                 OP_BLANK_CHECK, DEVICE_GetSprtBlankCheck,    OP_BLANK_READ_BLOCKS};
const CommandRow kProtectBlocks = {"Protecting Blocks", "Blocks have been\nsuccessfully protected",
                                   "Protecting Blocks", OP_PROTECT_BLOCKS};
const CommandRow kProtectChip = {"Protecting Chip", "Chip has been\nsuccessfully protected",
                                 "Protecting Chip", OP_PROTECT_CHIP};

void inform(const std::string& text, const char* caption) {
    ERROR_Ask(nullptr, text, caption, BOX_OK);
}

void showResult(const CommandRow& row, bool done, bool showBox = true) {
    if (done && row.restsOn != nullptr) {
        LOG_Add(row.restsOn);
    }
    LOG_Add(done ? row.finished() : row.failed());
    if (done && showBox) {
        inform(row.done, row.title);
    }
}

// Opens the progress display and gets the loader to run; closed again when that fails.
bool connect(const std::string& caption) {
    TARGET_BeginCommand(caption);
    if (TARGET_Connect() == 0) {
        PROGRESS_Close();
        return false;
    }
    return true;
}

// The pattern of the commands: connect, operation, result. Whether it was done.
bool runCommand(const CommandRow& row, const std::string& started, const AddressRange& range,
                const std::vector<DeviceBlock>& blocks = {}) {
    if (!connect(row.name)) {
        return false;
    }
    LOG_Add(started);
    const bool done = TARGET_RunOperation({row.code(), range, blocks}, row.line()).has_value();
    showResult(row, done);
    return done;
}

std::string rangeStarted(const char* what, uint32_t first, uint32_t last) {
    return formatText("%s 0x%06X - 0x%06X started", what, first, last);
}

bool eraseBlocks(bool showBox) {
    if (!TARGET_HasSelectedBlock()) {
        return false;
    }
    LOG_Add("Erasing Blocks started");
    if (!connect(kEraseBlocks.name)) {
        return false;
    }
    const Operation operation = {kEraseBlocks.code(), {}, DEVICE_SelectedBlocks()};
    const bool done = TARGET_RunOperation(operation, kEraseBlocks.line()).has_value();
    showResult(kEraseBlocks, done, showBox);
    return done;
}

// Whether the user has ended it; what he is told of that then is all. A Cancel does not end the
// boot ROM's erase, but what would follow it.
bool eraseWasCancelled(const Result<>& erased) {
    return erased ? TARGET_TakeCancel({Cause::eraseRunsOn, "the chip is erased"})
                  : erased.error().code == TERR_CANCELLED || RUN_IsInterrupted();
}

void forEachBlock(const std::function<void(const AddressRange&)>& note) {
    for (const DeviceBlock& block : DEVICE_Blocks()) {
        note(block.range);
    }
}

int eraseChipByBootRom(const BootRomProtocol& family, bool showBox) {
    TARGET_SetLinkState(LINK_BOOTROM);
    EVENTS_Sleep(kConnectPauseMs);
    const Result<> erased = _EraseChip(family);
    const bool cancelled = eraseWasCancelled(erased);
    const bool done = erased && !cancelled;
    if (erased) {
        forEachBlock([](const AddressRange& block) { CHIPRECORD_Note(block, ChipMark::erased); });
    } else {
        CHIPRECORD_Forget();
        _BootFail(erased.error(), showBox ? "" : kEraseChip.failed());
    }
    PROGRESS_Close();
    if (showBox && !cancelled) {
        inform(done ? kEraseChip.done : kEraseChip.failed(), kEraseChip.title);
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
    const Operation operation = {kEraseChip.code(), {}, DEVICE_Blocks()};
    const bool done = TARGET_RunOperation(operation, kEraseChip.line()).has_value();
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
    const uint16_t image = DEVICE_CalcImageChecksum(crc);
    if (*target == image) {
        LOG_Add(crc ? "Compared the CRC of the selected blocks" : kComparedSum);
        return true;
    }
    ERROR_Out(nullptr,
              ERROR_WithReason(crc ? "CRC-error" : "SUM-error",
                               formatText("image %04X, chip %04X", image, *target)),
              1, {Cause::contentsDiffer, "the selected blocks, Verify finds where"});
    return false;
}

bool confirmProtect() {
    return RUN_IsConfirmed() ||
           ERROR_Ask(nullptr,
                     "WHEN PROTECTING BLOCKS YOU CAN NOT PROGRAM\nOR ERASE THESE BLOCKS AFTER THIS "
                     "COMMAND.\n\nARE YOU SURE YOU WANT TO EXECUTE THE PROTECT COMMAND?",
                     "WARNING", BOX_OK_CANCEL) == ANSWER_OK;
}

} // namespace

bool TARGET_HasSelectedBlock() {
    if (!DEVICE_SelectedBlocks().empty()) {
        return true;
    }
    ERROR_Out(nullptr, "No block is selected", 1);
    return false;
}

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
        _BootFail(done.error(), downloadFailure());
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
    IDLERATE_Use(); // the application's first words come at it
    bool done = SIO_SetLines(SETDTR);
    CLOCK_Sleep(50);
    done = SIO_SetLines(CLRRTS) && done;
    CLOCK_Sleep(250);
    done = SIO_SetLines(CLRDTR) && done;
    CLOCK_Sleep(250);
    BOOT_SetChipInRom(BOOT_IsChipInRom() && !done);
    if (!done) { // else nobody would learn that the application does not run
        ERROR_Out(nullptr, ERROR_WithReason("Start Application failed", SIO_GetRefusal()), 1);
    }
}

int TARGET_EraseChip(bool showBox) {
    TARGET_BeginCommand(kEraseChip.name);
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
            return eraseBlocks(true) ? 0 : 1;
        }
    }
    return eraseChipByLoader(showBox);
}

void TARGET_EraseBlocks() {
    eraseBlocks(true);
}

bool TARGET_EraseSelectedBlocks() {
    return eraseBlocks(false);
}

void TARGET_Program(uint32_t first, uint32_t last) {
    if (!TARGET_HasSelectedBlock() || !connect(kProgram.name)) {
        return;
    }
    LOG_Add(rangeStarted("Programming", first, last));
    const Operation operation = {kProgram.code(), AddressRange::upTo(first, last)};
    const bool done = TARGET_RunOperation(operation, kProgram.line()) && checksumsAgree();
    if (done) {
        noteProgrammedPassword();
    }
    showResult(kProgram, done);
}

void TARGET_ProgramTarget() {
    if (runCommand(kProgramTarget, "Programming Chip started", {})) {
        noteProgrammedPassword();
    }
}

bool TARGET_ReadBack(uint32_t start, uint32_t end) {
    return runCommand(kReadBack, rangeStarted("Reading", start, end),
                      AddressRange::upTo(start, end));
}

std::optional<ImageCopy> TARGET_ReadToCompare(const std::vector<AddressRange>& ranges) {
    if (!connect(kCompare.name)) {
        return std::nullopt;
    }
    LOG_Add(rangeStarted("Comparing", ranges.front().start, ranges.back().last()));
    const auto copy = std::make_shared<ImageCopy>();
    copy->ranges = ranges;
    const Operation operation = {kCompare.code(), {}, {}, copy};
    if (!TARGET_RunOperation(operation, kCompare.line())) {
        LOG_Add(kCompare.failed());
        return std::nullopt;
    }
    return std::move(*copy);
}

void TARGET_Verify(uint32_t first, uint32_t last) {
    runCommand(kVerify, rangeStarted("Verifying", first, last), AddressRange::upTo(first, last));
}

void TARGET_BlankCheckChip() {
    const uint32_t first = DEVICE_GetFlashStart();
    const uint32_t last = DEVICE_GetFlashEnd();
    runCommand(kBlankChip, rangeStarted("Blank check", first, last),
               AddressRange::upTo(first, last), DEVICE_Blocks());
}

void TARGET_BlankCheckBlocks() {
    if (TARGET_HasSelectedBlock()) {
        runCommand(kBlankBlocks, "Blank check started", {}, DEVICE_SelectedBlocks());
    }
}

void TARGET_ProtectChip() {
    if (DEVICE_GetSprtProtectBlock() == 0) {
        const BootRomProtocol* family = currentProtocol();
        if (family != nullptr && family->ProtectChip != nullptr && !confirmProtect()) {
            return;
        }
        const bool done = runBootCommand(&BootRomProtocol::ProtectChip, "Protect Chip") == 0;
        if (done) {
            forEachBlock(CHIPRECORD_NoteProtected);
        }
        showResult(kProtectChip, done);
    } else if (confirmProtect()) {
        runCommand(kProtectChip, "Protecting Chip started", {}, DEVICE_Blocks());
    }
}

void TARGET_ProtectBlocks() {
    if (TARGET_HasSelectedBlock() && confirmProtect()) {
        runCommand(kProtectBlocks, "Protecting Blocks started", {}, DEVICE_SelectedBlocks());
    }
}

int TARGET_FlashStatus() {
    return runBootCommand(&BootRomProtocol::FlashStatus, "Flash Memory Status");
}
