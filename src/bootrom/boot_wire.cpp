#include "bootrom/boot_wire.h"

#include "link/target_link.h"
#include "notice/error.h"
#include "notice/run.h"
#include "platform/event_queue.h"
#include "serial/sio.h"

#include <numeric>

namespace {

bool reported = false;

} // namespace

bool _BootIsHopeless() {
    return RUN_IsInterrupted() || SIO_IsLost() || !SIO_IsOpen();
}

int _BootRead(std::span<uint8_t> buffer, uint32_t timeoutMs) {
    if (buffer.empty()) {
        return 0;
    }
    const Moment deadline = CLOCK_After(timeoutMs);
    EVENTS_WaitBeside(deadline, [](Moment step) {
        return SIO_WaitReadable(_BootIsHopeless, step) || _BootIsHopeless();
    });
    return SIO_ReadUntil(buffer.data(), buffer.size(), deadline, _BootIsHopeless) == buffer.size()
               ? 0
               : 1;
}

void _BootFail(std::string_view text) {
    reported = true;
    ERROR_Out(nullptr, text, 1);
    BOOT_SetState(BOOT_UNSYNCED);
}

int _BootCheck(bool condition, std::string_view text) {
    if (condition) {
        return 0;
    }
    _BootFail(text);
    return 1;
}

int _BootAwait(uint8_t answer, std::string_view text, uint32_t timeoutMs) {
    uint8_t received = 0;
    if (_BootRead({&received, 1}, timeoutMs) != 0) {
        return 1;
    }
    return _BootCheck(received == answer, text);
}

int _BootExchange(uint8_t sent, uint8_t answer, std::string_view text) {
    SIO_WriteByte(sent);
    return _BootAwait(answer, text);
}

int _BootCommand(uint8_t command, std::string_view text) {
    return _BootExchange(command, command, text);
}

bool _BootHasReported() {
    return reported;
}

void _BootForgetReports() {
    reported = false;
}

void _BootNeedsNoReport() {
    reported = true;
}

uint8_t _BootChecksum(std::span<const uint8_t> bytes) {
    return static_cast<uint8_t>(0 - std::accumulate(bytes.begin(), bytes.end(), 0U));
}
