// Why something was not done on the target: one value from the frame to the message.
#pragma once

#include "notice/hint.h"
#include "platform/expected.h"

#include <cstdint>
#include <string>

enum TargetErrorCode : int {
    TERR_SAYS_ALL = -3,  // the reason is all that is to be said of the command
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
    std::string detail = {}; // what stands behind the text of the code, in parentheses
    Hint hint = {};          // what to do about it, from where that is known
};

template <typename T = void>
using Result = Expected<T, Failure>;

// The message of a failure: its reason, or the text of its code and what is known besides: the
// detail, or of a link that does not answer that the port is lost.
std::string failureText(const Failure& failure);
// What to do about it: of a lost port that, of a user's own cancel nothing, else the failure's
// hint.
Hint failureHint(const Failure& failure);
// The result with this hint when it is a failure, in place of any that it has.
template <typename T>
Result<T> withHint(const Result<T>& result, const Hint& hint) {
    if (result) {
        return result;
    }
    Failure failure = result.error();
    failure.hint = hint;
    return failure;
}
