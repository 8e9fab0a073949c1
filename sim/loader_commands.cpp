// What the loader does for each command, and what it does not let pass.
#include "platform/format.h"
#include "sim/chip_state.h"

#include <algorithm>
#include <array>

namespace {

constexpr uint32_t kMaxRead = 990;
constexpr uint32_t kReadRounding = 256; // whole frames are read, also at the end of a block

enum ErrorCode : uint8_t { kErrErase = 1, kErrWrite = 2, kErrNotBlank = 4, kErrProtect = 6 };

using Payload = std::span<const uint8_t>;

uint32_t littleEndian(Payload payload, size_t offset, size_t width) {
    uint32_t value = 0;
    for (size_t i = width; i > 0; i--) {
        value = value << 8 | payload[offset + i - 1];
    }
    return value;
}

void refuse(Chip& chip, ChipStep step, std::string why, Moment at) {
    SIM_Violation(chip, std::move(why));
    SIM_FrameReply(chip, step, {0xF1}, at);
}

void acknowledge(Chip& chip, ChipStep step, uint8_t command, Moment at) {
    SIM_FrameReply(chip, step, {command}, at);
}

void errorReply(Chip& chip, ChipStep step, ErrorCode code, uint32_t address, Moment at) {
    std::vector<uint8_t> payload = {0xF3, code};
    for (unsigned shift = 0; shift < 32; shift += 8) {
        payload.push_back(static_cast<uint8_t>(address >> shift));
    }
    payload.push_back(SIMFLASH_Get(chip.flash, address));
    SIM_FrameReply(chip, step, std::move(payload), at);
}

void identify(Chip& chip, Payload, Moment at) {
    const uint16_t size = chip.options.packetSize;
    SIM_FrameReply(
        chip, ChipStep::identify,
        {0x00, 'V', 'T', '1', '0', static_cast<uint8_t>(size), static_cast<uint8_t>(size >> 8)},
        at);
}

void eraseBlock(Chip& chip, Payload payload, Moment at) {
    const uint32_t start = littleEndian(payload, 1, 4);
    const uint32_t size = littleEndian(payload, 5, 4);
    FlashArea* area = SIMFLASH_FindArea(chip.flash, start, size);
    if (!chip.device.SprtErase || area == nullptr) {
        refuse(chip, ChipStep::eraseBlock,
               formatText("erase of %X, %X bytes, which is no block that the loader erases", start,
                          size),
               at);
        return;
    }
    if (area->isProtected) {
        errorReply(chip, ChipStep::eraseBlock, kErrErase, start, at);
        return;
    }
    const Moment done{at.us + chip.options.eraseBlockUs};
    chip.counts.erases++;
    const ChipFault* shortErase =
        SIM_FaultNumber(chip, FaultKind::shortErase, ++chip.eraseOperations);
    size_t keep = shortErase ? std::max<size_t>(shortErase->value, 1) : 0;
    if (SIM_PowerFails(chip)) {
        keep = area->bytes.size() / 2;
    }
    SIMFLASH_Erase(*area, keep);
    acknowledge(chip, ChipStep::eraseBlock, 0x01, done);
}

// What is wrong with where and how much is programmed; empty when nothing is.
std::string programFault(const Chip& chip, uint32_t address, Payload data) {
    const uint32_t page = chip.device.FLASHPageLen;
    const auto length = static_cast<uint32_t>(data.size());
    if (!SIMFLASH_Holds(chip.flash, address, length) || length == 0) {
        return formatText("program of %X, %X bytes, outside the flash", address, length);
    }
    if (page != 0 && (length != page || address % page != 0)) {
        return formatText("program of %X, %X bytes, which is not a page", address, length);
    }
    if (page == 0 && (address % 4 != 0 || length % 4 != 0)) {
        return formatText("program of %X, %X bytes, not in whole words", address, length);
    }
    if (page == 0 && length > chip.options.packetSize) {
        return formatText("program of %X bytes with a packet size of %X", length,
                          unsigned{chip.options.packetSize});
    }
    return {};
}

// The first byte that did not take; bytes of 0xFF leave what is there.
std::optional<uint32_t> findWriteError(const Chip& chip, uint32_t address, Payload data) {
    for (const uint8_t byte : data) {
        const bool fillsUp = byte == 0xFF && !chip.flash.overwritable;
        if (!fillsUp && SIMFLASH_Get(chip.flash, address) != byte) {
            return address;
        }
        address++;
    }
    return std::nullopt;
}

// A write that the chip believes to be right and that is not; false when none is due.
bool writeElsewhere(Chip& chip, uint32_t address, Payload data) {
    if (const ChipFault* fault =
            SIM_FaultNumber(chip, FaultKind::misplacedWrite, chip.programOperations)) {
        SIMFLASH_Program(chip.flash, address ^ fault->address, data);
        return true;
    }
    const ChipFault* fault = SIM_FaultNumber(chip, FaultKind::shiftedWrite, chip.programOperations);
    if (fault == nullptr) {
        return false;
    }
    std::vector<uint8_t> shifted(data.begin(), data.end());
    std::rotate(shifted.begin(), shifted.end() - fault->value % shifted.size(), shifted.end());
    SIMFLASH_Program(chip.flash, address, shifted);
    return true;
}

void writeFlash(Chip& chip, uint32_t address, Payload data, Moment at) {
    const Moment done{at.us + chip.options.programUs};
    chip.counts.programs++;
    chip.counts.bytesProgrammed += data.size();
    if (SIM_FaultNumber(chip, FaultKind::lostWrite, ++chip.programOperations)) {
        acknowledge(chip, ChipStep::program, 0x02, done);
        return;
    }
    const bool powerFails = SIM_PowerFails(chip);
    if (writeElsewhere(chip, address, data)) {
        acknowledge(chip, ChipStep::program, 0x02, done);
        return;
    }
    SIMFLASH_Program(chip.flash, address, powerFails ? data.first(data.size() / 2) : data);
    if (const auto wrong = findWriteError(chip, address, data)) {
        errorReply(chip, ChipStep::program, kErrWrite, *wrong, done);
    } else {
        acknowledge(chip, ChipStep::program, 0x02, done);
    }
}

bool touchesProtected(const Chip& chip, uint32_t address, size_t length) {
    for (size_t i = 0; i < length; i++) {
        const FlashArea* area = SIMFLASH_AreaOf(chip.flash, address + static_cast<uint32_t>(i));
        if (area != nullptr && area->isProtected) {
            return true;
        }
    }
    return false;
}

void program(Chip& chip, Payload payload, Moment at) {
    const uint32_t address = littleEndian(payload, 1, 4);
    const uint32_t length = littleEndian(payload, 5, 2);
    const Payload data = payload.subspan(7);
    if (length != data.size()) {
        refuse(chip, ChipStep::program,
               formatText("program frame with %zu data bytes that says %u", data.size(), length),
               at);
        return;
    }
    const std::string fault = programFault(chip, address, data);
    if (!fault.empty()) {
        refuse(chip, ChipStep::program, fault, at);
        return;
    }
    if (touchesProtected(chip, address, data.size())) {
        errorReply(chip, ChipStep::program, kErrWrite, address, at);
        return;
    }
    if (const auto unerased = SIMFLASH_FindUnerased(chip.flash, address, data)) {
        SIM_Violation(chip, formatText("program of %X, which is not erased", *unerased));
    }
    writeFlash(chip, address, data, at);
}

void read(Chip& chip, Payload payload, Moment at) {
    const uint32_t address = littleEndian(payload, 1, 4);
    const uint32_t count = littleEndian(payload, 5, 2);
    if (count == 0 || count > kMaxRead) {
        refuse(chip, ChipStep::read, formatText("read of %u bytes", count), at);
        return;
    }
    if (chip.flash.readProtected) {
        SIM_FrameReply(chip, ChipStep::read, {0xF1}, at);
        return;
    }
    const uint64_t span = (CHIP_FlashSpan(chip) + kReadRounding) / kReadRounding * kReadRounding;
    const FlashArea* area = SIMFLASH_AreaOf(chip.flash, address);
    const uint32_t start = SIMFLASH_ToChip(chip.flash, CHIP_FlashStart(chip));
    if (area == nullptr && (address < start || uint64_t{address} + count > start + span)) {
        SIM_Violation(chip, formatText("read of %X, %X bytes, outside the flash", address, count));
    }
    chip.counts.reads++;
    std::vector<uint8_t> reply(payload.begin(), payload.end());
    for (uint32_t i = 0; i < count; i++) {
        reply.push_back(SIMFLASH_Get(chip.flash, address + i));
    }
    SIM_FrameReply(chip, ChipStep::read, std::move(reply), at);
}

void checksum(Chip& chip, Payload payload, ChipStep step, Moment at) {
    const uint32_t start = littleEndian(payload, 1, 4);
    const uint64_t size = uint64_t{littleEndian(payload, 5, 4)} + 1;
    const uint8_t first = payload[9];
    LoaderState& loader = chip.loader;
    const bool crc = step == ChipStep::crc;
    if ((crc && !chip.device.SprtCRC) || !SIMFLASH_Holds(chip.flash, start, size) || first > 1 ||
        (first == 0 && !loader.checksumStarted)) {
        refuse(chip, step,
               formatText("checksum of %X, %llX bytes, flag %u", start,
                          static_cast<unsigned long long>(size), unsigned{first}),
               at);
        return;
    }
    if (first == 1) {
        loader.checksum = crc ? 0xFFFF : 0;
    }
    loader.checksumStarted = true;
    loader.checksum = crc ? SIMFLASH_AddCrc(chip.flash, start, size, loader.checksum)
                          : SIMFLASH_AddSum(chip.flash, start, size, loader.checksum);
    SIM_FrameReply(chip, step,
                   {payload[0], static_cast<uint8_t>(loader.checksum),
                    static_cast<uint8_t>(loader.checksum >> 8)},
                   SIM_AfterChecksum(chip, size, at));
}

void crc(Chip& chip, Payload payload, Moment at) {
    checksum(chip, payload, ChipStep::crc, at);
}

void frameSum(Chip& chip, Payload payload, Moment at) {
    checksum(chip, payload, ChipStep::frameSum, at);
}

void blankCheck(Chip& chip, Payload payload, Moment at) {
    const uint32_t start = littleEndian(payload, 1, 4);
    const uint32_t size = littleEndian(payload, 5, 4);
    if (!chip.device.SprtBlankCheck || size == 0 || !SIMFLASH_Holds(chip.flash, start, size)) {
        refuse(chip, ChipStep::blankCheck, formatText("blank check of %X, %X bytes", start, size),
               at);
        return;
    }
    const Moment done = SIM_AfterChecksum(chip, size, at);
    if (const auto found = SIMFLASH_FindNotBlank(chip.flash, start, size)) {
        errorReply(chip, ChipStep::blankCheck, kErrNotBlank, *found, done);
    } else {
        acknowledge(chip, ChipStep::blankCheck, 0x05, done);
    }
}

void protectBlock(Chip& chip, Payload payload, Moment at) {
    const uint32_t start = littleEndian(payload, 1, 4);
    const uint32_t size = littleEndian(payload, 5, 4);
    FlashArea* area = SIMFLASH_FindArea(chip.flash, start, size);
    if (!chip.device.SprtProtectBlock || area == nullptr) {
        refuse(chip, ChipStep::protectBlock,
               formatText("protect of %X, %X bytes, which is no block that the loader protects",
                          start, size),
               at);
        return;
    }
    area->isProtected = true;
    acknowledge(chip, ChipStep::protectBlock, 0x06, at);
}

struct LoaderCommand {
    ChipStep step;
    size_t length; // of the payload; a program command has its data on top
    void (*run)(Chip& chip, Payload payload, Moment at);
};

constexpr uint8_t kProgram = 0x02;
constexpr std::array<LoaderCommand, 8> kCommands = {{
    {ChipStep::identify, 1, identify},
    {ChipStep::eraseBlock, 9, eraseBlock},
    {ChipStep::program, 7, program},
    {ChipStep::read, 7, read},
    {ChipStep::crc, 10, crc},
    {ChipStep::blankCheck, 9, blankCheck},
    {ChipStep::protectBlock, 9, protectBlock},
    {ChipStep::frameSum, 10, frameSum},
}};

} // namespace

void SIM_LoaderCommand(Chip& chip, Payload payload, Moment at) {
    const uint8_t code = payload[0];
    const bool known = code < kCommands.size();
    const bool fits = known && (code == kProgram ? payload.size() >= kCommands[code].length
                                                 : payload.size() == kCommands[code].length);
    if (!fits) {
        refuse(chip, known ? kCommands[code].step : ChipStep::any,
               formatText("loader command %02X with %zu bytes", unsigned{code}, payload.size()),
               at);
        return;
    }
    kCommands[code].run(chip, payload, at);
}
