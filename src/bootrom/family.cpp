#include "bootrom/family.h"

#include "device/device.h"
#include "link/target_link.h"

#include <map>

extern const BootRomProtocol kBootRomTypeA;
extern const BootRomProtocol kBootRomTypeB;

namespace {

std::map<int, const BootRomProtocol*>& families() {
    static std::map<int, const BootRomProtocol*> table = {
        {RAMCODE_TYPE_A, &kBootRomTypeA},
        {RAMCODE_TYPE_B, &kBootRomTypeB},
    };
    return table;
}

} // namespace

const BootRomProtocol* currentProtocol() {
    const auto found = families().find(DEVICE_GetRamcodeType());
    return found == families().end() ? nullptr : found->second;
}

const BootRomProtocol* _SelectProtocol() {
    const BootRomProtocol* family = currentProtocol();
    if (family == nullptr) {
        TARGET_ReportError("Target::Unsuported RAM-Code protocoll", 1);
    }
    return family;
}

void addProtocol(int ramcodeType, const BootRomProtocol& family) {
    families()[ramcodeType] = &family;
}
