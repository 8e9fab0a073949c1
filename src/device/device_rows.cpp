#include "device/device_rows.h"

#include "device/device.h"
#include "platform/format.h"

#include <cstdint>

namespace {

using Rows = std::vector<DeviceRow>;

void addBlank(Rows& rows) {
    rows.emplace_back();
}

std::string areaText(uint32_t start, uint32_t len) {
    return formatText("%X - %X", start, start + len - 1);
}

void addIdentity(Rows& rows) {
    if (!DEVICE_GetName().empty()) {
        rows.push_back({"Device", DEVICE_GetName()});
        addBlank(rows);
    }
    if (!DEVICE_GetManufacturer().empty()) {
        rows.push_back({"Manufacturer", DEVICE_GetManufacturer()});
        addBlank(rows);
    }
    if (DEVICE_GetRamLen() != 0) {
        rows.push_back({"RAM", areaText(DEVICE_GetRamStart(), DEVICE_GetRamLen())});
        addBlank(rows);
    }
}

void addFlash(Rows& rows) {
    rows.push_back({"Flash", formatText("%X - %X", DEVICE_GetFlashStart(), DEVICE_GetFlashEnd())});
    for (const DeviceBlock& block : DEVICE_Blocks()) {
        rows.push_back({formatText("Block %d", block.index),
                        areaText(block.range.start, static_cast<uint32_t>(block.range.size()))});
    }
    addBlank(rows);
}

void addIDBytes(Rows& rows) {
    const int least = DEVICE_GetIDLenMin();
    const int most = DEVICE_GetIDLenMax();
    if (least + most != 0) {
        rows.push_back({"Num. of ID-bytes", least == most ? formatText("%d", least)
                                                          : formatText("%d - %d", least, most)});
    }
    if (DEVICE_GetIDLenAdr() != 0) {
        rows.push_back({"ID-length address", formatText("%X", DEVICE_GetIDLenAdr())});
    }
    const int count = DEVICE_GetNumIDAdr();
    for (int i = 0; i < count; ++i) {
        const char* name = i > 0 ? "" : count == 1 ? "ID-Adress" : "ID-Adresses";
        rows.push_back({name, formatText("%X", DEVICE_RelocateAddr(DEVICE_GetIDAdr(i)))});
    }
    if (count != 0) {
        addBlank(rows);
    }
}

void addVectors(Rows& rows) {
    const std::vector<IVectorEntry>& vectors = DEVICE_Selected().aIVector;
    for (const IVectorEntry& vector : vectors) {
        rows.push_back({vector.Name, formatText("%X", vector.Address)});
    }
    if (!vectors.empty()) {
        addBlank(rows);
    }
}

void addPasswordArea(Rows& rows) {
    if (DEVICE_GetPWAreaStart() == 0) {
        return;
    }
    const uint32_t start = DEVICE_RelocateAddr(DEVICE_GetPWAreaStart());
    rows.push_back({"Password area", areaText(start, DEVICE_GetPWAreaLen())});
    addBlank(rows);
}

} // namespace

std::vector<DeviceRow> DEVICEVIEW_MakeRows() {
    Rows rows;
    addIdentity(rows);
    addFlash(rows);
    addIDBytes(rows);
    addVectors(rows);
    addPasswordArea(rows);
    rows.push_back({"Writable", DEVICE_GetWritable() != 0 ? "Yes" : "No"});
    return rows;
}
