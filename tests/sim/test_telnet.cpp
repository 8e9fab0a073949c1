// The server's side of RFC 2217, beside what the program's own port exercises.
#include "sim/telnet.h"
#include "support/hex_bytes.h"

#include <gtest/gtest.h>

// The modem lines are told of from the beginning, and of what the host wants once it has said so.
TEST(Telnet, NotifiesOfModemLines) {
    Telnet telnet;
    const std::pair<const char*, const char*> cases[] = {
        {"FFFB2C", "FFFD2CFFFA2C6B30FFF0"}, // the option is agreed on: DSR and CTS
        {"FFFD2C", "FFFB2C"},
        {"FFFA2C0508FFF0", "FFFA2C6B21FFF0FFFA2C6908FFF0"}, // nobody has said otherwise
        {"FFFA2C0509FFF0", "FFFA2C6B31FFF0FFFA2C6909FFF0"},
        {"FFFA2C0BFFFFFFF0", "FFFA2C6FFFFFFFF0FFFA2C6B30FFF0"}, // all: DSR and CTS
        {"FFFA2C0508FFF0", "FFFA2C6B21FFF0FFFA2C6908FFF0"},     // reset: CTS goes
        {"FFFA2C0508FFF0", "FFFA2C6908FFF0"},                   // no change
        {"FFFA2C0B11FFF0", "FFFA2C6F11FFF0FFFA2C6B00FFF0"},     // CTS only
        {"FFFA2C0509FFF0", "FFFA2C6B11FFF0FFFA2C6909FFF0"},
        {"FFFA2C0B00FFF0", "FFFA2C6F00FFF0"},
        {"FFFA2C0508FFF0", "FFFA2C6908FFF0"},
    };
    for (const auto& [sent, answer] : cases) {
        TELNET_Receive(telnet, bytesOfHex(sent));
        EXPECT_EQ(HEXTEXT_FromBytes(std::exchange(telnet.answers, {})), answer) << sent;
    }
}
