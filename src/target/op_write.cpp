// Operations that write through the page buffer: program, program target, the fills with 0xFF.

#include "data/hexdata.h"
#include "device/device.h"
#include "link/chip_record.h"
#include "link/target_state.h"
#include "notice/progress.h"
#include "platform/format.h"
#include "target/operation.h"
#include "target/page_buffer.h"
#include "target/reply.h"

#include <algorithm>
#include <array>

namespace {

Result<> finishWriting() {
    Result<> on = goesOn();
    return on ? TARGET_FlushPage() : on;
}

// Writes the range in pieces of one page; `fill` gives the bytes of each, which are erased ones.
using Fill = void (*)(uint32_t address, std::span<uint8_t> bytes);

Result<> writePages(const AddressRange& range, bool showsBytes, Fill fill) {
    std::array<uint8_t, kMaxPage> page;
    const uint32_t pageLen = TARGET_State().PageLen;
    for (uint64_t address = range.start; address < range.end;) {
        if (Result<> on = goesOn(); !on) {
            return on;
        }
        if (showsBytes) {
            setProgress(address - range.start, address);
        }
        const auto bytes = std::span(page).first(std::min<uint64_t>(pageLen, range.end - address));
        std::fill(bytes.begin(), bytes.end(), uint8_t{0xFF});
        fill(static_cast<uint32_t>(address), bytes);
        Result<> written = TARGET_WriteBytes(static_cast<uint32_t>(address), bytes);
        if (!written) {
            return written;
        }
        address += bytes.size();
    }
    return {};
}

void leaveErased(uint32_t, std::span<uint8_t>) {
}

void takeImage(uint32_t address, std::span<uint8_t> bytes) {
    HEXDATA_Copy(address, bytes, {});
}

Result<> writeDevice(Fill fill) {
    if (Result<> sizes = checkPageSizes(true); !sizes) {
        return sizes;
    }
    const Result<AddressRange> device = deviceRange();
    if (!device) {
        return device.error();
    }
    setProgressRange(device->size());
    PROGRESS_ShowCancel(false);
    Result<> written = writePages(*device, true, fill);
    return written ? finishWriting() : written;
}

Result<> writePiece(const AddressRange& piece) {
    std::array<uint8_t, kMaxPage> bytes;
    const auto data = std::span(bytes).first(piece.size());
    HEXDATA_Copy(piece.start, data, {});
    return TARGET_WriteBytes(TARGET_ToChipAddress(piece.start), data);
}

// A page that two blocks share would take the neighbour's bytes with it.
Result<> checkWholePages(const std::vector<DeviceBlock>& blocks) {
    const uint32_t pageLen = TARGET_State().PageLen;
    for (const DeviceBlock& block : blocks) {
        if (block.range.start % pageLen != 0 || block.range.end % pageLen != 0) {
            return Failure{.reason =
                               formatText("Block %d does not begin and end on pages of %u bytes",
                                          block.index, pageLen)};
        }
    }
    return {};
}

} // namespace

Result<> opProgram(const Operation& operation) {
    if (Result<> sizes = checkPageSizes(false); !sizes) {
        return sizes;
    }
    if (DEVICE_GetFLASHIsEE() != 0) {
        PROGRESS_ShowCancel(false);
    }
    const uint32_t limit = std::min<uint32_t>(TARGET_State().PacketSize, kMaxPage);
    Result<> written = forEachPiece(operation.range, limit, writePiece);
    return written ? finishWriting() : written;
}

Result<> opProgramTarget(const Operation&) {
    return writeDevice(takeImage);
}

Result<> opFillChip(const Operation&) {
    Result<> filled = writeDevice(leaveErased);
    if (filled) {
        CHIPRECORD_Note(*deviceRange(), ChipMark::erased);
    }
    return filled;
}

Result<> opFillBlocks(const Operation& operation) {
    if (Result<> sizes = checkPageSizes(true); !sizes) {
        return sizes;
    }
    if (Result<> fit = checkBlocks(operation.blocks); !fit) {
        return fit;
    }
    if (Result<> whole = checkWholePages(operation.blocks); !whole) {
        return whole;
    }
    setProgressRange(DEVICE_Blocks().size());
    PROGRESS_ShowCancel(false);
    for (const DeviceBlock& block : operation.blocks) {
        setBlockProgress(block);
        if (Result<> written = writePages(block.range, false, leaveErased); !written) {
            return written;
        }
    }
    if (Result<> finished = finishWriting(); !finished) {
        return finished;
    }
    for (const DeviceBlock& block : operation.blocks) {
        CHIPRECORD_Note(block.range, ChipMark::erased);
    }
    return {};
}
