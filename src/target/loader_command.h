// The commands of the RAM loader: what is sent, what answers it, how long that may take.
#pragma once

#include "device/device.h"

#include <cstdint>

enum class ReplyKind {
    malformed, // too short, or its inner length is wrong
    identify,
    data,
    crc,
    sum,
    nak,
    error,
    acknowledge, // any other
};

// The time that some commands may take is the device's own.
using DeviceWait = uint32_t (*)(); // ms

struct LoaderCommand {
    uint8_t code;
    ReplyKind reply;
    uint32_t waitMs; // until the reply begins
    DeviceWait deviceWait = nullptr;

    uint32_t wait() const { return deviceWait != nullptr ? deviceWait() : waitMs; }
};

inline constexpr LoaderCommand kIdentify = {0x00, ReplyKind::identify, 1000};
inline constexpr LoaderCommand kEraseBlock = {0x01, ReplyKind::acknowledge, 0,
                                              DEVICE_GetTimeoutEraseBlock};
inline constexpr LoaderCommand kProgramPage = {0x02, ReplyKind::acknowledge, 2000};
inline constexpr LoaderCommand kRead = {0x03, ReplyKind::data, 2000};
inline constexpr LoaderCommand kReadToVerify = {0x03, ReplyKind::data, 5000};
inline constexpr LoaderCommand kGetCrc = {0x04, ReplyKind::crc, 5000};
inline constexpr LoaderCommand kCheckBlank = {0x05, ReplyKind::acknowledge, 2000};
inline constexpr LoaderCommand kProtectBlock = {0x06, ReplyKind::acknowledge, 0,
                                                DEVICE_GetTimeoutEraseBlock};
inline constexpr LoaderCommand kGetSum = {0x07, ReplyKind::sum, 5000};
