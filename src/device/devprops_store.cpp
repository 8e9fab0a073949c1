#include "device/devprops_store.h"

#include "device/device.h"
#include "device/devprops.h"
#include "persist/ini.h"

#include <algorithm>
#include <span>
#include <string_view>

namespace {

constexpr std::string_view kSection = "Settings DEVICEPROPS";
constexpr std::string_view kBlockKey = "DevProps.aBlockSelect";

struct IntKey {
    std::string_view key;
    int32_t DevProps::*field;
};

constexpr IntKey kIntKeys[] = {
    {"DevProps.Device", &DevProps::Device},     {"DevProps.Interface", &DevProps::Interface},
    {"DevProps.Speed", &DevProps::Speed},       {"DevProps.XDataStart", &DevProps::XDataStart},
    {"DevProps.XDataLen", &DevProps::XDataLen}, {"DevProps.ResetByPC", &DevProps::ResetByPC},
};

} // namespace

void DEVPROPS_Load() {
    DevProps props = DEVPROPS_Get();
    for (const IntKey& row : kIntKeys) {
        INI_ReadInt(kSection, row.key, props.*row.field);
    }
    INI_ReadIntArray(kSection, kBlockKey, props.aBlockSelect);
    DEVPROPS_Set(props);
}

void DEVPROPS_Save() {
    const DevProps props = DEVPROPS_Get();
    for (const IntKey& row : kIntKeys) {
        INI_WriteInt(kSection, row.key, props.*row.field);
    }
    const int count = std::min(static_cast<int>(DEVICE_Blocks().size()), kMaxSelectableBlocks);
    INI_WriteIntArray(kSection, kBlockKey,
                      std::span(props.aBlockSelect).first(static_cast<size_t>(count)));
}

void DEVPROPS_SelectAllBlocks() {
    for (const DeviceBlock& block : DEVICE_Blocks()) {
        DEVPROPS_SelectBlock(block.index, true);
    }
}
