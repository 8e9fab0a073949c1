// The families of boot ROM that a chip can have.
#include "sim/chip_state.h"

#include <map>

extern const BootFamily kBootFamilyA;
extern const BootFamily kBootFamilyB;

namespace {

std::map<int32_t, const BootFamily*>& families() {
    static std::map<int32_t, const BootFamily*> table = {
        {RAMCODE_TYPE_A, &kBootFamilyA},
        {RAMCODE_TYPE_B, &kBootFamilyB},
    };
    return table;
}

} // namespace

const BootFamily& SIM_FamilyOf(const DeviceRecord& device) {
    const auto found = families().find(device.RamcodeType);
    return *(found == families().end() ? families().begin() : found)->second;
}

void SIM_AddFamily(int32_t ramcodeType, const BootFamily& family) {
    families()[ramcodeType] = &family;
}
