// What goes over the open port: raw 8-bit, read with a timeout a call, written synchronously, with
// the two control lines that reset the target. Every byte is recorded in the communication log
// while that is on. The thread that the link state gives the port to.
#pragma once

#include "platform/clock.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

enum LineFunction : uint32_t { SETRTS = 3, CLRRTS = 4, SETDTR = 5, CLRDTR = 6 };

// The rate in force before, as it was asked for; 0 when the change failed (reported).
uint32_t SIO_ChangeBaudrate(uint32_t baudrate);
// The same without an entry in the communication log: at the opening, or to put a rate back behind
// something that has failed already. With `quiet` a failure is logged alone.
uint32_t SIO_SetRate(uint32_t baudrate, bool quiet);
// The rate in force, as it was asked for; 0 without a usable port.
uint32_t SIO_RateInForce();
// Changes the rate, and neither DTR nor RTS. Nothing is reported: false when it was refused.
bool SIO_ChangeRateAlone(uint32_t baudrate);
// How long that many bytes take on the line at the rate in force, rounded up; 0 without a port.
uint32_t SIO_TransferMs(size_t bytes);
// When the wait for an answer of `replyBytes` ends that may take `timeoutMs`: what was written
// leaves first, the answer itself takes its time, and over a port server comes the way there and
// back.
Moment SIO_AnswerDeadline(uint32_t timeoutMs, size_t replyBytes);
// The way there and back over a port server as it was measured; 0 on other lines.
uint32_t SIO_RoundTripMs();
// Reads up to `count` bytes, waiting at most `timeoutMs` in all, or until `stop` holds. Result: the
// bytes that arrived; none are taken once `stop` holds. Without a port, or with one that is lost,
// the time passes and nothing arrives.
size_t SIO_Read(uint8_t* buffer, size_t count, uint32_t timeoutMs, const Condition& stop = {});
size_t SIO_ReadUntil(uint8_t* buffer, size_t count, Moment deadline, const Condition& stop = {});
// Waits until a byte can be read, `stop` holds or the deadline has passed; true for a byte, false
// once `stop` holds. Without a usable port it waits for one.
bool SIO_WaitReadable(const Condition& stop, Moment deadline = kNever);
// True when the port has taken the bytes; while a frame is held, when the port is usable and took
// what it was given last.
bool SIO_Write(std::span<const uint8_t> bytes);
bool SIO_WriteByte(uint8_t value);
// Passes one control-line function on; false without a port.
bool SIO_SetLines(LineFunction function);

// Why the port did not do what it was last asked to, in the form of SIO_GetLoss; empty where it
// gave no reason. User-interface thread.
std::string SIO_GetRefusal();
// How many bytes the ports have taken in the whole run. Any thread.
uint64_t SIO_BytesWritten();

// While one exists, the writes of its thread are logged one by one as always but reach the port
// together when the thread's last one goes out of scope: one kernel call a frame. Reads, rate
// changes and control lines send what is waiting first, so that the order on the line stays.
class SioFrame {
public:
    SioFrame();
    ~SioFrame();
    SioFrame(const SioFrame&) = delete;
    SioFrame& operator=(const SioFrame&) = delete;
};
