// Why something was not done on the target: one value from the frame to the message.
#pragma once

#include "platform/expected.h"

#include <cstdint>
#include <string>

enum TargetErrorCode : int {
    TERR_REPORTED = -2,  // whoever met it has said so already
    TERR_CANCELLED = -1, // by the user; nothing is wrong
    TERR_NONE = 0,       // no code: the reason says all
    TERR_ERASE = 1,
    TERR_WRITE = 2,
    TERR_COMPARE = 3,
    TERR_NOT_BLANK = 4,
    TERR_NAK = 5,
    TERR_PROTECT = 6,
    TERR_TIMEOUT = 7,     // the link cannot be relied on any more
    TERR_UNKNOWN = 0x100, // added to a code that the loader reports and nobody knows
};

struct Failure {
    int code = TERR_NONE;
    uint32_t address = 0; // of the image, for the codes that name one
    uint8_t contents = 0; // of that address on the chip
    std::string reason = {};
};

template <typename T = void>
using Result = Expected<T, Failure>;

// The message of a failure: its reason, or the text of its code.
std::string failureText(const Failure& failure);
