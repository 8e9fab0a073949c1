#include "bootrom/flash_commands.h"

#include "bootrom/boot_wire.h"
#include "bootrom/handshake.h"
#include "device/device.h"
#include "link/target_link.h"
#include "notice/log.h"
#include "notice/progress.h"
#include "notice/run.h"
#include "platform/clock.h"
#include "platform/format.h"
#include "serial/sio_line.h"

namespace {

constexpr uint32_t kEraseStepMs = 50;

// The step begins again with the first byte, so that an answer is not torn by a step's end.
bool readAnswer(std::span<uint8_t> answer) {
    return bootRead(answer.first(1), kEraseStepMs) &&
           (answer.size() == 1 || bootRead(answer.subspan(1), kEraseStepMs));
}

} // namespace

Result<> _EraseWait(std::span<uint8_t> answer) {
    const uint32_t timeout = DEVICE_GetTimeoutEraseAll();
    PROGRESS_HideByteCount();
    PROGRESS_SetBarTextMode(true);
    PROGRESS_SetBarText(formatText("Maximum time: %d sec", static_cast<int>(timeout / 1000)));
    const Moment deadline = SIO_AnswerDeadline(timeout, answer.size());
    while (!readAnswer(answer)) {
        if (CLOCK_Now() > deadline || bootIsHopeless()) {
            return Failure{.code = TERR_TIMEOUT,
                           .hint = {Cause::fellSilent,
                                    formatText("no answer to the erase in %u ms", timeout)}};
        }
    }
    return {};
}

Result<> _EraseChip(const BootRomProtocol& family) {
    RUN_SetExitCode(1);
    if (Result<> begun = _BootHandshake(family); !begun) {
        return begun;
    }
    LOG_Add("Erasing Chip started");
    Result<> erased = family.EraseChip();
    LOG_Add(erased ? "Erasing Chip finished" : "Erasing Chip failed");
    RUN_SetExitCode(erased ? 0 : 1);
    return erased;
}
