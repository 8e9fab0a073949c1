#include "link/failure.h"

#include "notice/error.h"
#include "platform/format.h"
#include "serial/sio.h"

namespace {

std::string textOfCode(const Failure& failure) {
    switch (failure.code) {
    case TERR_CANCELLED:
        return "Action canceled";
    case TERR_ERASE:
        return "Error erasing sector";
    case TERR_WRITE:
        return formatText("Error writing on address %X\nContents: %02X", failure.address,
                          failure.contents);
    case TERR_COMPARE:
        return formatText("Error comparing contents of address %X\nContents: %02X", failure.address,
                          failure.contents);
    case TERR_NOT_BLANK:
        return formatText("Target not blank at address %X\nContents: %02X", failure.address,
                          failure.contents);
    case TERR_NAK:
        return "Not acknowledged";
    case TERR_PROTECT:
        return "Error protecting sector";
    case TERR_TIMEOUT:
        return "Timeout error";
    default:
        return formatText("Unknown target error %d at address %X\nContents: %02X",
                          failure.code & (TERR_UNKNOWN - 1), failure.address, failure.contents);
    }
}

} // namespace

std::string failureText(const Failure& failure) {
    if (!failure.reason.empty()) {
        return failure.reason;
    }
    return ERROR_WithReason(textOfCode(failure),
                            failure.code == TERR_TIMEOUT ? SIO_GetLoss() : failure.detail);
}

Hint failureHint(const Failure& failure) {
    if (failure.code == TERR_CANCELLED) {
        return {};
    }
    const std::string loss = SIO_GetLoss();
    return loss.empty() ? failure.hint : Hint{Cause::portGone, loss};
}
