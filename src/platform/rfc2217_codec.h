// The language of a TCP port server: Telnet commands and options, and the COM-port option of
// RFC 2217 that carries the settings of the line. Pure functions on bytes and records; the
// connection is elsewhere.
#pragma once

#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

enum TelnetVerb : uint8_t {
    TELNET_SETTING = 250, // stands for the contents of a COM-port subnegotiation
    TELNET_WILL = 251,
    TELNET_WONT = 252,
    TELNET_DO = 253,
    TELNET_DONT = 254,
};

enum TelnetOption : uint8_t {
    TELNET_BINARY = 0,
    TELNET_NO_GO_AHEAD = 3,
    TELNET_COM_PORT = 44,
};

// Commands of the COM-port option. The server answers with the command plus 100.
enum ComPortCommand : uint8_t {
    COMPORT_SET_BAUDRATE = 1, // four bytes, the highest first; 0 asks for the rate in force
    COMPORT_SET_DATASIZE = 2,
    COMPORT_SET_PARITY = 3,
    COMPORT_SET_STOPSIZE = 4,
    COMPORT_SET_CONTROL = 5,
    COMPORT_SUSPEND = 8,
    COMPORT_RESUME = 9,
};
inline constexpr uint8_t kComPortAnswer = 100;

// Values of COMPORT_SET_CONTROL.
enum ComPortControl : uint8_t {
    CONTROL_NO_FLOW_CONTROL = 1,
    CONTROL_DTR_ON = 8,
    CONTROL_DTR_OFF = 9,
    CONTROL_RTS_ON = 11,
    CONTROL_RTS_OFF = 12,
};

// What came between the data bytes.
struct TelnetEvent {
    uint8_t verb = 0;
    uint8_t subject = 0;        // the option, or the command of a COM-port setting
    std::vector<uint8_t> value; // of a COM-port setting
};

// A stream is decoded in pieces as they come; the record keeps what a piece left unfinished.
struct TelnetDecoder {
    enum class State { data, command, option, setting, settingCommand };
    State state = State::data;
    uint8_t verb = 0;
    std::vector<uint8_t> setting;
};
void telnetDecode(TelnetDecoder& decoder, std::span<const uint8_t> received,
                  std::vector<uint8_t>& data, std::vector<TelnetEvent>& events);

// Appends data bytes, escaped.
void telnetAppendData(std::vector<uint8_t>& out, std::span<const uint8_t> data);
void telnetAppendSetting(std::vector<uint8_t>& out, uint8_t command,
                         std::span<const uint8_t> value);

// The four bytes of a rate, and back; 0 for a value of another size.
std::vector<uint8_t> comPortRateBytes(uint32_t rate);
uint32_t comPortRate(std::span<const uint8_t> value);

// What has been agreed about the options of each side.
struct TelnetOptionState {
    bool asked = false;
    bool on = false;
    bool refused = false;
};
struct TelnetNegotiation {
    std::map<uint8_t, TelnetOptionState> ours;
    std::map<uint8_t, TelnetOptionState> theirs;
};
// Appends the requests that a connection begins with.
void telnetBegin(TelnetNegotiation& negotiation, std::vector<uint8_t>& out);
// Takes a WILL, WONT, DO or DONT in and appends the reply where one is due.
void telnetNegotiate(TelnetNegotiation& negotiation, const TelnetEvent& event,
                     std::vector<uint8_t>& out);

// "rfc2217://HOST:PORT" behind its prefix in its two parts; an IPv6 address stands in square
// brackets.
bool tcpParseName(std::string_view prefix, std::string_view name, std::string& host,
                  std::string& port);
