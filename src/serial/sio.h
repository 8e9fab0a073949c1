// The program's one serial port: raw 8-bit, read with a timeout a call, written synchronously, with
// the two control lines that reset the target. Every byte is recorded in the communication log
// while that is on. Who may use the port is decided by the link state, not here; opening and
// closing wait until the worker has left it.
#pragma once

#include "notice/hint.h"
#include "platform/clock.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

inline constexpr uint32_t kMaxComPort = 20;
inline constexpr uint32_t kBaudrates[] = {2400, 4800, 9600, 19200, 38400, 57600, 115200};

struct SioConfig {
    uint32_t Port = 0;       // COM number, 0 none
    uint32_t Baudrate = 0;   // bits per second
    uint32_t Logging = 0;    // 0 or 1
    std::string Device = {}; // a path or URL in place of a COM number, Port is 0 then
    bool operator==(const SioConfig&) const = default;
};

enum LineFunction : uint32_t { SETRTS = 3, CLRRTS = 4, SETDTR = 5, CLRDTR = 6 };

// Stores the line format and the configuration; opens no port. Starts the communication log when
// port, rate and logging are all given.
void SIO_Init(uint32_t port, uint32_t baudrate, uint32_t logging, uint8_t byteSize, uint8_t parity,
              uint8_t stopBits);
// Closes the port and the communication log.
void SIO_Exit();

SioConfig SIO_GetConfig();
// Stores the configuration and reopens the port with it.
void SIO_SetConfig(const SioConfig& config);
// Closes the port and opens the configured one; nothing for port 0. False when that failed,
// reported unless failures are expected (below).
bool SIO_Restart();
void SIO_CloseAll();
bool SIO_IsOpen();

// While tolerated, a port that cannot be opened is no error: nothing is reported, the reason stays
// for SIO_GetOpenFailure. For runs that queue no command that needs the port.
void SIO_TolerateOpenFailure(bool tolerate);
// "COM3 (/dev/ttyS2): No such file or directory"; empty when the last opening succeeded.
std::string SIO_GetOpenFailure();
Hint SIO_GetOpenHint(); // what to do about it
// The configured port as texts name it: "COM3", or the device in its place; empty when there is
// none.
std::string SIO_PortName();
// The device that stands for a COM number: the settings' [Settings PORTS], else the default.
std::string SIO_DeviceOfPort(uint32_t port);

// Whether the open port has been lost (unplugged, connection dropped). Any thread. The log has said
// so once, with the port's name; the port stays open until it is closed or opened again.
bool SIO_IsLost();
// "COM3 is /dev/ttyUSB0: the device has gone"; empty while the port is not lost. Any thread.
std::string SIO_GetLoss();
// Why the port did not do what it was last asked to, in the same form; empty where it gave no
// reason. User-interface thread.
std::string SIO_GetRefusal();
// Who else has the port open and takes bytes away; none when nobody is seen to. User-interface
// thread.
Hint SIO_SharedHint();
// How many bytes the ports have taken in the whole run. Any thread.
uint64_t SIO_BytesWritten();
// For whoever begins a connection: opens the port again when it was lost or its last opening
// failed, so that an adapter may be plugged in meanwhile. False when that failed, reported as by
// SIO_Restart; true and nothing done otherwise.
bool SIO_EnsureOpen();

uint32_t SIO_GetPort();
uint32_t SIO_GetBaudrate();
uint32_t SIO_GetLogging();
std::string SIO_GetDevice();
// The two take effect at the next opening, each in place of the other.
void SIO_SetPort(uint32_t port);
void SIO_SetDevice(const std::string& device);
void SIO_SetBaudrate(uint32_t baudrate); // takes effect at the next opening
void SIO_SetLogging(uint32_t on);        // starts or stops the communication log when it differs

// The rate in force before, as it was asked for; 0 when the change failed (reported).
uint32_t SIO_ChangeBaudrate(uint32_t baudrate);
// Puts a rate back behind something that has failed already: a failure is logged alone.
void SIO_RestoreBaudrate(uint32_t baudrate);
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
