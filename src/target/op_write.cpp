// Operations that write through the page buffer: program, program target, the fills with 0xFF.

#include "data/hexdata.h"
#include "device/device.h"
#include "link/target_state.h"
#include "notice/progress.h"
#include "target/operation.h"
#include "target/page_buffer.h"
#include "target/reply.h"

#include <algorithm>
#include <array>

namespace {

// Sends what the buffer still holds; whether all went well.
bool flushAll() {
    TARGET_FlushPage();
    return TARGET_State().Error == TERR_NONE;
}

bool write(uint32_t chipAddress, std::span<const uint8_t> bytes) {
    return TARGET_WriteBytes(chipAddress, bytes) == bytes.size();
}

Outcome finishWriting() {
    if (_IsCancelled()) {
        return Outcome::cancelled;
    }
    return flushAll() ? Outcome::completed : Outcome::failed;
}

// Writes `length` bytes from `start` on in pieces of one page; `piece` fills the bytes of each.
template <typename Piece>
Outcome writePages(uint64_t start, uint64_t length, bool showsBytes, const Piece& piece) {
    std::array<uint8_t, kMaxPage> page;
    const uint32_t pageLen = TARGET_State().PageLen;
    for (uint64_t done = 0; done < length;) {
        if (_IsCancelled()) {
            return Outcome::cancelled;
        }
        if (showsBytes) {
            _SetProgress(done);
        }
        const auto address = static_cast<uint32_t>(start + done);
        const auto bytes = std::span(page).first(std::min<uint64_t>(pageLen, length - done));
        std::fill(bytes.begin(), bytes.end(), uint8_t{0xFF});
        piece(address, bytes);
        if (!write(address, bytes)) {
            return Outcome::failed;
        }
        done += bytes.size();
    }
    return Outcome::completed;
}

void leaveErased(uint32_t, std::span<uint8_t>) {
}

void takeImage(uint32_t address, std::span<uint8_t> bytes) {
    HEXDATA_Copy(address, bytes, {});
}

template <typename Piece>
Outcome writeDevice(const Piece& piece) {
    const std::string error = _CheckPageSizes(true);
    if (!error.empty()) {
        return _Fail(error);
    }
    uint64_t start = 0;
    uint64_t end = 0;
    if (!_DeviceRange(start, end)) {
        return Outcome::failed;
    }
    _SetProgressRange(end - start);
    PROGRESS_ShowCancel(false);
    const Outcome outcome = writePages(start, end - start, true, piece);
    return outcome == Outcome::completed ? finishWriting() : outcome;
}

} // namespace

Outcome _OpProgram() {
    const std::string error = _CheckPageSizes(false);
    if (!error.empty()) {
        return _Fail(error);
    }
    const TargetState& state = TARGET_State();
    const uint32_t total = HEXDATA_GetNumBytes();
    _SetProgressRange(total);
    if (DEVICE_GetFLASHIsEE() != 0) {
        PROGRESS_ShowCancel(false);
    }
    const uint32_t limit = std::min<uint32_t>(state.PacketSize, kMaxPage);
    uint64_t done = 0;
    std::array<uint8_t, kMaxPage> bytes;
    for (Piece piece = _NextPiece(state.RangeStart, limit); piece.length != 0;
         piece = _NextPiece(piece.end(), limit)) {
        if (_IsCancelled()) {
            return Outcome::cancelled;
        }
        _SetProgress(done);
        const auto data = std::span(bytes).first(piece.length);
        HEXDATA_Copy(piece.address, data, {});
        if (!write(TARGET_ToChipAddress(piece.address), data)) {
            return Outcome::failed;
        }
        done += piece.length;
    }
    return finishWriting();
}

Outcome _OpProgramTarget() {
    return writeDevice(takeImage);
}

Outcome _OpFillChip() {
    return writeDevice(leaveErased);
}

Outcome _OpFillBlocks() {
    const std::string error = _CheckPageSizes(true);
    if (!error.empty()) {
        return _Fail(error);
    }
    std::vector<Block> wanted;
    if (!_WantedBlocks(false, wanted)) {
        return Outcome::failed;
    }
    _SetProgressRange(static_cast<uint64_t>(DEVICE_GetNumBlocks(-1)));
    PROGRESS_ShowCancel(false);
    for (const Block& block : wanted) {
        PROGRESS_SetPos(block.index);
        const Outcome outcome = writePages(block.start, block.length, false, leaveErased);
        if (outcome != Outcome::completed) {
            return outcome;
        }
    }
    return finishWriting();
}
