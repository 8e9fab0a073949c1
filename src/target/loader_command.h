// The commands of the RAM loader: what is sent, what answers it, how long that may take.
#pragma once

#include "device/device.h"

#include <cstddef>
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
    size_t replyBytes; // of the payload, without the data of a read
    uint32_t waitMs;   // until the reply begins, beside the time that the bytes take on the line
    DeviceWait deviceWait = nullptr;

    uint32_t wait() const { return deviceWait != nullptr ? deviceWait() : waitMs; }
};

inline constexpr LoaderCommand kIdentify = {0x00, ReplyKind::identify, 7, 1000};
inline constexpr LoaderCommand kEraseBlock = {0x01, ReplyKind::acknowledge, 1, 0,
                                              DEVICE_GetTimeoutEraseBlock};
inline constexpr LoaderCommand kProgramPage = {0x02, ReplyKind::acknowledge, 1, 2000};
inline constexpr LoaderCommand kRead = {0x03, ReplyKind::data, 7, 2000};
inline constexpr LoaderCommand kReadToVerify = {0x03, ReplyKind::data, 7, 5000};
inline constexpr LoaderCommand kGetCrc = {0x04, ReplyKind::crc, 3, 5000};
inline constexpr LoaderCommand kCheckBlank = {0x05, ReplyKind::acknowledge, 1, 2000};
inline constexpr LoaderCommand kProtectBlock = {0x06, ReplyKind::acknowledge, 1, 0,
                                                DEVICE_GetTimeoutEraseBlock};
inline constexpr LoaderCommand kGetSum = {0x07, ReplyKind::sum, 3, 5000};
