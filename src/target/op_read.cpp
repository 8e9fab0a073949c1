// Operations that read the chip: read back, the blank checks by reading, verify.

#include "data/hexdata.h"
#include "device/device.h"
#include "link/target_state.h"
#include "notice/log.h"
#include "notice/progress.h"
#include "platform/format.h"
#include "target/operation.h"
#include "target/reply.h"

#include <algorithm>
#include <functional>

namespace {

constexpr uint32_t kReadMs = 2000;
constexpr uint32_t kVerifyMs = 5000;
constexpr uint32_t kReadPiece = 256;         // bytes
constexpr uint32_t kMaxRead = kMaxReply - 7; // bytes of data that a reply has room for

// Sets error 4 at the first byte that is not erased; `address` is that of the reply's first byte.
bool replyIsBlank(uint32_t address) {
    TargetState& state = TARGET_State();
    const auto& data = state.ReplyData;
    const auto found =
        std::find_if(data.begin(), data.end(), [](uint8_t byte) { return byte != 0xFF; });
    if (found == data.end()) {
        return true;
    }
    state.ErrorAddress = address + static_cast<uint32_t>(found - data.begin());
    state.ErrorContents = *found;
    state.Error = TERR_NOT_BLANK;
    return false;
}

// Reads the context's range piece by piece; `take` is given every reply.
Outcome readRange(const std::function<bool()>& take) {
    const TargetState& state = TARGET_State();
    const uint64_t start = state.RangeStart;
    const uint64_t last = state.RangeEnd;
    if (last < start) {
        return _Fail(formatText("The range %X - %X is empty", state.RangeStart, state.RangeEnd));
    }
    _SetProgressRange(last - start);
    for (uint64_t address = start; address <= last; address += state.ReplyLength) {
        if (_IsCancelled()) {
            return Outcome::cancelled;
        }
        _SetProgress(address - start);
        const uint64_t count = address + kReadPiece < last ? kReadPiece : last - address + 1;
        const auto from = static_cast<uint32_t>(address);
        if (!_ReadSome(from, _MappedRun(from, static_cast<uint32_t>(count)), kReadMs) || !take()) {
            return Outcome::failed;
        }
    }
    return Outcome::completed;
}

bool addReply() {
    const TargetState& state = TARGET_State();
    HEXDATA_AddData(state.ReplyAddress, state.ReplyData);
    const std::string error = HEXDATA_GetAddError();
    if (!error.empty()) {
        _Fail(error);
    }
    return error.empty();
}

Outcome blankReadBlock(const Block& block) {
    for (uint32_t offset = 0; offset < block.length; offset += TARGET_State().ReplyLength) {
        if (_IsCancelled()) {
            return Outcome::cancelled;
        }
        const uint32_t address = block.start + offset;
        const uint32_t count = _MappedRun(address, std::min(kReadPiece, block.length - offset));
        if (!_ReadTarget(address, count, kReadMs) || !replyIsBlank(address)) {
            return Outcome::failed;
        }
    }
    return Outcome::completed;
}

// Compares the reply with the image from `address` on; sets error 3 at the first difference.
bool replyEqualsImage(uint32_t address) {
    TargetState& state = TARGET_State();
    std::vector<uint8_t> expected(state.ReplyLength);
    HEXDATA_Copy(address, expected, {});
    const auto [image, target] =
        std::mismatch(expected.begin(), expected.end(), state.ReplyData.begin());
    if (image == expected.end()) {
        return true;
    }
    state.ErrorAddress = address + static_cast<uint32_t>(image - expected.begin());
    state.ErrorContents = *target;
    state.Error = TERR_COMPARE;
    LOG_Add(formatText("Verify failed at %06X", state.ErrorAddress));
    return false;
}

} // namespace

Outcome _OpReadBack() {
    HEXDATA_Clear();
    HEXDATA_ClearAddError();
    return readRange(addReply);
}

Outcome _OpBlankRead() {
    return readRange([] { return replyIsBlank(TARGET_State().ReplyAddress); });
}

Outcome _OpBlankReadBlocks() {
    std::vector<Block> wanted;
    if (!_WantedBlocks(false, wanted)) {
        return Outcome::failed;
    }
    _SetProgressRange(static_cast<uint64_t>(DEVICE_GetNumBlocks(-1)));
    for (const Block& block : wanted) {
        PROGRESS_SetPos(block.index);
        const Outcome outcome = blankReadBlock(block);
        if (outcome != Outcome::completed) {
            return outcome;
        }
    }
    return Outcome::completed;
}

Outcome _OpVerify() {
    const TargetState& state = TARGET_State();
    if (state.PacketSize == 0) {
        return _Fail("A packet size of 0 bytes is not supported");
    }
    _SetProgressRange(HEXDATA_GetNumBytes());
    const uint32_t limit = std::min<uint32_t>(state.PacketSize, kMaxRead);
    uint64_t done = 0;
    for (Piece piece = _NextPiece(state.RangeStart, limit); piece.length != 0;
         piece = _NextPiece(piece.end(), limit)) {
        if (_IsCancelled()) {
            return Outcome::cancelled;
        }
        _SetProgress(done);
        if (!_ReadTarget(piece.address, piece.length, kVerifyMs) ||
            !replyEqualsImage(piece.address)) {
            return Outcome::failed;
        }
        done += piece.length;
    }
    return Outcome::completed;
}
