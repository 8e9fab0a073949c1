// The boot ROM of TYPE_B: matched at any rate, loader sent as one block with a checksum.
#include "platform/format.h"
#include "sim/chip_state.h"

namespace {

constexpr size_t kPasswordLength = 12;
constexpr uint8_t kRefusedPassword = 0x11;
constexpr uint8_t kBadChecksum = 0x18;
// The longest that the host may send without a pause: filling up to a record, and the record.
constexpr size_t kLongestPiece = 31 + 250;
constexpr int64_t kOneMomentUs = 5000;

std::vector<uint8_t> expectedPassword(const Chip& chip) {
    std::vector<uint8_t> expected(kPasswordLength, 0xFF);
    if (SIMFLASH_IsBlank(chip.flash)) {
        return expected;
    }
    const DeviceRecord& device = chip.device;
    for (size_t i = 0; i < kPasswordLength; i++) {
        if (i < chip.options.password.size()) {
            expected[i] = chip.options.password[i];
        } else if (!chip.options.password.empty()) {
            expected[i] = 0x00;
        } else if (i < device.aIDAdr.size()) {
            expected[i] = SIMFLASH_Get(chip.flash, device.aIDAdr[i]);
        } else if (device.aIDAdr.empty() && i < device.PWAreaLen) {
            expected[i] = SIMFLASH_Get(chip.flash, device.PWAreaStart + static_cast<uint32_t>(i));
        } else {
            expected[i] = chip.boot.bytes[i]; // not compared
        }
    }
    return expected;
}

// Judges the password block just received: the byte to answer with, the command's own for yes.
uint8_t judgePassword(Chip& chip, uint8_t accepted) {
    const std::span<const uint8_t> block = chip.boot.bytes;
    if (SIM_TwosComplement(block) != 0) {
        SIM_Violation(chip, "password block with a wrong checksum");
        return kBadChecksum;
    }
    const bool refused =
        SIM_PasswordRefused(chip, block.first(kPasswordLength), expectedPassword(chip));
    return refused ? kRefusedPassword : accepted;
}

void finishDownload(Chip& chip, Moment at) {
    const std::vector<uint8_t> block = chip.boot.bytes;
    if (SIM_TwosComplement(block) != 0) {
        SIM_Violation(chip, "loader data with a wrong checksum");
        SIM_BootReply(chip, ChipStep::data, {kBadChecksum}, at);
        SIM_WantCommand(chip);
        return;
    }
    chip.boot.ram.assign(block.begin(), block.end() - 1);
    SIM_BootReply(chip, ChipStep::data, {0x10}, at);
    SIM_StartLoader(chip);
}

// What is wrong with the block header just received; empty when nothing is.
std::string headerFault(const Chip& chip) {
    const BootRom& boot = chip.boot;
    if (SIM_TwosComplement(boot.bytes) != 0) {
        return "block header with a wrong checksum";
    }
    if (boot.blockSize == 0) {
        return "the loader has no data";
    }
    const DeviceRecord& device = chip.device;
    const uint64_t end = uint64_t{boot.blockStart} + boot.blockSize;
    if (device.RamLen != 0 &&
        (boot.blockStart < device.RamStart || end > uint64_t{device.RamStart} + device.RamLen)) {
        return formatText("loader block %08X, %u bytes, outside the RAM", boot.blockStart,
                          boot.blockSize);
    }
    return {};
}

// Pieces are what is handed over at one moment, be it in two calls one behind the other. Where the
// moment is not known exactly, one may have been read as several.
void watchPieces(Chip& chip, Moment) {
    BootRom& boot = chip.boot;
    const PendingByte& byte = chip.byte;
    const bool exact = byte.earliest == byte.handed;
    const int64_t gap = byte.handed.us - boot.piece.us;
    const bool begins = gap >= (exact ? kOneMomentUs : kPieceUs);
    if (boot.pieceBytes == 0 || begins) {
        SIM_PieceBegins(chip);
    }
    if (++boot.pieceBytes == kLongestPiece + 1 && chip.options.strict) {
        SIM_Violation(
            chip, formatText("more than %zu bytes of loader data without a pause", kLongestPiece));
    }
}

void takeHeader(Chip& chip, Moment at) {
    BootRom& boot = chip.boot;
    boot.blockStart = static_cast<uint32_t>(boot.bytes[0]) << 24 |
                      static_cast<uint32_t>(boot.bytes[1]) << 16 |
                      static_cast<uint32_t>(boot.bytes[2]) << 8 | boot.bytes[3];
    boot.blockSize = static_cast<uint32_t>(boot.bytes[4]) << 8 | boot.bytes[5];
    const std::string fault = headerFault(chip);
    if (!fault.empty()) {
        SIM_Violation(chip, fault);
        SIM_BootReply(chip, ChipStep::header, {kBadChecksum}, at);
        SIM_WantCommand(chip);
        return;
    }
    SIM_BootReply(chip, ChipStep::header, {0x10}, at);
    boot.pieceBytes = 0;
    SIM_Want(chip, boot.blockSize + 1, finishDownload);
    boot.each = watchPieces;
}

void takePassword(Chip& chip, Moment at) {
    const uint8_t answer = judgePassword(chip, 0x10);
    SIM_BootReply(chip, ChipStep::password, {answer}, at);
    if (answer == 0x10) {
        SIM_Want(chip, 7, takeHeader);
    } else {
        SIM_WantCommand(chip);
    }
}

void protect(Chip& chip, Moment at) {
    const uint8_t answer = judgePassword(chip, 0x60);
    if (answer == 0x60) {
        for (FlashArea& area : chip.flash.areas) {
            area.isProtected = true;
        }
    }
    SIM_BootReply(chip, ChipStep::protectDone, {answer}, at);
    SIM_WantCommand(chip);
}

void eraseAndReport(Chip& chip, uint8_t enable, Moment at) {
    const Moment done = SIM_EraseChip(chip, at);
    const uint8_t sum[] = {0x4F, enable};
    SIM_BootReply(chip, ChipStep::cleared, {0x4F, SIM_TwosComplement(sum)}, done);
    SIM_WantCommand(chip);
}

void eraseEnabled(Chip& chip, Moment at) {
    const uint8_t value = chip.boot.bytes.front();
    if (value != 0x54) {
        SIM_Violation(chip, formatText("byte %02X where the erase is enabled", unsigned{value}));
        SIM_WantCommand(chip);
        return;
    }
    SIM_BootReply(chip, ChipStep::enable, {0x54}, at);
    eraseAndReport(chip, 0x54, at);
}

void rewrite(Chip& chip, Moment at) {
    SIM_BootReply(chip, ChipStep::rewrite, {0x40}, at);
    if (chip.device.RewriteVersion == 0) {
        eraseAndReport(chip, 0, at);
    } else {
        SIM_Want(chip, 1, eraseEnabled);
    }
}

void sum(Chip& chip, Moment at) {
    const uint16_t value = SIMFLASH_BootSum(chip.flash);
    const uint8_t bytes[] = {static_cast<uint8_t>(value >> 8), static_cast<uint8_t>(value)};
    const Moment done = SIM_AfterChecksum(chip, SIM_FlashBytes(chip), at);
    SIM_BootReply(chip, ChipStep::sum, {0x20, bytes[0], bytes[1], SIM_TwosComplement(bytes)}, done);
    SIM_WantCommand(chip);
}

void matchedTypeB(Chip& chip, Moment) {
    SIM_WantCommand(chip);
}

void commandTypeB(Chip& chip, Moment at) {
    const uint8_t command = chip.boot.bytes.front();
    if (command == 0x20) {
        sum(chip, at);
    } else if (command == 0x10) {
        SIM_BootReply(chip, ChipStep::ram, {0x10}, at);
        SIM_Want(chip, kPasswordLength + 1, takePassword);
    } else if (command == 0x40 && chip.device.SprtEraseChip) {
        rewrite(chip, at);
    } else if (command == 0x60 && chip.device.SprtProtectChip && !chip.device.SprtProtectBlock) {
        SIM_BootReply(chip, ChipStep::protect, {0x60}, at);
        SIM_Want(chip, kPasswordLength + 1, protect);
    } else {
        SIM_UnknownCommand(chip, command);
    }
}

} // namespace

extern const BootFamily kBootFamilyB;
const BootFamily kBootFamilyB = {
    .matchByte = 0x86, .matchRate = 0, .matched = matchedTypeB, .command = commandTypeB};
