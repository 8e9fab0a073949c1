#include "shell/summary.h"

#include "data/hexdata.h"
#include "device/device.h"
#include "device/image_checksum.h"
#include "link/password.h"
#include "notice/status.h"
#include "platform/format.h"
#include "serial/sio.h"
#include "shell/front_end.h"

#include <algorithm>

namespace {

bool isInside(uint32_t address, const std::vector<DeviceBlock>& blocks) {
    return std::any_of(blocks.begin(), blocks.end(), [address](const DeviceBlock& block) {
        return block.range.contains(address);
    });
}

bool dataFits(const std::vector<DeviceBlock>& blocks) {
    const std::vector<AddressRange> areas = HEXDATA_GetAreas();
    return std::all_of(areas.begin(), areas.end(), [&blocks](const AddressRange& area) {
        return isInside(area.start, blocks) && isInside(area.last(), blocks);
    });
}

} // namespace

void SUMMARY_Refresh() {
    DEVICE_CalcImageChecksum(DEVICE_GetSprtCRC() != 0);
    HEXDATA_SetFits(dataFits(DEVICE_SelectedBlocks()));
    FRONTEND_Get().refreshView(View::hexDump);
    FRONTEND_Get().refreshView(View::hexList);
}

void CONFIGURATION_Changed() {
    PASSWORD_SetLimitsOfDevice();
    SUMMARY_Refresh();
    FRONTEND_Get().refreshView(View::device);
    STATUS_SetText(formatText("MCU: %s", DEVICE_GetName().c_str()), STATUS_DEVICE);
    STATUS_SetText(formatText("COM%d, %d Baud", static_cast<int>(SIO_GetPort()),
                              static_cast<int>(SIO_GetBaudrate())),
                   STATUS_SERIAL);
}
