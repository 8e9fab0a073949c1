// Operations that name whole blocks to the loader: erase, protect, its own blank check, checksums.

#include "device/device.h"
#include "link/target_state.h"
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

PayloadWriter blockCommand(uint8_t command, const Block& block, uint32_t size) {
    return PayloadWriter(command).u32(TARGET_ToChipAddress(block.start)).u32(size);
}

// Every block of the chip is taken as it stands; the selected ones as far as they are in its range.
Outcome eraseOrProtect(uint8_t command, bool all) {
    std::vector<Block> wanted;
    if (all) {
        wanted = _DeviceBlocks();
    } else if (!_WantedBlocks(false, wanted)) {
        return Outcome::failed;
    }
    _SetProgressRange(static_cast<uint64_t>(DEVICE_GetNumBlocks(-1)));
    for (const Block& block : wanted) {
        if (_IsCancelled()) {
            return Outcome::cancelled;
        }
        PROGRESS_SetNote(formatText("Block %d", block.index));
        PROGRESS_SetPos(block.index + 1);
        if (!_Exchange(blockCommand(command, block, block.length), {},
                       DEVICE_GetTimeoutEraseBlock(), ReplyKind::acknowledge)) {
            return Outcome::failed;
        }
    }
    return Outcome::completed;
}

Outcome getChecksum(uint8_t command, ReplyKind kind, bool showsBlocks) {
    std::vector<Block> wanted;
    if (!_WantedBlocks(false, wanted)) {
        return Outcome::failed;
    }
    _SetProgressRange(showsBlocks ? static_cast<uint64_t>(DEVICE_GetNumBlocks(-1)) : 2);
    if (!showsBlocks) {
        PROGRESS_SetPos(1);
    }
    bool first = true;
    for (const Block& block : wanted) {
        if (_IsCancelled()) {
            return Outcome::cancelled;
        }
        if (showsBlocks) {
            PROGRESS_SetPos(block.index);
        }
        PayloadWriter payload = blockCommand(command, block, block.length - 1);
        if (!_Exchange(payload.u8(first ? 1 : 0), {}, kChecksumMs, kind)) {
            return Outcome::failed;
        }
        first = false;
    }
    return Outcome::completed;
}

} // namespace

Outcome _OpEraseChip() {
    return eraseOrProtect(kEraseCommand, true);
}

Outcome _OpEraseBlocks() {
    return eraseOrProtect(kEraseCommand, false);
}

Outcome _OpProtectChip() {
    return eraseOrProtect(kProtectCommand, true);
}

Outcome _OpProtectBlocks() {
    return eraseOrProtect(kProtectCommand, false);
}

Outcome _OpBlankCheck() {
    std::vector<Block> wanted;
    if (!_WantedBlocks(TARGET_State().AllBlocks == 1, wanted)) {
        return Outcome::failed;
    }
    _SetProgressRange(static_cast<uint64_t>(DEVICE_GetNumBlocks(-1)));
    for (const Block& block : wanted) {
        if (_IsCancelled()) {
            return Outcome::cancelled;
        }
        PROGRESS_SetPos(block.index);
        if (!_Exchange(blockCommand(kBlankCommand, block, block.length), {}, kBlankMs,
                       ReplyKind::acknowledge)) {
            return Outcome::failed;
        }
    }
    return Outcome::completed;
}

// The values start as those of no bytes at all, so that nothing of an earlier operation is shown
// when no block is selected.
Outcome _OpGetCrc() {
    TARGET_State().TargetCrc = 0xFFFF;
    return getChecksum(kCrcCommand, ReplyKind::crc, true);
}

Outcome _OpGetSum() {
    TARGET_State().TargetSum = 0;
    return getChecksum(kSumCommand, ReplyKind::sum, false);
}
