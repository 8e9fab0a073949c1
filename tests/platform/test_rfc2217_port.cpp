#include "platform/rfc2217_codec.h"
#include "platform/serial_port.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <mutex>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

using namespace std::string_literals;

std::string textOf(const std::vector<uint8_t>& bytes) {
    return {bytes.begin(), bytes.end()};
}

std::span<const uint8_t> bytesOf(std::string_view text) {
    return {reinterpret_cast<const uint8_t*>(text.data()), text.size()};
}

// Every way of cutting the stream in two gives the same.
TEST(Rfc2217Codec, DecodesAStreamInAnyPieces) {
    const std::string stream = "a\xFF\xFF"
                               "b\xFF\xF1\xFF\xFB\x2C"                         // NOP, WILL COM-PORT
                               "c\xFF\xFA\x2C\x65\x00\x00\xFF\xFF\x01\xFF\xF0" // a rate
                               "d\xFF\xFA\x18\x01\xFF\xF0"                     // another option's
                               "e\xFF\xFA\x2C\x69\x08\xFF\xFD\x00"             // no end, DO BINARY
                               "f"s;
    for (size_t cut = 0; cut <= stream.size(); ++cut) {
        TelnetDecoder decoder;
        std::vector<uint8_t> data;
        std::vector<TelnetEvent> events;
        telnetDecode(decoder, bytesOf(stream).first(cut), data, events);
        telnetDecode(decoder, bytesOf(stream).subspan(cut), data, events);
        EXPECT_EQ(textOf(data), "a\xFF"s + "bcdef");
        ASSERT_EQ(events.size(), 4U);
        EXPECT_EQ(events[0].verb, TELNET_WILL);
        EXPECT_EQ(events[0].subject, TELNET_COM_PORT);
        EXPECT_EQ(events[1].subject, 0x65);
        EXPECT_EQ(comPortRate(events[1].value), 0xFF01U);
        EXPECT_EQ(events[2].value, std::vector<uint8_t>{8});
        EXPECT_EQ(events[3].verb, TELNET_DO);
    }
}

TEST(Rfc2217Codec, EncodesSettings) {
    std::vector<uint8_t> out;
    telnetAppendData(out, bytesOf("\x01\xFF"));
    telnetAppendSetting(out, COMPORT_SET_BAUDRATE, comPortRateBytes(0x0001FF00));
    EXPECT_EQ(textOf(out), "\x01\xFF\xFF\xFF\xFA\x2C\x01\x00\x01\xFF\xFF\x00\xFF\xF0"s);
}

TEST(Rfc2217Codec, AnswersOnlyChanges) {
    TelnetNegotiation negotiation;
    std::vector<uint8_t> out;
    telnetBegin(negotiation, out);
    const std::tuple<uint8_t, uint8_t, std::string> cases[] = {
        {TELNET_DO, TELNET_COM_PORT, ""}, // agrees with what was asked
        {TELNET_DO, TELNET_COM_PORT, ""},
        {TELNET_WILL, TELNET_COM_PORT, "\xFF\xFD\x2C"},
        {TELNET_WILL, TELNET_COM_PORT, ""},
        {TELNET_WILL, 1, "\xFF\xFE\x01"}, // echo
        {TELNET_DO, 24, "\xFF\xFC\x18"},
        {TELNET_DONT, 24, ""},
        {TELNET_WONT, TELNET_BINARY, ""},
        {TELNET_DONT, TELNET_COM_PORT, "\xFF\xFC\x2C"}, // takes back
    };
    for (const auto& [verb, option, reply] : cases) {
        out.clear();
        telnetNegotiate(negotiation, {verb, option, {}}, out);
        EXPECT_EQ(textOf(out), reply) << int{verb} << ' ' << int{option};
    }
    EXPECT_TRUE(negotiation.theirs[TELNET_BINARY].refused);
    EXPECT_TRUE(negotiation.ours[TELNET_COM_PORT].refused);
}

TEST(Rfc2217Codec, ReadsNames) {
    std::string host;
    std::string port;
    EXPECT_TRUE(rfc2217ParseName("rfc2217://bench-3:2001", host, port));
    EXPECT_EQ(host + " " + port, "bench-3 2001");
    EXPECT_TRUE(rfc2217ParseName("rfc2217://[::1]:7", host, port));
    EXPECT_EQ(host + " " + port, "::1 7");
    for (const char* bad : {"rfc2217://", "rfc2217://host", "rfc2217://:1", "rfc2217://host:",
                            "rfc2217://::1:7", "rfc2217://host:1x", "rfc2217://host:123456"}) {
        EXPECT_FALSE(rfc2217ParseName(bad, host, port)) << bad;
    }
}

