#include "bootrom/boot_wire.h"

#include "link/target_link.h"
#include "notice/error.h"
#include "notice/run.h"
#include "platform/event_queue.h"
#include "platform/format.h"
#include "serial/sio.h"
#include "serial/sio_line.h"

#include <numeric>

namespace {

// Processes events until the first byte comes.
size_t readBefore(Moment deadline, std::span<uint8_t> buffer) {
    EVENTS_WaitBeside(deadline, [](Moment step) {
        return SIO_WaitReadable(bootIsHopeless, step) || bootIsHopeless();
    });
    return SIO_ReadUntil(buffer.data(), buffer.size(), deadline, bootIsHopeless);
}

Failure silence(size_t arrived, size_t awaited, uint32_t timeoutMs) {
    return {.code = TERR_TIMEOUT,
            .hint = {Cause::fellSilent, formatText("%zu of %zu bytes of an answer in %u ms",
                                                   arrived, awaited, timeoutMs)}};
}

} // namespace

bool bootIsHopeless() {
    return RUN_IsInterrupted() || SIO_IsLost() || !SIO_IsOpen();
}

Result<> bootRead(std::span<uint8_t> buffer, uint32_t timeoutMs) {
    const Moment deadline = SIO_AnswerDeadline(timeoutMs, buffer.size());
    const size_t arrived = buffer.empty() ? 0 : readBefore(deadline, buffer);
    return arrived == buffer.size() ? Result<>() : silence(arrived, buffer.size(), timeoutMs);
}

void _BootFail(const Failure& failure, std::string_view otherwise) {
    std::string text = failure.reason.empty() ? std::string(otherwise) : failure.reason;
    if (failure.code == TERR_CANCELLED) {
        text = failureText(failure);
    } else if (!text.empty()) {
        text = ERROR_WithReason(text, SIO_GetLoss());
    }
    const bool isKnown = failure.code == TERR_REPORTED || RUN_IsInterrupted();
    if (!isKnown && !text.empty()) {
        ERROR_Out(nullptr, text, 1, failureHint(failure));
    }
    BOOT_SetState(BOOT_UNSYNCED);
}

Result<> bootSilence(const Result<>& step, std::string_view text) {
    const bool isSilence = !step && step.error().code == TERR_TIMEOUT &&
                           step.error().reason.empty() && !bootIsHopeless();
    return isSilence ? Failure{.code = TERR_SAYS_ALL,
                               .reason = std::string(text),
                               .hint = step.error().hint}
                     : step;
}

Result<> _BootCheck(bool condition, std::string_view text) {
    return condition ? Result<>() : Failure{.reason = std::string(text)};
}

Result<> bootAwait(uint8_t answer, std::string_view text, uint32_t timeoutMs) {
    uint8_t received = 0;
    Result<> read = bootRead({&received, 1}, timeoutMs);
    return read ? bootMatches(received, answer, text) : read;
}

Result<> bootMatches(uint8_t received, uint8_t answer, std::string_view text) {
    return withHint(_BootCheck(received == answer, text),
                    {Cause::wrongAnswer, formatText("%02X where %02X belongs", received, answer)});
}

Result<> bootAwaitAmong(uint8_t answer, std::string_view text, uint32_t timeoutMs,
                        std::string* others) {
    const Moment deadline = SIO_AnswerDeadline(timeoutMs, 1);
    Result<> result = silence(0, 1, timeoutMs);
    uint8_t received = 0;
    while (readBefore(deadline, {&received, 1}) == 1) {
        result = bootMatches(received, answer, text);
        if (!result && others != nullptr) {
            others->push_back(static_cast<char>(received));
        }
        if (result) {
            break;
        }
    }
    return result;
}

Result<> bootExchange(uint8_t sent, uint8_t answer, std::string_view text) {
    SIO_WriteByte(sent);
    return bootAwait(answer, text);
}

Result<> bootCommand(uint8_t command, std::string_view text) {
    return bootExchange(command, command, text);
}

uint8_t bootChecksum(std::span<const uint8_t> bytes) {
    return static_cast<uint8_t>(0 - std::accumulate(bytes.begin(), bytes.end(), 0U));
}
