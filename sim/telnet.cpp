#include "sim/telnet.h"

#include <algorithm>
#include <utility>

namespace {

constexpr uint8_t kEscape = 255; // IAC
constexpr uint8_t kDont = 254;
constexpr uint8_t kDo = 253;
constexpr uint8_t kWont = 252;
constexpr uint8_t kWill = 251;
constexpr uint8_t kSub = 250;
constexpr uint8_t kSubEnd = 240;

constexpr uint8_t kOptionBinary = 0;
constexpr uint8_t kOptionSuppressGoAhead = 3;
constexpr uint8_t kOptionComPort = 44;

constexpr uint8_t kSetRate = 1;
constexpr uint8_t kSetControl = 5;
constexpr uint8_t kNotifyModemState = 7;
constexpr uint8_t kSetModemMask = 11;
constexpr uint8_t kAnswerOffset = 100; // the server's commands are the client's and a hundred

enum ControlValue : uint8_t {
    kAskDtr = 7,
    kDtrOn = 8,
    kDtrOff = 9,
    kAskRts = 10,
    kRtsOn = 11,
    kRtsOff = 12
};

// The modem lines of the virtual line: DSR is on, CTS while the chip is not held in reset.
enum ModemState : uint8_t { kCtsChanged = 0x01, kCts = 0x10, kDsr = 0x20 };

constexpr size_t kMaxSub = 64;

bool isServed(uint8_t option) {
    return option == kOptionBinary || option == kOptionSuppressGoAhead || option == kOptionComPort;
}

void answerSub(Telnet& telnet, uint8_t command, std::span<const uint8_t> values) {
    telnet.answers.insert(telnet.answers.end(), {kEscape, kSub, kOptionComPort,
                                                 static_cast<uint8_t>(command + kAnswerOffset)});
    const std::vector<uint8_t> escaped = TELNET_Escape(values);
    telnet.answers.insert(telnet.answers.end(), escaped.begin(), escaped.end());
    telnet.answers.insert(telnet.answers.end(), {kEscape, kSubEnd});
}

void notifyModemState(Telnet& telnet, uint8_t changed) {
    const auto state = static_cast<uint8_t>(kDsr | (telnet.dtr ? 0 : kCts) | changed);
    const uint8_t told = state & telnet.modemMask;
    answerSub(telnet, kNotifyModemState, std::span(&told, 1));
}

// Agrees to what is served, refuses what is not; an agreement of the host needs no answer.
void negotiate(Telnet& telnet, uint8_t option) {
    uint8_t answer = 0;
    if (telnet.verb == kWill) {
        answer = isServed(option) ? kDo : kDont;
    } else if (telnet.verb == kDo) {
        answer = isServed(option) ? kWill : kWont;
    } else {
        return;
    }
    telnet.answers.insert(telnet.answers.end(), {kEscape, answer, option});
    if (option == kOptionComPort && !std::exchange(telnet.comPortAgreed, true)) {
        notifyModemState(telnet, 0); // a client may wait for it before anything else
    }
}

void setDtr(Telnet& telnet, bool on, std::vector<HostEvent>& events) {
    const bool changes = telnet.dtr != on;
    telnet.dtr = on;
    events.push_back({HostEvent::Kind::dtr, {}, on});
    if (changes && (telnet.modemMask & kCtsChanged) != 0) {
        notifyModemState(telnet, kCtsChanged);
    }
}

void setModemMask(Telnet& telnet, uint8_t mask) {
    telnet.modemMask = mask;
    answerSub(telnet, kSetModemMask, std::span(&mask, 1));
    if (mask != 0) {
        notifyModemState(telnet, 0);
    }
}

void setRate(Telnet& telnet, std::span<const uint8_t> values, std::vector<HostEvent>& events) {
    uint32_t rate = 0;
    for (const uint8_t byte : values.first(4)) {
        rate = rate << 8 | byte;
    }
    if (rate != 0) { // 0 asks
        telnet.rate = rate;
        events.push_back({HostEvent::Kind::rate, {}, rate});
    }
    const uint8_t answer[] = {
        static_cast<uint8_t>(telnet.rate >> 24), static_cast<uint8_t>(telnet.rate >> 16),
        static_cast<uint8_t>(telnet.rate >> 8), static_cast<uint8_t>(telnet.rate)};
    answerSub(telnet, kSetRate, answer);
}

void setControl(Telnet& telnet, uint8_t value, std::vector<HostEvent>& events) {
    uint8_t answer = value;
    if (value == kDtrOn || value == kDtrOff) {
        setDtr(telnet, value == kDtrOn, events);
    } else if (value == kRtsOn || value == kRtsOff) {
        telnet.rts = value == kRtsOn;
        events.push_back({HostEvent::Kind::rts, {}, telnet.rts});
    } else if (value == kAskDtr) {
        answer = telnet.dtr ? kDtrOn : kDtrOff;
    } else if (value == kAskRts) {
        answer = telnet.rts ? kRtsOn : kRtsOff;
    }
    answerSub(telnet, kSetControl, std::span(&answer, 1));
}

void finishSub(Telnet& telnet, std::vector<HostEvent>& events) {
    const std::vector<uint8_t> sub = std::move(telnet.sub);
    telnet.sub.clear();
    if (sub.size() < 2 || sub[0] != kOptionComPort) {
        return;
    }
    const uint8_t command = sub[1];
    const std::span<const uint8_t> values = std::span(sub).subspan(2);
    if (command == kSetRate && values.size() == 4) {
        setRate(telnet, values, events);
    } else if (command == kSetControl && values.size() == 1) {
        setControl(telnet, values[0], events);
    } else if (command == kSetModemMask && values.size() == 1) {
        setModemMask(telnet, values[0]);
    } else {
        answerSub(telnet, command, values); // whatever it is, the virtual line has it
    }
}

void takeData(uint8_t byte, std::vector<HostEvent>& events) {
    if (events.empty() || events.back().kind != HostEvent::Kind::data) {
        events.emplace_back();
    }
    events.back().bytes.push_back(byte);
}

void takeCommand(Telnet& telnet, uint8_t byte, std::vector<HostEvent>& events) {
    telnet.state = Telnet::State::data;
    if (byte == kEscape) {
        takeData(byte, events);
    } else if (byte == kSub) {
        telnet.sub.clear();
        telnet.state = Telnet::State::sub;
    } else if (byte >= kWill) {
        telnet.verb = byte;
        telnet.state = Telnet::State::option;
    }
}

void takeSubCommand(Telnet& telnet, uint8_t byte, std::vector<HostEvent>& events) {
    telnet.state = Telnet::State::sub;
    if (byte == kEscape) {
        telnet.sub.push_back(byte);
    } else {
        telnet.state = Telnet::State::data;
        finishSub(telnet, events);
    }
}

void takeByte(Telnet& telnet, uint8_t byte, std::vector<HostEvent>& events) {
    switch (telnet.state) {
    case Telnet::State::data:
        if (byte == kEscape) {
            telnet.state = Telnet::State::command;
        } else {
            takeData(byte, events);
        }
        break;
    case Telnet::State::command:
        takeCommand(telnet, byte, events);
        break;
    case Telnet::State::option:
        negotiate(telnet, byte);
        telnet.state = Telnet::State::data;
        break;
    case Telnet::State::sub:
        if (byte == kEscape) {
            telnet.state = Telnet::State::subCommand;
        } else if (telnet.sub.size() < kMaxSub) {
            telnet.sub.push_back(byte);
        }
        break;
    case Telnet::State::subCommand:
        takeSubCommand(telnet, byte, events);
        break;
    }
}

} // namespace

std::vector<HostEvent> TELNET_Receive(Telnet& telnet, std::span<const uint8_t> bytes) {
    std::vector<HostEvent> events;
    for (const uint8_t byte : bytes) {
        takeByte(telnet, byte, events);
    }
    return events;
}

std::vector<uint8_t> TELNET_Escape(std::span<const uint8_t> bytes) {
    std::vector<uint8_t> escaped;
    escaped.reserve(bytes.size());
    for (const uint8_t byte : bytes) {
        escaped.push_back(byte);
        if (byte == kEscape) {
            escaped.push_back(byte);
        }
    }
    return escaped;
}
