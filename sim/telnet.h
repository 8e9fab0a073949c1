// The server's side of a serial port over TCP: telnet with the COM port option (RFC 2217). Pure:
// bytes from the host in, events and answers out.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

// What the host sends or asks of the line, in order.
struct HostEvent {
    enum class Kind { data, rate, dtr, rts } kind = Kind::data;
    std::vector<uint8_t> bytes; // data
    uint32_t value = 0;         // rate in bits per second, or 0 and 1
};

struct Telnet {
    enum class State { data, command, option, sub, subCommand } state = State::data;
    uint8_t verb = 0;
    std::vector<uint8_t> sub;
    uint32_t rate = 9600;
    bool dtr = false;
    bool rts = false;
    bool comPortAgreed = false;
    uint8_t modemMask = 0xFF;     // of what the host is told of the modem lines; all until it says
    std::vector<uint8_t> answers; // to be sent to the host; the caller empties it
};

// Bytes from the host, as they came.
std::vector<HostEvent> TELNET_Receive(Telnet& telnet, std::span<const uint8_t> bytes);
// Data for the host, with the telnet escape doubled.
std::vector<uint8_t> TELNET_Escape(std::span<const uint8_t> bytes);
