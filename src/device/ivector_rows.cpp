#include "device/ivector_rows.h"

#include "device/device.h"
#include "device/ivector.h"
#include "platform/format.h"

#include <cstdint>
#include <optional>

namespace {

IVectorRow makeRow(const IVectorEntry& vector) {
    IVectorRow row;
    row.number = formatText("%d", vector.Number);
    row.name = vector.Name;
    row.bits = formatText("%d", vector.Bits);
    row.address = formatText("%X", vector.Address);
    const std::optional<uint32_t> value = IVECT_LoadedValue(vector);
    row.contents = value ? formatText("%X", *value) : "--";
    row.resetOutsideFlash = value && IVECT_IsReset(vector) && !IVECT_PointsIntoFlash(*value);
    return row;
}

} // namespace

std::vector<IVectorRow> IVECT_MakeRows() {
    std::vector<IVectorRow> rows;
    for (const IVectorEntry& vector : DEVICE_Selected().aIVector) {
        rows.push_back(makeRow(vector));
    }
    return rows;
}
