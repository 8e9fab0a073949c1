#include "sim/telnet.h"

#include <gtest/gtest.h>
#include <string>

namespace {

// The events as one text: "data 01 02; rate 9600; dtr 1".
std::string textOf(const std::vector<TelnetEvent>& events) {
    static constexpr const char* kNames[] = {"data", "rate", "dtr", "rts"};
    std::string text;
    for (const TelnetEvent& event : events) {
        text += text.empty() ? "" : "; ";
        text += kNames[static_cast<int>(event.kind)];
        for (const uint8_t byte : event.bytes)
            text += " " + std::to_string(byte);
        if (event.kind != TelnetEvent::Kind::data)
            text += " " + std::to_string(event.value);
    }
    return text;
}

} // namespace

TEST(SimTelnet, RequestsAndAnswers) {
    struct Case {
        const char* name;
        std::vector<uint8_t> received;
        const char* events;
        std::vector<uint8_t> answers;
    };
    const Case cases[] = {
        {"data with an escape in it", {1, 255, 255, 2}, "data 1 255 2", {}},
        {"request for binary", {255, 253, 0}, "", {255, 251, 0}},
        {"agreement needs no answer", {255, 252, 44, 255, 254, 44}, "", {}},
        {"rate between data",
         {5, 255, 250, 44, 1, 0, 0, 0x96, 0, 255, 240, 6},
         "data 5; rate 38400; data 6",
         {255, 250, 44, 101, 0, 0, 0x96, 0, 255, 240}},
        {"rate asked for",
         {255, 250, 44, 1, 0, 0, 0, 0, 255, 240},
         "",
         {255, 250, 44, 101, 0, 0, 0x25, 0x80, 255, 240}},
        {"rate with an escape in it",
         {255, 250, 44, 1, 0, 0, 255, 255, 0, 255, 240},
         "rate 65280",
         {255, 250, 44, 101, 0, 0, 255, 255, 0, 255, 240}},
        {"lines",
         {255, 250, 44, 5, 8, 255, 240, 255, 250, 44, 5, 12, 255, 240},
         "dtr 1; rts 0",
         {255, 250, 44, 105, 8, 255, 240, 255, 250, 44, 105, 12, 255, 240}},
        {"suboption of another option", {255, 250, 24, 1, 255, 240}, "", {}},
        {"rate of a wrong length",
         {255, 250, 44, 1, 7, 255, 240},
         "",
         {255, 250, 44, 101, 7, 255, 240}},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(test.name);
        Telnet whole;
        EXPECT_EQ(textOf(TELNET_Receive(whole, test.received)), test.events);
        EXPECT_EQ(whole.answers, test.answers);
        // Where the network parts the bytes changes nothing.
        Telnet parted;
        for (const uint8_t byte : test.received)
            TELNET_Receive(parted, std::span(&byte, 1));
        EXPECT_EQ(parted.answers, test.answers);
        EXPECT_EQ(parted.dtr, whole.dtr);
    }
}

TEST(SimTelnet, EscapesData) {
    const uint8_t bytes[] = {254, 255, 0};
    EXPECT_EQ(TELNET_Escape(bytes), (std::vector<uint8_t>{254, 255, 255, 0}));
}
