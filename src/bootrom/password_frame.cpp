#include "bootrom/password_frame.h"

#include "bootrom/boot_wire.h"
#include "bootrom/handshake.h"
#include "device/device.h"
#include "link/password.h"
#include "serial/sio.h"

#include <span>

namespace {

constexpr size_t kBlankPasswordTypeA = 255; // bytes of 0xFF
constexpr size_t kPasswordTypeB = 12;

void appendAddress(std::vector<uint8_t>& frame, uint32_t address) {
    const uint32_t length = DEVICE_GetRAMCodeAdrLen();
    if (length == 0 || length > 2) {
        frame.push_back(static_cast<uint8_t>(address >> 16));
    }
    frame.push_back(static_cast<uint8_t>(address >> 8));
    frame.push_back(static_cast<uint8_t>(address));
}

} // namespace

std::vector<uint8_t> _PasswordFrameTypeA(bool blank) {
    std::vector<uint8_t> frame;
    if (blank) {
        appendAddress(frame, DEVICE_GetPWAreaStart());
        appendAddress(frame, DEVICE_GetPWAreaStart());
        frame.insert(frame.end(), kBlankPasswordTypeA, 0xFF);
        return frame;
    }
    appendAddress(frame, DEVICE_RelocateAddr(PASSWORD_GetAdrCount()));
    appendAddress(frame, DEVICE_RelocateAddr(PASSWORD_GetAdrCompare()));
    const std::vector<uint8_t> password = PASSWORD_GetBytes();
    frame.insert(frame.end(), password.begin(), password.end());
    return frame;
}

std::vector<uint8_t> _PasswordFrameTypeB(bool blank) {
    std::vector<uint8_t> frame(kPasswordTypeB, 0xFF);
    if (!blank) {
        frame = PASSWORD_GetBytes();
        frame.resize(kPasswordTypeB);
    }
    frame.push_back(_BootChecksum(frame));
    return frame;
}

void _SendPasswordTypeA() {
    SIO_Write(_PasswordFrameTypeA(_IsBlank()));
}

void _SendPasswordTypeB() {
    const std::vector<uint8_t> frame = _PasswordFrameTypeB(_IsBlank());
    const SioFrame together;
    SIO_Write(std::span(frame).first(kPasswordTypeB));
    SIO_WriteByte(frame.back());
}
