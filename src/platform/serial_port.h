// Serial port kinds. A kind is a record of operations on an open line; the name of a device selects
// the kind: "rfc2217://host:port" a TCP port server, "tcp://host:port" one without control,
// "faulty://FAULTS@DEVICE" another device whose line is spoilt on purpose, anything else a device
// file of the system.
#pragma once

#include "platform/clock.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

// Rate in bits per second; framing in the encoding of the program's settings: parity 0 none,
// stopBits 0 one.
struct LineSettings {
    uint32_t baudrate = 0;
    uint8_t byteSize = 8;
    uint8_t parity = 0;
    uint8_t stopBits = 0;
    bool keepLines = false; // DTR and RTS stay as they are
};

// Why no built-in kind can do these settings; empty when they are 8 data bits without parity and
// one stop bit at some rate.
std::string SERIALPORT_SettingsProblem(const LineSettings& settings);
// Whether a rate that a device makes of the one it was asked for still serves: a receiver follows
// one that is 3 % off, and dividers round.
bool SERIALPORT_IsRateClose(uint32_t actual, uint32_t wanted);

// An open serial line. One thread reads or waits for bytes while another may write, configure, set
// the lines or ask for `lostReason`. Destroying the record closes the line; what the port changed
// on the device (low latency) is put back.
struct SerialPort {
    // Reads up to buffer.size() bytes until they have all arrived, the deadline has passed or
    // `stop` holds (an empty condition never does). Result: the bytes that arrived. On a lost line
    // the result is short at once.
    std::function<size_t(std::span<uint8_t>, Moment deadline, const Condition& stop)> read;
    // Waits until a byte can be read, the line is lost, `stop` holds or the deadline has passed.
    // Result: whether a byte can be read.
    std::function<bool(Moment deadline, const Condition& stop)> waitReadable;
    // Hands all bytes over in one call; waits while the device takes no more. False on failure.
    std::function<bool(std::span<const uint8_t>)> write;
    // Rate and raw framing without flow control; DTR off and RTS on afterwards unless the lines are
    // kept. Waits until what was written has left at the old rate. The rate in force before, or
    // none on failure.
    std::function<std::optional<uint32_t>(const LineSettings&)> configure;
    // Control lines; a device without them (a pseudo-terminal) ignores the call and returns true.
    std::function<bool(bool on)> setDtr;
    std::function<bool(bool on)> setRts;
    // Why the line is of no use any more (device unplugged, connection dropped); empty while it is.
    std::function<std::string()> lostReason;
    std::string description; // e.g. "/dev/ttyUSB0"
    // Why the last configure, setDtr or setRts failed; may be left out by a kind that never fails.
    std::function<std::string()> refusal;
    // The longest way there and back that the line has shown, in ms, beside the time of the bytes;
    // may be left out by a kind that has none.
    std::function<int64_t()> roundTripMs;
};
using SerialPortPtr = std::shared_ptr<SerialPort>;

// Two reasons that whoever opens a device tells apart; the second one may go on.
inline constexpr const char* kPortInUse = "in use by another program";
inline constexpr const char* kPortDenied = "permission denied";

// An opener returns the open line, or null with the reason in `error` ("No such file or directory",
// "in use by another program", "permission denied; the group dialout would give it").
using SerialOpener = std::function<SerialPortPtr(const std::string& device, std::string& error)>;

// Opens `device` with the kind that its name selects.
SerialPortPtr SERIALPORT_Open(const std::string& device, std::string& error);
// Adds a kind for names that begin with `prefix` ("sim://"), or replaces it; the opener gets the
// whole name.
void SERIALPORT_AddKind(std::string_view prefix, SerialOpener opener);

// Whether a text names a device (a path or a URL) where a COM number might stand too.
bool SERIALPORT_IsDeviceName(std::string_view text);
// What is wrong with the name of a device, whether it is there or not; empty when nothing is.
std::string SERIALPORT_NameProblem(const std::string& device);

// Openers of the built-in kinds.
SerialPortPtr TTYPORT_Open(const std::string& device, std::string& error);
SerialPortPtr RFC2217PORT_Open(const std::string& device, std::string& error);
SerialPortPtr TCPPORT_Open(const std::string& device, std::string& error);
SerialPortPtr FAULTYPORT_Open(const std::string& device, std::string& error);

// The device file that stands for COM1 to COM20 where the settings name none: COM1-4 /dev/ttyS0-3,
// COM5-12 /dev/ttyUSB0-7, COM13-20 /dev/ttyACM0-7; empty for any other number.
std::string SERIALPORT_DefaultDevice(uint32_t comNumber);