// A port server of one connection with a line that echoes; what it does wrong is up to the test.
class Server {
public:
    std::string greeting = "\xFF\xFD\x2C\xFF\xFD\x00\xFF\xFB\x00\xFF\xFB\x01"s;
    uint8_t silentOn = 255;        // a command without an answer
    std::string rate = "";         // answered instead of the one asked for
    std::string hangUpOn = "\x04"; // a byte

    Server() : listener_(socket(AF_INET, SOCK_STREAM, 0)) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address;
        EXPECT_EQ(bind(listener_, reinterpret_cast<sockaddr*>(&address), size), 0);
        listen(listener_, 1);
        getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &size);
        name = "rfc2217://127.0.0.1:" + std::to_string(ntohs(address.sin_port));
    }
    ~Server() {
        shutdown(listener_, SHUT_RDWR);
        CLOCK_JoinThread(thread_);
        close(listener_);
    }
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    void start() {
        thread_ = CLOCK_StartThread([this] { serve(); });
    }
    std::string takeSettings() {
        const std::lock_guard lock(mutex_);
        return std::exchange(settings_, {});
    }
    std::string name;

private:
    void serve() {
        const int peer = accept(listener_, nullptr, nullptr);
        const int noDelay = 1;
        setsockopt(peer, IPPROTO_TCP, TCP_NODELAY, &noDelay, sizeof noDelay);
        bool open = peer >= 0 && put(peer, greeting);
        std::string pending;
        char buffer[256];
        while (open) {
            const ssize_t count = recv(peer, buffer, sizeof buffer, 0);
            open = count > 0;
            pending.append(buffer, open ? static_cast<size_t>(count) : 0);
            while (open && handleFirst(peer, pending, open)) {
            }
        }
        close(peer);
    }
    static bool put(int peer, const std::string& text) {
        return send(peer, text.data(), text.size(), MSG_NOSIGNAL) ==
               static_cast<ssize_t>(text.size());
    }
    // Serves the first thing in `pending`; false when it is not complete yet.
    bool handleFirst(int peer, std::string& pending, bool& open) {
        size_t length = 1;
        if (pending.starts_with("\xFF\xFA")) {
            const size_t end = pending.find("\xFF\xF0");
            if (end == std::string::npos) {
                return false;
            }
            length = end + 2;
            answer(peer, pending.substr(3, end - 3));
        } else if (pending.starts_with('\xFF')) {
            length = pending.starts_with("\xFF\xFF") ? 2 : 3;
            if (pending.size() < length) {
                return false;
            }
            if (length == 2) {
                put(peer, "\xFF\xFF");
            }
        } else if (pending.empty()) {
            return false;
        } else {
            open = pending.substr(0, 1) != hangUpOn && put(peer, pending.substr(0, 1));
        }
        pending.erase(0, length);
        return true;
    }
    void answer(int peer, std::string setting) {
        {
            const std::lock_guard lock(mutex_);
            for (const char byte : setting) {
                char text[4];
                std::snprintf(text, sizeof text, "%02X", static_cast<uint8_t>(byte));
                settings_ += text;
            }
            settings_ += ' ';
        }
        if (static_cast<uint8_t>(setting[0]) == silentOn) {
            return;
        }
        if (setting[0] == COMPORT_SET_BAUDRATE && (!rate.empty() || setting == "\x01\0\0\0\0"s)) {
            setting = "\x01" + (rate.empty() ? "\x00\x00\x25\x80"s : rate);
        }
        setting[0] = static_cast<char>(setting[0] + 100);
        put(peer, "\xFF\xFA\x2C" + setting + "\xFF\xF0");
    }

    int listener_;
    ClockThreadPtr thread_;
    std::mutex mutex_;
    std::string settings_; // in hex, as they came
};

