#include "target/operation.h"

#include "data/hexdata.h"
#include "device/device.h"
#include "device/devprops.h"
#include "link/target_state.h"
#include "notice/progress.h"
#include "notice/run.h"
#include "platform/format.h"
#include "target/page_buffer.h"
#include "target/reply.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace {

enum class Shows { bytes, blocks };

struct OperationRow {
    int code;
    const char* firstLine;
    Shows shows;
    Outcome (*run)();
};

constexpr OperationRow kOperations[] = {
    {OP_ERASE_CHIP, "Erasing chip...", Shows::blocks, _OpEraseChip},
    {OP_ERASE_BLOCKS, "Erasing blocks...", Shows::blocks, _OpEraseBlocks},
    {OP_READ_BACK, "Reading back...", Shows::bytes, _OpReadBack},
    {OP_PROGRAM, "Programming chip...", Shows::bytes, _OpProgram},
    {OP_GET_CRC, "Getting CRC...", Shows::blocks, _OpGetCrc},
    {OP_VERIFY, "Verifying...", Shows::bytes, _OpVerify},
    {OP_BLANK_CHECK, "Checking if blank...", Shows::blocks, _OpBlankCheck},
    {OP_PROTECT_CHIP, "Protecting chip...", Shows::blocks, _OpProtectChip},
    {OP_PROTECT_BLOCKS, "Protecting blocks...", Shows::blocks, _OpProtectBlocks},
    {OP_GET_SUM, "Getting SUM...", Shows::blocks, _OpGetSum},
    {OP_FILL_CHIP, "Filling target with 0xFF...", Shows::bytes, _OpFillChip},
    {OP_BLANK_READ, "Checking if blank...", Shows::bytes, _OpBlankRead},
    {OP_FILL_BLOCKS, "Erasing blocks...", Shows::blocks, _OpFillBlocks},
    {OP_BLANK_READ_BLOCKS, "Checking if blank...", Shows::blocks, _OpBlankReadBlocks},
    {OP_PROGRAM_TARGET, "Programming target...", Shows::bytes, _OpProgramTarget},
};

std::string failure; // the worker's own

int32_t saturate(uint64_t value) {
    return static_cast<int32_t>(std::min<uint64_t>(value, std::numeric_limits<int32_t>::max()));
}

} // namespace

Outcome _RunOperationCode(int code) {
    const auto* row = std::find_if(std::begin(kOperations), std::end(kOperations),
                                   [code](const OperationRow& r) { return r.code == code; });
    if (row == std::end(kOperations)) {
        return _Fail(formatText("Unknown operation %d", code));
    }
    _DropPage();
    if (row->shows == Shows::blocks) {
        PROGRESS_HideByteCount();
    }
    PROGRESS_SetMin(0);
    PROGRESS_SetText(row->firstLine);
    return _IsCancelled() ? Outcome::cancelled : row->run();
}

Outcome _Fail(std::string text) {
    failure = std::move(text);
    return Outcome::failed;
}

std::string _TakeFailure() {
    return std::exchange(failure, {});
}

bool _IsCancelled() {
    const TargetState& state = TARGET_State();
    return state.Cancel != 0 || state.Stop != 0 || RUN_IsInterrupted();
}

std::vector<Block> _DeviceBlocks() {
    std::vector<Block> blocks(static_cast<size_t>(DEVICE_GetNumBlocks(-1)));
    for (size_t i = 0; i < blocks.size(); ++i) {
        blocks[i].index = static_cast<int>(i);
        DEVICE_GetBlock(blocks[i].index, blocks[i].start, blocks[i].length, -1);
    }
    return blocks;
}

bool _DeviceRange(uint64_t& start, uint64_t& end) {
    const std::vector<Block> blocks = _DeviceBlocks();
    if (blocks.empty() || blocks.back().end() <= blocks.front().start) {
        _Fail("The blocks of the device are not in ascending order");
        return false;
    }
    start = blocks.front().start;
    end = blocks.back().end();
    return true;
}

bool _WantedBlocks(bool all, std::vector<Block>& wanted) {
    uint64_t start = 0;
    uint64_t end = 0;
    if (!_DeviceRange(start, end)) {
        return false;
    }
    for (const Block& block : _DeviceBlocks()) {
        if (!all && !DEVPROPS_IsBlockSelected(block.index)) {
            continue;
        }
        if (block.start < start || block.end() > end) {
            _Fail(formatText("Block %d lies outside the address range of the device", block.index));
            return false;
        }
        wanted.push_back(block);
    }
    return true;
}

Piece _NextPiece(uint64_t from, uint32_t limit) {
    const uint32_t last = TARGET_State().RangeEnd;
    if (from > last) {
        return {};
    }
    auto address = static_cast<uint32_t>(from);
    const uint8_t* data = nullptr;
    const uint32_t held = HEXDATA_GetData(address, data);
    if (held == 0 || address > last) {
        return {};
    }
    const uint64_t count = std::min<uint64_t>({held, limit, uint64_t{last} - address + 1});
    return {address, _MappedRun(address, static_cast<uint32_t>(count))};
}

void _SetProgressRange(uint64_t total) {
    PROGRESS_SetMin(0);
    PROGRESS_SetMax(saturate(total));
}

void _SetProgress(uint64_t position) {
    PROGRESS_SetPos(saturate(position));
}
