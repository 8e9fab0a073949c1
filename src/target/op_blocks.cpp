// Operations that name whole blocks to the loader: erase, protect, its own blank check, checksums.

#include "device/device.h"
#include "link/chip_record.h"
#include "notice/progress.h"
#include "platform/format.h"
#include "target/operation.h"
#include "target/reply.h"

namespace {

Fields blockFields(const DeviceBlock& block, uint64_t size) {
    return Fields().u32(TARGET_ToChipAddress(block.range.start)).u32(static_cast<uint32_t>(size));
}

// Sends the command for one block, which the loader acknowledges.
Result<> treatBlock(const LoaderCommand& command, const DeviceBlock& block) {
    const Result<Reply> reply = exchange(command, blockFields(block, block.range.size()));
    if (reply) {
        return {};
    }
    const bool isRefused = reply.error().code != TERR_TIMEOUT && command.code != kCheckBlank.code;
    return isRefused ? withHint<void>(reply.error(), {Cause::blockRefused, blockText(block)})
                     : reply.error();
}

void recordBlock(const LoaderCommand& command, const AddressRange& block, bool done) {
    if (command.code == kEraseBlock.code) {
        CHIPRECORD_Note(block, done ? ChipMark::erased : ChipMark::unknown);
    } else if (done) {
        CHIPRECORD_NoteProtected(block);
    }
}

Result<> eraseOrProtect(const LoaderCommand& command, const std::vector<DeviceBlock>& blocks) {
    setProgressRange(DEVICE_Blocks().size());
    for (const DeviceBlock& block : blocks) {
        if (Result<> on = goesOn(); !on) {
            return on;
        }
        PROGRESS_SetNote(formatText("Block %d", block.index));
        PROGRESS_SetPos(block.index + 1);
        Result<> done = treatBlock(command, block);
        recordBlock(command, block.range, bool(done));
        if (!done) {
            return done;
        }
    }
    return {};
}

Result<> eraseOrProtectChecked(const LoaderCommand& command,
                               const std::vector<DeviceBlock>& blocks) {
    Result<> fit = checkBlocks(blocks);
    return fit ? eraseOrProtect(command, blocks) : fit;
}

// The checksum over the blocks, `value` when there is none: that of no bytes at all.
Result<uint16_t> getChecksum(const LoaderCommand& command, uint16_t value,
                             const std::vector<DeviceBlock>& blocks) {
    if (Result<> fit = checkBlocks(blocks); !fit) {
        return fit.error();
    }
    const bool showsBlocks = command.reply == ReplyKind::crc;
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
            setBlockProgress(block);
        }
        const Result<Reply> reply =
            exchange(command, blockFields(block, block.range.size() - 1).u8(first ? 1 : 0));
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
    return eraseOrProtect(kEraseBlock, operation.blocks);
}

Result<> opEraseBlocks(const Operation& operation) {
    return eraseOrProtectChecked(kEraseBlock, operation.blocks);
}

Result<> opProtectChip(const Operation& operation) {
    return eraseOrProtect(kProtectBlock, operation.blocks);
}

Result<> opProtectBlocks(const Operation& operation) {
    return eraseOrProtectChecked(kProtectBlock, operation.blocks);
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
        setBlockProgress(block);
        if (Result<> blank = treatBlock(kCheckBlank, block); !blank) {
            return blank;
        }
        CHIPRECORD_Note(block.range, ChipMark::erased);
    }
    return {};
}

Result<uint16_t> opGetCrc(const Operation& operation) {
    return getChecksum(kGetCrc, 0xFFFF, operation.blocks);
}

Result<uint16_t> opGetSum(const Operation& operation) {
    return getChecksum(kGetSum, 0, operation.blocks);
}
