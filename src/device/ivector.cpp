#include "device/ivector.h"

#include "data/hexdata.h"
#include "device/device.h"

#include <algorithm>
#include <array>
#include <span>
#include <string_view>

namespace {

constexpr size_t kMaxVectorBytes = 4;

uint64_t maskOf(const IVectorEntry& vector) {
    return (uint64_t{1} << std::clamp(vector.Bits, 0, 32)) - 1;
}

} // namespace

std::optional<uint32_t> IVECT_LoadedValue(const IVectorEntry& vector) {
    std::array<uint8_t, kMaxVectorBytes> bytes{};
    std::array<bool, kMaxVectorBytes> held{};
    const size_t count =
        std::min(static_cast<size_t>(std::max(vector.Bits, 0) + 7) / 8, kMaxVectorBytes);
    HEXDATA_Copy(vector.Address, std::span(bytes).first(count), std::span(held).first(count));
    uint64_t value = 0;
    for (size_t i = count; i-- > 0;) {
        if (!held[i]) {
            return std::nullopt;
        }
        value = value << 8 | bytes[i];
    }
    return static_cast<uint32_t>(value & maskOf(vector));
}

bool IVECT_IsErased(const IVectorEntry& vector, uint32_t value) {
    return value == maskOf(vector);
}

bool IVECT_IsReset(const IVectorEntry& vector) {
    constexpr std::string_view kPrefix = "reset";
    const std::string_view start = std::string_view(vector.Name).substr(0, kPrefix.size());
    return std::ranges::equal(start, kPrefix, [](char letter, char lower) {
        return letter == lower || (letter >= 'A' && letter <= 'Z' && letter - 'A' + 'a' == lower);
    });
}

bool IVECT_PointsIntoFlash(uint32_t value) {
    return value >= DEVICE_GetFlashStart() && value <= DEVICE_GetFlashEnd();
}
