#include "device/image_checksum.h"

#include "data/hexdata.h"
#include "device/device.h"

uint16_t DEVICE_CalcImageChecksum(bool crc) {
    constexpr uint8_t kErasedByte = 0xFF;
    const auto accumulate = crc ? HEXDATA_CalcCRC : HEXDATA_CalcSum;
    bool restart = true;
    for (const DeviceBlock& block : DEVICE_SelectedBlocks()) {
        accumulate(block.range.start, static_cast<uint32_t>(block.range.size()), restart,
                   kErasedByte);
    }
    if (restart) {
        accumulate(0, 0, restart, kErasedByte); // the value of nothing, not that of before
    }
    return HEXDATA_GetChecksum();
}
