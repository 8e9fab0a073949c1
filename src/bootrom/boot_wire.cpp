#include "bootrom/boot_wire.h"

#include "link/target_link.h"
#include "notice/error.h"
#include "notice/run.h"
#include "platform/event_queue.h"
#include "serial/sio.h"

#include <numeric>

namespace {

// Processes events until the first byte comes.
bool readBefore(Moment deadline, std::span<uint8_t> buffer) {
    EVENTS_WaitBeside(deadline, [](Moment step) {
        return SIO_WaitReadable(_BootIsHopeless, step) || _BootIsHopeless();
    });
    return SIO_ReadUntil(buffer.data(), buffer.size(), deadline, _BootIsHopeless) == buffer.size();
}

} // namespace

bool _BootIsHopeless() {
    return RUN_IsInterrupted() || SIO_IsLost() || !SIO_IsOpen();
}

Result<> _BootRead(std::span<uint8_t> buffer, uint32_t timeoutMs) {
    const Moment deadline = SIO_AnswerDeadline(timeoutMs, buffer.size());
    return buffer.empty() || readBefore(deadline, buffer) ? Result<>() : Failure{TERR_TIMEOUT};
}

void _BootFail(const Failure& failure, std::string_view otherwise) {
    const std::string_view text = failure.reason.empty() ? otherwise : failure.reason;
    if (failure.code != TERR_REPORTED && !text.empty()) {
        ERROR_Out(nullptr, ERROR_WithReason(text, SIO_GetLoss()), 1);
    }
    BOOT_SetState(BOOT_UNSYNCED);
}

Result<> _BootSilence(const Result<>& step, std::string_view text) {
    const bool isSilence = !step && step.error().code == TERR_TIMEOUT &&
                           step.error().reason.empty() && !_BootIsHopeless();
    return isSilence ? Failure{.code = TERR_SAYS_ALL, .reason = std::string(text)} : step;
}

Result<> _BootCheck(bool condition, std::string_view text) {
    return condition ? Result<>() : Failure{.reason = std::string(text)};
}

Result<> _BootAwait(uint8_t answer, std::string_view text, uint32_t timeoutMs) {
    uint8_t received = 0;
    Result<> read = _BootRead({&received, 1}, timeoutMs);
    return read ? _BootCheck(received == answer, text) : read;
}

Result<> _BootAwaitAmong(uint8_t answer, std::string_view text, uint32_t timeoutMs) {
    const Moment deadline = SIO_AnswerDeadline(timeoutMs, 1);
    Result<> result = Failure{TERR_TIMEOUT};
    uint8_t received = 0;
    while (readBefore(deadline, {&received, 1})) {
        result = _BootCheck(received == answer, text);
        if (result) {
            break;
        }
    }
    return result;
}

Result<> _BootExchange(uint8_t sent, uint8_t answer, std::string_view text) {
    SIO_WriteByte(sent);
    return _BootAwait(answer, text);
}

Result<> _BootCommand(uint8_t command, std::string_view text) {
    return _BootExchange(command, command, text);
}

uint8_t _BootChecksum(std::span<const uint8_t> bytes) {
    return static_cast<uint8_t>(0 - std::accumulate(bytes.begin(), bytes.end(), 0U));
}
