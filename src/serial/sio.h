// The program's one serial port: which it is, opening and closing it, and whether it is still
// there. Who may use the port is decided by the link state, not here; opening and closing wait
// until the worker has left it. What goes over it is sio_line.h. User-interface thread where
// nothing else is said.
#pragma once

#include "notice/hint.h"

#include <cstdint>
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
// Who else has the port open and takes bytes away; none when nobody is seen to.
Hint SIO_SharedHint();
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