TEST(Rfc2217Port, SetsTheLineAndPassesBytes) {
    Server server;
    server.start();
    std::string error;
    const SerialPortPtr port = SERIALPORT_Open(server.name, error);
    ASSERT_TRUE(port) << error;
    EXPECT_EQ(port->configure({.baudrate = 115200}), 9600U);
    EXPECT_EQ(server.takeSettings(), "0100000000 010001C200 0208 0301 0401 0501 0509 050B ");
    EXPECT_TRUE(port->setDtr(true) && port->setRts(false) && port->setDtr(false));
    EXPECT_EQ(server.takeSettings(), "0508 050C 0509 ");
    EXPECT_TRUE(port->write(bytesOf("\x01\xFF\x00\r"s)));
    uint8_t echo[5];
    EXPECT_EQ(port->read(std::span(echo).first(4), CLOCK_After(1000), {}), 4U);
    EXPECT_EQ(std::string(echo, echo + 4), "\x01\xFF\x00\r"s);
    EXPECT_EQ(port->read(echo, CLOCK_After(10), {}), 0U);
    // A hundred bytes at 2400 Bd must have left before the rate changes.
    EXPECT_EQ(port->configure({.baudrate = 2400}), 115200U);
    const Moment start = CLOCK_Now();
    port->write(bytesOf(std::string(20, 'x')));
    EXPECT_EQ(port->configure({.baudrate = 9600}), 2400U);
    EXPECT_GE(CLOCK_Now().us - start.us, 83'000);
    std::vector<uint8_t> echoes(20);
    EXPECT_EQ(port->read(echoes, CLOCK_After(1000), {}), 20U);
    port->write(bytesOf("\x04"));
    EXPECT_FALSE(port->waitReadable(kNever, {}));
    EXPECT_EQ(port->lostReason(), "the port server closed the connection");
    EXPECT_FALSE(port->write(bytesOf("x")));
}

// One thread waits for bytes while the other awaits answers: neither takes the other's.
TEST(Rfc2217Port, ServesTwoThreads) {
    Server server;
    server.start();
    std::string error;
    const SerialPortPtr port = SERIALPORT_Open(server.name, error);
    ASSERT_TRUE(port) << error;
    std::string heard;
    const ClockThreadPtr reader = CLOCK_StartThread([&] {
        uint8_t byte = 0;
        while (port->waitReadable(CLOCK_After(5000), {}) && byte != 'z') {
            const size_t count = port->read({&byte, 1}, CLOCK_Now(), {});
            heard.append(count, static_cast<char>(byte));
        }
    });
    for (int round = 0; round < 50; ++round) {
        EXPECT_TRUE(port->write(bytesOf("x")) && port->setDtr(round % 2 == 0));
    }
    port->write(bytesOf("z\x04"));
    CLOCK_JoinThread(reader);
    EXPECT_EQ(heard, std::string(50, 'x') + "z");
}

TEST(Rfc2217Port, SaysWhatAServerWillNotDo) {
    struct Case {
        std::string greeting;
        uint8_t silentOn;
        std::string rate;
        std::string openError;
        std::string refusal;
    };
    const std::string good = Server().greeting;
    const Case cases[] = {
        {"\xFF\xFE\x2C"s, 255, "", "the server refuses control of the port (RFC 2217)", ""},
        {"\xFF\xFD\x2C\xFF\xFE\x00"s, 255, "", "the server refuses binary transmission", ""},
        {good, 255, "\x00\x00\x96\x00"s, "",
         "a rate of 31250 Bd is not possible, the port server uses 38400 Bd"},
        {good, COMPORT_SET_CONTROL, "", "", "the port server does not confirm DTR"},
    };
    for (const Case& row : cases) {
        Server server;
        server.greeting = row.greeting;
        server.silentOn = row.silentOn;
        server.rate = row.rate;
        server.start();
        std::string error;
        const SerialPortPtr port = SERIALPORT_Open(server.name, error);
        EXPECT_EQ(error, row.openError);
        ASSERT_EQ(port != nullptr, row.openError.empty());
        if (port) {
            const bool asksForRate = row.silentOn == 255; // an answer that stays out takes a second
            EXPECT_FALSE(asksForRate ? port->configure({.baudrate = 31250}).has_value()
                                     : port->setDtr(true));
            EXPECT_EQ(port->refusal(), row.refusal);
        }
    }
}

TEST(Rfc2217Port, SaysWhyThereIsNoConnection) {
    std::string listening;
    { listening = Server().name; }
    const std::pair<std::string, std::string> cases[] = {
        {"rfc2217://host", "a port server is named rfc2217://HOST:PORT"},
        {"rfc2217://no.such.host.invalid:1", "the host no.such.host.invalid is not known"},
        {listening,
         "nothing listens on port " + listening.substr(listening.rfind(':') + 1) + " of 127.0.0.1"},
    };
    for (const auto& [name, reason] : cases) {
        std::string error;
        EXPECT_FALSE(SERIALPORT_Open(name, error));
        EXPECT_EQ(error, reason);
    }
}

} // namespace
