#include "device/ivector_rows.h"

#include "data/hexdata.h"
#include "device/device.h"
#include "platform/format.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace {

constexpr size_t kMaxVectorBytes = 4;

bool isResetVector(std::string_view name) {
    constexpr std::string_view kPrefix = "reset";
    const auto equalNoCase = [](char letter, char lower) {
        return letter == lower || (letter >= 'A' && letter <= 'Z' && letter - 'A' + 'a' == lower);
    };
    return name.size() >= kPrefix.size() &&
           std::ranges::equal(name.substr(0, kPrefix.size()), kPrefix, equalNoCase);
}

// The little-endian value that the loaded data holds for a vector; none unless it holds all of it.
std::optional<uint32_t> loadedValue(const IVectorEntry& vector) {
    std::array<uint8_t, kMaxVectorBytes> bytes{};
    std::array<bool, kMaxVectorBytes> held{};
    const size_t count =
        std::min(static_cast<size_t>(std::max(vector.Bits, 0) + 7) / 8, kMaxVectorBytes);
    HEXDATA_Copy(vector.Address, std::span(bytes).first(count), std::span(held).first(count));
    uint64_t value = 0;
    for (size_t i = count; i-- > 0;) {
        if (!held[i])
            return std::nullopt;
        value = value << 8 | bytes[i];
    }
    const uint64_t mask = (uint64_t{1} << std::clamp(vector.Bits, 0, 32)) - 1;
    return static_cast<uint32_t>(value & mask);
}

bool pointsIntoFlash(uint32_t value) {
    return value >= DEVICE_GetFlashStart() && value <= DEVICE_GetFlashEnd();
}

IVectorRow makeRow(const IVectorEntry& vector) {
    IVectorRow row;
    row.number = formatText("%d", vector.Number);
    row.name = vector.Name;
    row.bits = formatText("%d", vector.Bits);
    row.address = formatText("%X", vector.Address);
    const std::optional<uint32_t> value = loadedValue(vector);
    row.contents = value ? formatText("%X", *value) : "--";
    row.resetOutsideFlash = value && isResetVector(vector.Name) && !pointsIntoFlash(*value);
    return row;
}

} // namespace

std::vector<IVectorRow> IVECT_MakeRows() {
    std::vector<IVectorRow> rows;
    for (const IVectorEntry& vector : DEVICE_Selected().aIVector)
        rows.push_back(makeRow(vector));
    return rows;
}
