#include "target/operation.h"

#include "bootrom/handshake.h"
#include "data/hexdata.h"
#include "link/target_state.h"
#include "notice/progress.h"
#include "notice/run.h"
#include "platform/format.h"
#include "target/page_buffer.h"
#include "target/reply.h"

#include <algorithm>
#include <limits>

namespace {

enum class Shows { bytes, blocks };
enum class Flash { stays, changes };

struct OperationRow {
    OperationCode code;
    const char* firstLine;
    Shows shows;
    Flash flash;
    Result<uint16_t> (*run)(const Operation&);
};

// The row function of an operation that gets nothing.
template <Result<> (*Run)(const Operation&)>
Result<uint16_t> does(const Operation& operation) {
    Result<> done = Run(operation);
    return done ? Result<uint16_t>(uint16_t{0}) : done.error();
}

constexpr OperationRow kOperations[] = {
    {OP_ERASE_CHIP, "Erasing chip...", Shows::blocks, Flash::changes, does<opEraseChip>},
    {OP_ERASE_BLOCKS, "Erasing blocks...", Shows::blocks, Flash::changes, does<opEraseBlocks>},
    {OP_READ_BACK, "Reading back...", Shows::bytes, Flash::stays, does<opReadBack>},
    {OP_PROGRAM, "Programming chip...", Shows::bytes, Flash::changes, does<opProgram>},
    {OP_GET_CRC, "Getting CRC...", Shows::blocks, Flash::stays, opGetCrc},
    {OP_VERIFY, "Verifying...", Shows::bytes, Flash::stays, does<opVerify>},
    {OP_BLANK_CHECK, "Checking if blank...", Shows::blocks, Flash::stays, does<opBlankCheck>},
    {OP_PROTECT_CHIP, "Protecting chip...", Shows::blocks, Flash::stays, does<opProtectChip>},
    {OP_PROTECT_BLOCKS, "Protecting blocks...", Shows::blocks, Flash::stays, does<opProtectBlocks>},
    {OP_GET_SUM, "Getting SUM...", Shows::blocks, Flash::stays, opGetSum},
    {OP_FILL_CHIP, "Filling target with 0xFF...", Shows::bytes, Flash::changes, does<opFillChip>},
    {OP_BLANK_READ, "Checking if blank...", Shows::bytes, Flash::stays, does<opBlankRead>},
    {OP_FILL_BLOCKS, "Erasing blocks...", Shows::blocks, Flash::changes, does<opFillBlocks>},
    {OP_BLANK_READ_BLOCKS, "Checking if blank...", Shows::blocks, Flash::stays,
     does<opBlankReadBlocks>},
    {OP_PROGRAM_TARGET, "Programming target...", Shows::bytes, Flash::changes,
     does<opProgramTarget>},
    {OP_COMPARE, "Comparing...", Shows::bytes, Flash::stays, does<opCompare>},
};

int32_t saturate(uint64_t value) {
    return static_cast<int32_t>(std::min<uint64_t>(value, std::numeric_limits<int32_t>::max()));
}

std::string stepText(const DeviceBlock& block, size_t count) {
    return formatText("block %d of %zu", block.index, count);
}

// The next piece of the image at or after `from`: held bytes, none beyond the end of `range`.
// Empty: there is none.
AddressRange nextPiece(uint64_t from, const AddressRange& range, uint32_t limit) {
    if (from >= range.end) {
        return {};
    }
    auto address = static_cast<uint32_t>(from);
    const uint8_t* data = nullptr;
    const uint32_t held = HEXDATA_GetData(address, data);
    if (held == 0 || address >= range.end) {
        return {};
    }
    const uint64_t count = std::min<uint64_t>({held, limit, range.end - address});
    return AddressRange::of(address, mappedRun(address, static_cast<uint32_t>(count)));
}

} // namespace

Result<uint16_t> runOperation(const Operation& operation) {
    const auto* row = std::find_if(std::begin(kOperations), std::end(kOperations),
                                   [&](const OperationRow& r) { return r.code == operation.code; });
    if (row == std::end(kOperations)) {
        return Failure{.reason = formatText("Unknown operation %d", operation.code)};
    }
    dropPage();
    if (row->flash == Flash::changes) {
        forgetBootSum();
    }
    if (row->shows == Shows::blocks) {
        PROGRESS_HideByteCount();
    }
    PROGRESS_SetMin(0);
    PROGRESS_SetText(row->firstLine);
    Result<> begins = goesOn();
    return begins ? row->run(operation) : begins.error();
}

Result<> goesOn() {
    const TargetState& state = TARGET_State();
    const bool ends = state.Cancel != 0 || state.Stop != 0 || RUN_IsInterrupted();
    return ends ? Failure{TERR_CANCELLED} : Result<>();
}

Result<AddressRange> deviceRange() {
    const std::vector<DeviceBlock> blocks = DEVICE_Blocks();
    const AddressRange range =
        blocks.empty() ? AddressRange{}
                       : AddressRange{blocks.front().range.start, blocks.back().range.end};
    if (range.empty()) {
        return Failure{.reason = "The blocks of the device are not in ascending order"};
    }
    return range;
}

Result<> checkBlocks(const std::vector<DeviceBlock>& blocks) {
    const Result<AddressRange> range = deviceRange();
    if (!range) {
        return range.error();
    }
    for (const DeviceBlock& block : blocks) {
        if (!range->contains(block.range)) {
            return Failure{.reason =
                               formatText("Block %d lies outside the address range of the device",
                                          block.index)};
        }
    }
    return {};
}

std::string blockText(const DeviceBlock& block) {
    return formatText("block %d (%X - %X)", block.index, block.range.start, block.range.last());
}

std::string blockTextAt(uint32_t address) {
    for (const DeviceBlock& block : DEVICE_Blocks()) {
        if (block.range.contains(AddressRange::of(address, 1))) {
            return blockText(block);
        }
    }
    return "no block of the device";
}

Result<> forEachPiece(const AddressRange& range, uint32_t limit,
                      Result<> (*treat)(const AddressRange& piece)) {
    setProgressRange(HEXDATA_GetNumBytes());
    uint64_t done = 0;
    for (AddressRange piece = nextPiece(range.start, range, limit); !piece.empty();
         piece = nextPiece(piece.end, range, limit)) {
        if (Result<> on = goesOn(); !on) {
            return on;
        }
        setProgress(done, piece.start);
        if (Result<> treated = treat(piece); !treated) {
            return treated;
        }
        done += piece.size();
    }
    return {};
}

void setProgressRange(uint64_t total) {
    PROGRESS_SetMin(0);
    PROGRESS_SetMax(saturate(total));
}

void setProgress(uint64_t position, uint64_t address) {
    PROGRESS_SetPos(saturate(position));
    const std::vector<DeviceBlock> blocks = DEVICE_Blocks();
    for (const DeviceBlock& block : blocks) {
        if (address >= block.range.start && address < block.range.end) {
            PROGRESS_SetStep(stepText(block, blocks.size()));
        }
    }
}

void setBlockProgress(const DeviceBlock& block) {
    PROGRESS_SetPos(block.index);
    PROGRESS_SetStep(stepText(block, DEVICE_Blocks().size()));
}
