#include "shell/summary.h"

#include "data/hexdata.h"
#include "device/device.h"
#include "device/devprops.h"
#include "notice/status.h"
#include "platform/format.h"
#include "serial/sio.h"
#include "shell/front_end.h"

#include <algorithm>

namespace {

constexpr uint8_t kErased = 0xFF;

std::vector<FlashBlock> selectedBlocks() {
    std::vector<FlashBlock> blocks;
    const int count = DEVICE_GetNumBlocks(-1);
    for (int index = 0; index < count; ++index) {
        if (DEVPROPS_IsBlockSelected(index)) {
            FlashBlock& block = blocks.emplace_back();
            DEVICE_GetBlock(index, block.Start, block.Len, -1);
        }
    }
    return blocks;
}

bool isInside(uint32_t address, const std::vector<FlashBlock>& blocks) {
    return std::any_of(blocks.begin(), blocks.end(), [address](const FlashBlock& block) {
        return address - block.Start <
               block.Len; // also false below the start: the difference wraps
    });
}

bool dataFits(const std::vector<FlashBlock>& blocks) {
    const std::vector<AreaInfo> areas = HEXDATA_GetAreas();
    return std::all_of(areas.begin(), areas.end(), [&blocks](const AreaInfo& area) {
        return isInside(area.start, blocks) && isInside(area.last(), blocks);
    });
}

} // namespace

void SUMMARY_Refresh() {
    const std::vector<FlashBlock> blocks = selectedBlocks();
    const auto accumulate = DEVICE_GetSprtCRC() != 0 ? HEXDATA_CalcCRC : HEXDATA_CalcSum;
    bool restart = true;
    for (const FlashBlock& block : blocks) {
        accumulate(block.Start, block.Len, restart, kErased);
    }
    if (restart) {
        accumulate(0, 0, restart, kErased); // no block: the value of nothing, not that of before
    }
    HEXDATA_SetFits(dataFits(blocks));
    FRONTEND_Get().refreshView(View::hexDump);
    FRONTEND_Get().refreshView(View::hexList);
}

void SUMMARY_ShowStatusTexts() {
    STATUS_SetText(formatText("MCU: %s", DEVICE_GetName().c_str()), STATUS_DEVICE);
    STATUS_SetText(formatText("COM%d, %d Baud", static_cast<int>(SIO_GetPort()),
                              static_cast<int>(SIO_GetBaudrate())),
                   STATUS_SERIAL);
}
