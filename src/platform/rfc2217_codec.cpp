#include "platform/rfc2217_codec.h"

namespace {

constexpr uint8_t kIac = 255; // begins every command
constexpr uint8_t kSettingEnd = 240;
constexpr size_t kLongestSetting = 256; // a server's signature may be long; the rest is dropped

bool isVerb(uint8_t byte) {
    return byte >= TELNET_WILL && byte <= TELNET_DONT;
}

bool isWanted(uint8_t option) {
    return option == TELNET_BINARY || option == TELNET_NO_GO_AHEAD || option == TELNET_COM_PORT;
}

void finishSetting(TelnetDecoder& decoder, std::vector<TelnetEvent>& events) {
    const std::vector<uint8_t>& setting = decoder.setting;
    if (setting.size() >= 2 && setting[0] == TELNET_COM_PORT) {
        events.push_back({TELNET_SETTING, setting[1], {setting.begin() + 2, setting.end()}});
    }
    decoder.setting.clear();
    decoder.state = TelnetDecoder::State::data;
}

void addToSetting(TelnetDecoder& decoder, uint8_t byte) {
    if (decoder.setting.size() < kLongestSetting) {
        decoder.setting.push_back(byte);
    }
    decoder.state = TelnetDecoder::State::setting;
}

// The byte behind the one that begins a command.
void decodeCommand(TelnetDecoder& decoder, uint8_t byte, std::vector<uint8_t>& data) {
    decoder.state = TelnetDecoder::State::data;
    if (byte == kIac) {
        data.push_back(kIac);
    } else if (isVerb(byte)) {
        decoder.verb = byte;
        decoder.state = TelnetDecoder::State::option;
    } else if (byte == TELNET_SETTING) {
        decoder.setting.clear();
        decoder.state = TelnetDecoder::State::setting;
    }
}

// The byte behind such a one within a setting; anything but its end and an escaped byte is a server
// that forgot the end.
void decodeSettingCommand(TelnetDecoder& decoder, uint8_t byte, std::vector<uint8_t>& data,
                          std::vector<TelnetEvent>& events) {
    if (byte == kIac) {
        addToSetting(decoder, byte);
        return;
    }
    finishSetting(decoder, events);
    if (byte != kSettingEnd) {
        decodeCommand(decoder, byte, data);
    }
}

void appendVerb(std::vector<uint8_t>& out, uint8_t verb, uint8_t option) {
    out.insert(out.end(), {kIac, verb, option});
}

} // namespace

void telnetDecode(TelnetDecoder& decoder, std::span<const uint8_t> received,
                  std::vector<uint8_t>& data, std::vector<TelnetEvent>& events) {
    for (const uint8_t byte : received) {
        switch (decoder.state) {
        case TelnetDecoder::State::data:
            if (byte == kIac) {
                decoder.state = TelnetDecoder::State::command;
            } else {
                data.push_back(byte);
            }
            break;
        case TelnetDecoder::State::command:
            decodeCommand(decoder, byte, data);
            break;
        case TelnetDecoder::State::option:
            events.push_back({decoder.verb, byte, {}});
            decoder.state = TelnetDecoder::State::data;
            break;
        case TelnetDecoder::State::setting:
            if (byte == kIac) {
                decoder.state = TelnetDecoder::State::settingCommand;
            } else {
                addToSetting(decoder, byte);
            }
            break;
        case TelnetDecoder::State::settingCommand:
            decodeSettingCommand(decoder, byte, data, events);
            break;
        }
    }
}

void telnetAppendData(std::vector<uint8_t>& out, std::span<const uint8_t> data) {
    for (const uint8_t byte : data) {
        out.push_back(byte);
        if (byte == kIac) {
            out.push_back(byte);
        }
    }
}

void telnetAppendSetting(std::vector<uint8_t>& out, uint8_t command,
                         std::span<const uint8_t> value) {
    out.insert(out.end(), {kIac, TELNET_SETTING, TELNET_COM_PORT, command});
    telnetAppendData(out, value);
    out.insert(out.end(), {kIac, kSettingEnd});
}

std::vector<uint8_t> comPortRateBytes(uint32_t rate) {
    return {static_cast<uint8_t>(rate >> 24), static_cast<uint8_t>(rate >> 16),
            static_cast<uint8_t>(rate >> 8), static_cast<uint8_t>(rate)};
}

uint32_t comPortRate(std::span<const uint8_t> value) {
    uint32_t rate = 0;
    for (const uint8_t byte : value) {
        rate = (rate << 8) | byte;
    }
    return value.size() == 4 ? rate : 0;
}

void telnetBegin(TelnetNegotiation& negotiation, std::vector<uint8_t>& out) {
    for (const uint8_t option : {TELNET_COM_PORT, TELNET_BINARY, TELNET_NO_GO_AHEAD}) {
        negotiation.ours[option].asked = true;
        appendVerb(out, TELNET_WILL, option);
    }
    for (const uint8_t option : {TELNET_BINARY, TELNET_NO_GO_AHEAD}) {
        negotiation.theirs[option].asked = true;
        appendVerb(out, TELNET_DO, option);
    }
}

// Only a change is answered, else two polite sides would answer each other for ever.
void telnetNegotiate(TelnetNegotiation& negotiation, const TelnetEvent& event,
                     std::vector<uint8_t>& out) {
    const bool isOurs = event.verb == TELNET_DO || event.verb == TELNET_DONT;
    const bool positive = event.verb == TELNET_DO || event.verb == TELNET_WILL;
    const uint8_t yes = isOurs ? TELNET_WILL : TELNET_DO;
    const uint8_t no = isOurs ? TELNET_WONT : TELNET_DONT;
    if (!isWanted(event.subject)) {
        if (positive) {
            appendVerb(out, no, event.subject);
        }
        return;
    }
    TelnetOptionState& state = (isOurs ? negotiation.ours : negotiation.theirs)[event.subject];
    if (positive && !state.on && !state.asked) {
        appendVerb(out, yes, event.subject);
    } else if (!positive && state.on) {
        appendVerb(out, no, event.subject);
    }
    state = {false, positive, !positive};
}

bool tcpParseName(std::string_view prefix, std::string_view name, std::string& host,
                  std::string& port) {
    const size_t colon = name.rfind(':');
    if (!name.starts_with(prefix) || colon < prefix.size()) {
        return false;
    }
    std::string_view address = name.substr(prefix.size(), colon - prefix.size());
    if (address.starts_with('[') && address.ends_with(']')) {
        address = address.substr(1, address.size() - 2);
    } else if (address.find(':') != std::string_view::npos) {
        return false;
    }
    host = address;
    port = name.substr(colon + 1);
    return !host.empty() && !port.empty() && port.size() <= 5 &&
           port.find_first_not_of("0123456789") == std::string::npos;
}
