// The boot ROM of TYPE_A: matched at 9600 Bd, told its rate by a code, loader sent as hex records
// in binary form.
#include "platform/format.h"
#include "sim/chip_state.h"

#include <algorithm>
#include <array>

namespace {

constexpr uint8_t kRecordMark = 0x3A;
constexpr uint8_t kOtherRate = 0x1C;
constexpr uint32_t kErasedPasswordLength = 255;

struct RateCode {
    uint8_t code;
    uint32_t rate;
};
constexpr std::array<RateCode, 6> kRateCodes = {
    {{0x28, 9600}, {0x18, 19200}, {0x0A, 31250}, {0x07, 38400}, {0x05, 62500}, {0x04, 76800}}};

void recordStart(Chip& chip, Moment at);
void recordHeader(Chip& chip, Moment at);

size_t addressWidth(const Chip& chip) {
    const uint32_t length = chip.device.RAMCodeAdrLen;
    return length == 0 || length > 2 ? 3 : 2;
}

uint32_t bigEndian(std::span<const uint8_t> bytes) {
    uint32_t value = 0;
    for (const uint8_t byte : bytes) {
        value = value << 8 | byte;
    }
    return value;
}

bool hasPassword(const Chip& chip) {
    return !chip.options.password.empty() || chip.device.PWAreaLen != 0 ||
           !chip.device.aIDAdr.empty();
}

// How many password bytes the chip takes. An erased chip and one with an erased length byte take
// as many as the length byte 0xFF says.
uint32_t passwordLength(const Chip& chip, uint32_t countAddress) {
    if (SIMFLASH_IsBlank(chip.flash)) {
        return hasPassword(chip) ? kErasedPasswordLength : 0;
    }
    if (!chip.options.password.empty()) {
        return static_cast<uint32_t>(chip.options.password.size());
    }
    if (chip.device.PWAreaLen != 0) {
        return SIMFLASH_Get(chip.flash, countAddress);
    }
    return static_cast<uint32_t>(chip.device.aIDAdr.size());
}

std::vector<uint8_t> expectedPassword(const Chip& chip, size_t length) {
    std::vector<uint8_t> expected(length, 0xFF);
    if (SIMFLASH_IsBlank(chip.flash)) {
        return expected;
    }
    if (!chip.options.password.empty()) {
        return chip.options.password;
    }
    for (size_t i = 0; i < length; i++) {
        const uint32_t address = chip.device.PWAreaLen != 0
                                     ? chip.boot.compareAddress + static_cast<uint32_t>(i)
                                     : chip.device.aIDAdr[i];
        expected[i] = SIMFLASH_Get(chip.flash, address);
    }
    return expected;
}

bool isInPasswordArea(const DeviceRecord& device, uint32_t address) {
    return device.PWAreaLen == 0 ||
           (address >= device.PWAreaStart && address - device.PWAreaStart < device.PWAreaLen);
}

void passwordBytes(Chip& chip, Moment at) {
    const std::vector<uint8_t> sent = chip.boot.bytes;
    const std::vector<uint8_t> expected = expectedPassword(chip, sent.size());
    if (SIM_PasswordRefused(chip, sent, expected)) {
        chip.boot.refused = true;
        return;
    }
    chip.boot.afterPassword(chip, at);
}

void passwordAddresses(Chip& chip, Moment at) {
    const size_t width = addressWidth(chip);
    const std::span<const uint8_t> bytes = chip.boot.bytes;
    const uint32_t count = SIMFLASH_ToChip(chip.flash, bigEndian(bytes.first(width)));
    const uint32_t compare = SIMFLASH_ToChip(chip.flash, bigEndian(bytes.subspan(width)));
    if (!isInPasswordArea(chip.device, count) || !isInPasswordArea(chip.device, compare)) {
        SIM_TranscriptNote(chip, "password refused: addresses outside its area", at);
        chip.boot.refused = true;
        return;
    }
    chip.boot.compareAddress = compare;
    const uint32_t length = passwordLength(chip, count);
    chip.boot.passwordBytes = length;
    if (length == 0) {
        chip.boot.afterPassword(chip, at);
    } else {
        SIM_Want(chip, length, passwordBytes);
    }
}

void wantPassword(Chip& chip, BootStep next) {
    chip.boot.afterPassword = next;
    SIM_Want(chip, 2 * addressWidth(chip), passwordAddresses);
}

// Password bytes beyond those that the chip counts: 0xFF from a host that fills up, any from a host
// whose chip has no password; no more in all than a count byte can say.
bool isSurplus(Chip& chip, uint8_t value) {
    constexpr uint32_t kMaxPassword = 255;
    return ++chip.boot.passwordBytes <= kMaxPassword && (value == 0xFF || !hasPassword(chip));
}

void rateCode(Chip& chip, Moment at) {
    const uint8_t code = chip.boot.bytes.front();
    const auto known = std::ranges::find(kRateCodes, code, &RateCode::code);
    if (known == kRateCodes.end() && code != kOtherRate) {
        const bool repeatedMatch = chip.options.resyncByMatch && code == chip.family->matchByte;
        if (!repeatedMatch) {
            SIM_Violation(chip, formatText("unknown baud rate code %02X", unsigned{code}));
        }
        SIM_Want(chip, 1, rateCode);
        return;
    }
    SIM_BootReply(chip, ChipStep::baudrate, {code}, at);
    chip.rate = code == kOtherRate ? 0 : known->rate;
    SIM_WantCommand(chip);
}

void fail(Chip& chip, const std::string& text) {
    SIM_Violation(chip, text);
    chip.boot.recordFault = true;
}

// Data records carry 16-bit addresses; those of a segment or page record are not looked at.
void takeData(Chip& chip, uint32_t address, std::span<const uint8_t> data) {
    const DeviceRecord& device = chip.device;
    // The timer record lies right behind the image, which may fill the RAM.
    const uint64_t end = uint64_t{device.RamStart} + device.RamLen + (device.TimerInit ? 2 : 0);
    if (address < device.RamStart || address + data.size() > end) {
        fail(chip, formatText("loader record %04X outside the RAM", address));
    }
    chip.boot.ram.insert(chip.boot.ram.end(), data.begin(), data.end());
    chip.boot.record.assign(data.begin(), data.end());
}

uint16_t ramSum(const Chip& chip) {
    uint16_t sum = 0;
    for (const uint8_t byte : chip.boot.ram) {
        sum = static_cast<uint16_t>(sum + byte);
    }
    return sum;
}

// The timer record, which comes last, is a single byte and a zero.
void checkTimer(Chip& chip) {
    const std::vector<uint8_t>& last = chip.boot.record;
    if (last.size() != 2 || last[1] != 0) {
        fail(chip, "no timer record before the end of the loader");
    }
}

std::vector<uint8_t> sumBytes(uint16_t sum) {
    return {static_cast<uint8_t>(sum >> 8), static_cast<uint8_t>(sum)};
}

void endOfRecords(Chip& chip, Moment at) {
    if (chip.boot.rewriting) {
        const Moment done = SIM_AfterChecksum(chip, SIM_FlashBytes(chip), at);
        SIM_BootReply(chip, ChipStep::rewritten, sumBytes(SIMFLASH_BootSum(chip.flash)), done);
        SIM_WantCommand(chip);
        return;
    }
    if (chip.boot.ram.empty()) {
        fail(chip, "the loader has no data");
    } else if (chip.device.TimerInit != 0) {
        checkTimer(chip);
    }
    if (chip.boot.recordFault) {
        chip.boot.refused = true;
        return;
    }
    SIM_BootReply(chip, ChipStep::data, sumBytes(ramSum(chip)), at);
    SIM_StartLoader(chip);
}

// Whether a record has as many bytes as those of its type have; there are none beyond type 05.
bool isWellFormed(uint8_t type, size_t count) {
    constexpr std::array<size_t, 6> kCounts = {0, 0, 2, 4, 2, 4};
    return type == 0x00 ? count > 0 : type < kCounts.size() && count == kCounts[type];
}

void recordBody(Chip& chip, Moment at) {
    const std::vector<uint8_t> record = chip.boot.bytes;
    if (SIM_TwosComplement(record) != 0) {
        fail(chip, "record with a wrong checksum");
    }
    if (chip.options.strict && !isWellFormed(record[3], record[0])) {
        fail(chip, formatText("record of type %02X with %u bytes", unsigned{record[3]},
                              unsigned{record[0]}));
    }
    const size_t count = record[0];
    const uint8_t type = record[3];
    if (type == 0x01) {
        endOfRecords(chip, at);
        return;
    }
    if (chip.boot.rewriting) {
        fail(chip, "flash data in a rewrite, which this chip takes only empty");
    } else if (type == 0x00) {
        takeData(chip, bigEndian(std::span(record).subspan(1, 2)),
                 std::span(record).subspan(4, count));
    }
    SIM_Want(chip, 1, recordStart);
}

// Goes on collecting: the header tells how much follows it.
void recordHeader(Chip& chip, Moment) {
    chip.boot.wanted = size_t{chip.boot.bytes.front()} + 5;
    chip.boot.step = recordBody;
}

void recordStart(Chip& chip, Moment) {
    const uint8_t value = chip.boot.bytes.front();
    if (value == kRecordMark) {
        SIM_PieceBegins(chip);
        chip.boot.pieceBytes = 1;
        SIM_Want(chip, 1, recordHeader);
        return;
    }
    if (!isSurplus(chip, value) || !chip.boot.ram.empty()) {
        SIM_Violation(chip, formatText("byte %02X where a record begins", unsigned{value}));
    }
    SIM_Want(chip, 1, recordStart);
}

void loaderRecords(Chip& chip, Moment) {
    chip.boot.pieceBytes = 0;
    SIM_Want(chip, 1, recordStart);
}

void replyToRewrite(Chip& chip, Moment at) {
    SIM_BootReply(chip, ChipStep::rewrite, {0x30}, at);
    const Moment done = SIM_EraseChip(chip, at);
    SIM_BootReply(chip, ChipStep::cleared, {0xC1}, done);
    chip.boot.rewriting = true;
    chip.boot.recordFault = false;
    SIM_Want(chip, 1, recordStart);
}

void eraseConfirmed(Chip& chip, Moment at) {
    const uint8_t value = chip.boot.bytes.front();
    if (value != 0xF1) {
        if (!isSurplus(chip, value)) {
            SIM_Violation(chip,
                          formatText("byte %02X where the erase is confirmed", unsigned{value}));
        }
        chip.boot.bytes.clear();
        return;
    }
    const Moment done = SIM_AfterChecksum(chip, SIM_FlashBytes(chip), SIM_EraseChip(chip, at));
    SIM_BootReply(chip, ChipStep::erased, sumBytes(SIMFLASH_BootSum(chip.flash)), done);
    SIM_WantCommand(chip);
}

void wantEraseConfirmation(Chip& chip, Moment) {
    SIM_Want(chip, 1, eraseConfirmed);
}

void readProtect(Chip& chip, Moment at) {
    chip.flash.readProtected = true;
    SIM_BootReply(chip, ChipStep::readProtected, {0xFB}, at);
    SIM_WantCommand(chip);
}

void replyToSum(Chip& chip, Moment at) {
    const uint16_t value = SIMFLASH_BootSum(chip.flash);
    const Moment done = SIM_AfterChecksum(chip, SIM_FlashBytes(chip), at);
    SIM_BootReply(chip, ChipStep::sum,
                  {0x90, static_cast<uint8_t>(value >> 8), static_cast<uint8_t>(value)}, done);
    SIM_WantCommand(chip);
}

void status(Chip& chip, Moment at) {
    uint8_t protectedAreas = 0;
    for (size_t i = 0; i < chip.flash.areas.size() && i < 8; i++) {
        protectedAreas |= static_cast<uint8_t>(chip.flash.areas[i].isProtected ? 1U << i : 0U);
    }
    SIM_BootReply(chip, ChipStep::status,
                  {0xC3, static_cast<uint8_t>(chip.flash.readProtected ? 1 : 0), protectedAreas, 0,
                   0, 0, 0, 0},
                  at);
    SIM_WantCommand(chip);
}

// The commands that only some chips have.
bool optionalCommand(Chip& chip, uint8_t command, Moment at) {
    const DeviceRecord& device = chip.device;
    if (command == 0x30 && device.SprtEraseChip && !device.SprtFlashEraseCMD) {
        replyToRewrite(chip, at);
    } else if (command == 0xF0 && device.SprtEraseChip && device.SprtFlashEraseCMD) {
        SIM_BootReply(chip, ChipStep::erase, {0xF0}, at);
        wantPassword(chip, wantEraseConfirmation);
    } else if (command == 0xC3 && device.SprtFlashMemStatus) {
        status(chip, at);
    } else if (command == 0xFA && device.SprtReadProtect) {
        SIM_BootReply(chip, ChipStep::readProtect, {0xFA}, at);
        wantPassword(chip, readProtect);
    } else {
        return false;
    }
    return true;
}

void wantRateCode(Chip& chip, Moment) {
    SIM_Want(chip, 1, rateCode);
}

void commandTypeA(Chip& chip, Moment at) {
    const uint8_t command = chip.boot.bytes.front();
    if (optionalCommand(chip, command, at)) {
        return;
    }
    if (command == 0x90) {
        replyToSum(chip, at);
    } else if (command == 0x60) {
        SIM_BootReply(chip, ChipStep::ram, {0x60}, at);
        chip.boot.ram.clear();
        chip.boot.recordFault = false;
        chip.boot.rewriting = false;
        wantPassword(chip, loaderRecords);
    } else {
        SIM_UnknownCommand(chip, command);
    }
}

} // namespace

extern const BootFamily kBootFamilyA;
const BootFamily kBootFamilyA = {
    .matchByte = 0x5A, .matchRate = 9600, .matched = wantRateCode, .command = commandTypeA};
