// Operations that name whole blocks to the loader: erase, protect, its own blank check, checksums.

#include "device/device.h"
#include "notice/progress.h"
#include "platform/format.h"
#include "target/operation.h"
#include "target/reply.h"

namespace {

constexpr uint8_t kEraseCommand = 0x01;
constexpr uint8_t kCrcCommand = 0x04;
constexpr uint8_t kBlankCommand = 0x05;
constexpr uint8_t kProtectCommand = 0x06;
constexpr uint8_t kSumCommand = 0x07;
constexpr uint32_t kBlankMs = 2000;
constexpr uint32_t kChecksumMs = 5000;

PayloadWriter blockCommand(uint8_t command, const DeviceBlock& block, uint64_t size) {
    return PayloadWriter(command)
        .u32(TARGET_ToChipAddress(block.range.start))
        .u32(static_cast<uint32_t>(size));
}

// Sends the command for one block, which the loader acknowledges.
Result<> treatBlock(uint8_t command, const DeviceBlock& block, uint32_t timeoutMs) {
    const Result<Reply> reply = exchange(blockCommand(command, block, block.range.size()), {},
                                         timeoutMs, ReplyKind::acknowledge);
    return reply ? Result<>() : reply.error();
}

Result<> eraseOrProtect(uint8_t command, const std::vector<DeviceBlock>& blocks) {
    setProgressRange(DEVICE_Blocks().size());
    for (const DeviceBlock& block : blocks) {
        if (Result<> on = goesOn(); !on) {
            return on;
        }
        PROGRESS_SetNote(formatText("Block %d", block.index));
        PROGRESS_SetPos(block.index + 1);
        if (Result<> done = treatBlock(command, block, DEVICE_GetTimeoutEraseBlock()); !done) {
            return done;
        }
    }
    return {};
}

Result<> eraseOrProtectChecked(uint8_t command, const std::vector<DeviceBlock>& blocks) {
    Result<> fit = checkBlocks(blocks);
    return fit ? eraseOrProtect(command, blocks) : fit;
}

// The checksum over the blocks, `value` when there is none: that of no bytes at all.
Result<uint16_t> getChecksum(uint8_t command, ReplyKind kind, uint16_t value,
                             const std::vector<DeviceBlock>& blocks) {
    if (Result<> fit = checkBlocks(blocks); !fit) {
        return fit.error();
    }
    const bool showsBlocks = kind == ReplyKind::crc;
    setProgressRange(showsBlocks ? DEVICE_Blocks().size() : 2);
    if (!showsBlocks) {
        PROGRESS_SetPos(1);
    }
    bool first = true;
    for (const DeviceBlock& block : blocks) {
        if (Result<> on = goesOn(); !on) {
            return on.error();
        }
        if (showsBlocks) {
            PROGRESS_SetPos(block.index);
        }
        PayloadWriter payload = blockCommand(command, block, block.range.size() - 1);
        const Result<Reply> reply = exchange(payload.u8(first ? 1 : 0), {}, kChecksumMs, kind);
        if (!reply) {
            return reply.error();
        }
        value = reply->value;
        first = false;
    }
    return value;
}

} // namespace

// Every block of the chip is taken as it stands; selected ones as far as they are in its range.
Result<> opEraseChip(const Operation& operation) {
    return eraseOrProtect(kEraseCommand, operation.blocks);
}

Result<> opEraseBlocks(const Operation& operation) {
    return eraseOrProtectChecked(kEraseCommand, operation.blocks);
}

Result<> opProtectChip(const Operation& operation) {
    return eraseOrProtect(kProtectCommand, operation.blocks);
}

Result<> opProtectBlocks(const Operation& operation) {
    return eraseOrProtectChecked(kProtectCommand, operation.blocks);
}

Result<> opBlankCheck(const Operation& operation) {
    if (Result<> fit = checkBlocks(operation.blocks); !fit) {
        return fit;
    }
    setProgressRange(DEVICE_Blocks().size());
    for (const DeviceBlock& block : operation.blocks) {
        if (Result<> on = goesOn(); !on) {
            return on;
        }
        PROGRESS_SetPos(block.index);
        if (Result<> blank = treatBlock(kBlankCommand, block, kBlankMs); !blank) {
            return blank;
        }
    }
    return {};
}

Result<uint16_t> opGetCrc(const Operation& operation) {
    return getChecksum(kCrcCommand, ReplyKind::crc, 0xFFFF, operation.blocks);
}

Result<uint16_t> opGetSum(const Operation& operation) {
    return getChecksum(kSumCommand, ReplyKind::sum, 0, operation.blocks);
}
