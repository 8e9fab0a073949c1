#include "serial/idle_rate.h"

#include "platform/format.h"
#include "serial/open_port.h"
#include "serial/sio.h"
#include "serial/sio_line.h"
#include "serial/terminal_history.h"

#include <optional>
#include <utility>

namespace {

uint32_t ownRate = 0;
bool choiceNoted = true;
bool mayDiffer = false;            // the line may have another rate than that of the options
std::optional<uint32_t> refusedAt; // the generation of the port that has refused it

} // namespace

void IDLERATE_Set(uint32_t baudrate) {
    choiceNoted = choiceNoted && baudrate == ownRate;
    ownRate = baudrate;
    refusedAt.reset();
}

void IDLERATE_Use() {
    const uint32_t inForce = SIO_RateInForce();
    if ((ownRate == 0 && !mayDiffer) || inForce == 0 || refusedAt == OPENPORT_Generation()) {
        return;
    }
    const uint32_t wanted = ownRate != 0 ? ownRate : SIO_GetBaudrate();
    mayDiffer = true;
    if (inForce != wanted && !SIO_ChangeRateAlone(wanted)) {
        refusedAt = OPENPORT_Generation();
        TERMHISTORY_Note(formatText("%u Bd not set: ", wanted) + SIO_GetRefusal());
        return;
    }
    mayDiffer = ownRate != 0;
    if (!std::exchange(choiceNoted, true)) {
        TERMHISTORY_Note(formatText("%u Bd", wanted));
    }
}

bool IDLERATE_End() {
    if (!std::exchange(mayDiffer, false) || SIO_RateInForce() == SIO_GetBaudrate()) {
        return true;
    }
    return SIO_ChangeBaudrate(SIO_GetBaudrate()) != 0;
}
