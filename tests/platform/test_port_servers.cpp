#include "persist/hex_text.h"
#include "platform/rfc2217_codec.h"
#include "sim/telnet.h"
#include "support/port_text.h"

#include <algorithm>
#include <arpa/inet.h>
#include <atomic>
#include <cerrno>
#include <filesystem>
#include <gtest/gtest.h>
#include <mutex>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

std::atomic<bool> bytesWithoutEnd{false};
std::atomic<bool> connectionReset{false};

// In the system's place, for the port under test: it alone asks not to wait.
extern "C" ssize_t receiveInstead(int descriptor, void* buffer, size_t size,
                                  int flags) __asm__("recv");
extern "C" ssize_t receiveInstead(int descriptor, void* buffer, size_t size, int flags) {
    if (bytesWithoutEnd && (flags & MSG_DONTWAIT) != 0) {
        std::fill_n(static_cast<char*>(buffer), size, 'x');
        return static_cast<ssize_t>(size);
    }
    if (connectionReset && (flags & MSG_DONTWAIT) != 0) {
        errno = ECONNRESET;
        return -1;
    }
    return syscall(SYS_recvfrom, descriptor, buffer, size, flags, nullptr, nullptr);
}

using namespace std::string_literals;

std::string textOf(const std::vector<uint8_t>& bytes) {
    return {bytes.begin(), bytes.end()};
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

// Where a port server is reached; what waits in the system is of no interest.
struct Listener {
    const int descriptor = socket(AF_INET, SOCK_STREAM, 0);
    std::string name; // HOST:PORT

    Listener() {
        const int little = 4096;
        setsockopt(descriptor, SOL_SOCKET, SO_RCVBUF, &little, sizeof little);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address;
        EXPECT_EQ(bind(descriptor, reinterpret_cast<sockaddr*>(&address), size), 0);
        listen(descriptor, 1);
        getsockname(descriptor, reinterpret_cast<sockaddr*>(&address), &size);
        name = "127.0.0.1:" + std::to_string(ntohs(address.sin_port));
    }
    ~Listener() { close(descriptor); }
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;
};

// A port server of one connection with a line that echoes, hangs up at a byte 4 and at a byte 5
// sends `flood` for ever.
class Server {
public:
    ~Server() {
        shutdown(listener_.descriptor, SHUT_RDWR);
        CLOCK_JoinThread(thread_);
    }

    // Opens the port; the server's first answer that holds `spoilt` has `instead` in its place.
    SerialPortPtr open(const std::string& spoilt = "", const std::string& instead = "") {
        thread_ = CLOCK_StartThread([this, spoilt, instead] { serve(spoilt, instead); });
        return SERIALPORT_Open("rfc2217://" + listener_.name, error);
    }
    // What has been answered to settings since the last call, in hex.
    std::string takeAnswers() {
        const std::lock_guard lock(mutex_);
        return HEXTEXT_FromBytes(bytesOf(std::exchange(answers_, {})));
    }
    std::string error; // of opening
    std::string flood;

private:
    void serve(const std::string& spoilt, const std::string& instead) {
        const int peer = accept(listener_.descriptor, nullptr, nullptr);
        const int noDelay = 1;
        setsockopt(peer, IPPROTO_TCP, TCP_NODELAY, &noDelay, sizeof noDelay);
        Telnet telnet;
        uint8_t buffer[3]; // parts the stream anywhere
        bool hangsUp = false;
        for (ssize_t count = 1; count > 0 && !hangsUp;) {
            count = recv(peer, buffer, sizeof buffer, 0);
            std::vector<uint8_t> echo;
            for (const HostEvent& event :
                 TELNET_Receive(telnet, std::span(buffer).first(std::max<ssize_t>(count, 0)))) {
                echo.insert(echo.end(), event.bytes.begin(), event.bytes.end());
            }
            const auto end = std::ranges::find(echo, 4);
            hangsUp = end != echo.end();
            echo.erase(end, echo.end());
            std::string answers = textOf(std::exchange(telnet.answers, {}));
            if (const size_t at = answers.find(spoilt); !spoilt.empty() && at < answers.size()) {
                answers.replace(at, spoilt.size(), instead);
            }
            if (answers.starts_with("\xFF\xFA")) {
                const std::lock_guard lock(mutex_);
                answers_ += answers;
            }
            std::string out = answers + textOf(TELNET_Escape(echo));
            if (echo == std::vector<uint8_t>{5}) {
                out = flood;
                hangsUp = true;
            }
            while (::send(peer, out.data(), out.size(), MSG_NOSIGNAL) > 0 && hangsUp &&
                   !out.empty()) {
            }
        }
        close(peer);
    }

    Listener listener_;
    ClockThreadPtr thread_;
    std::mutex mutex_;
    std::string answers_;
};

TEST(Rfc2217Port, SetsTheLineAndPassesBytes) {
    Server server;
    const SerialPortPtr port = server.open();
    ASSERT_TRUE(port) << server.error;
    EXPECT_EQ(port->configure({.baudrate = 0xFF00}), 9600U);
    EXPECT_EQ(server.takeAnswers(), "FFFA2C6500002580FFF0FFFA2C650000FFFF00FFF0"
                                    "FFFA2C6608FFF0FFFA2C6701FFF0FFFA2C6801FFF0"
                                    "FFFA2C6901FFF0FFFA2C6909FFF0FFFA2C690BFFF0");
    EXPECT_TRUE(port->setDtr(true) && port->setRts(false) && port->setDtr(false));
    EXPECT_EQ(server.takeAnswers(), "FFFA2C6B21FFF0FFFA2C6908FFF0FFFA2C690CFFF0"
                                    "FFFA2C6B31FFF0FFFA2C6909FFF0"); // with its modem lines
    EXPECT_TRUE(writeText(*port, "\x01\xFF\x00\r"s));
    EXPECT_EQ(readText(*port, 4, 30'000), "\x01\xFF\x00\r"s);
    EXPECT_EQ(readText(*port, 5, 10), "");
    // Twenty bytes at 2400 Bd must have left before the rate changes.
    EXPECT_EQ(port->configure({.baudrate = 2400, .keepLines = true}), 0xFF00U);
    EXPECT_EQ(server.takeAnswers(), "FFFA2C6500000960FFF0FFFA2C6608FFF0FFFA2C6701FFF0"
                                    "FFFA2C6801FFF0FFFA2C6901FFF0");
    const Moment start = CLOCK_Now();
    writeText(*port, std::string(20, 'x'));
    EXPECT_EQ(port->configure({.baudrate = 9600}), 2400U);
    EXPECT_GE(CLOCK_Now().us - start.us, 83'000);
    EXPECT_EQ(readText(*port, 20, 30'000), std::string(20, 'x'));
    writeText(*port, "\x04");
    EXPECT_FALSE(port->waitReadable(kNever, {}));
    EXPECT_EQ(port->lostReason(), "the port server closed the connection");
    EXPECT_FALSE(writeText(*port, "x"));
}

// One thread waits for bytes while the other awaits answers: neither takes the other's.
TEST(Rfc2217Port, ServesTwoThreads) {
    Server server;
    const SerialPortPtr port = server.open();
    ASSERT_TRUE(port) << server.error;
    std::string heard;
    const ClockThreadPtr reader = CLOCK_StartThread([&] {
        while (!heard.ends_with('z') && port->waitReadable(CLOCK_After(30'000), {})) {
            heard += readText(*port, 1, 0);
        }
    });
    for (int round = 0; round < 50; ++round) {
        EXPECT_TRUE(writeText(*port, "x") && port->setDtr(round % 2 == 0));
    }
    writeText(*port, "z");
    CLOCK_JoinThread(reader);
    EXPECT_EQ(heard, std::string(50, 'x') + "z");
    connectionReset = true;
    EXPECT_FALSE(port->waitReadable(kNever, {}));
    connectionReset = false;
    EXPECT_EQ(port->lostReason(), "the connection was lost: Connection reset by peer");
}

TEST(Rfc2217Port, SaysWhatAServerWillNotDo) {
    struct Case {
        std::string answer;
        std::string instead;
        std::string openError;
        std::string refusal;
    };
    const Case cases[] = {
        {"\xFF\xFD\x2C"s, "\xFF\xFE\x2C"s, "the server refuses control of the port (RFC 2217)", ""},
        {"\xFF\xFD\x00"s, "\xFF\xFE\x00"s, "the server refuses binary transmission", ""},
        {"\x65\x00\x00\x7A\x12"s, "\x65\x00\x00\x96\x00"s, "",
         "a rate of 31250 Bd is not possible, the port server uses 38400 Bd"},
        {"\xFF\xFA\x2C\x66\x08\xFF\xF0"s, "\xFF\xFA\x2C\x66\x07\xFF\xF0"s, "",
         "the port server does not confirm 8 data bits without parity and one stop bit"},
        {"\xFF\xFA\x2C\x69\x08\xFF\xF0"s, "", "", "the port server does not confirm DTR"},
        {"\xFF\xFA\x2C\x69\x08\xFF\xF0"s, "\xFF\xFA\x2C\x69\x09\xFF\xF0"s, "",
         "the port server refuses to set DTR"},
        {"\xFF\xFA\x2C\x65\x00\x00\x7A\x12\xFF\xF0"s, "", "",
         "the port server does not confirm the rate"},
    };
    for (const Case& row : cases) {
        Server server;
        const SerialPortPtr port = server.open(row.answer, row.instead);
        EXPECT_EQ(server.error, row.openError);
        ASSERT_EQ(port != nullptr, row.openError.empty());
        if (port) {
            EXPECT_FALSE(port->configure({.baudrate = 31250}) && port->setDtr(true));
            EXPECT_EQ(port->refusal(), row.refusal);
        }
    }
}

// Bytes, questions without end: neither time nor memory is theirs.
TEST(Rfc2217Port, StandsAServerThatFloods) {
    for (const bool asks : {false, true}) {
        Server server;
        while (server.flood.size() < 100'000) {
            server.flood += "\xFF\xFD\x18";
        }
        const SerialPortPtr port = server.open();
        ASSERT_TRUE(port && port->configure({.baudrate = 9600})) << server.error;
        writeText(*port, asks ? "\x05" : "echo");
        alarm(60);
        bytesWithoutEnd = !asks;
        EXPECT_FALSE(port->setDtr(true)) << "the answer is awaited for a second, not for ever";
        EXPECT_EQ(readText(*port, 1 << 22, 0).size(), asks ? 0U : 1U << 16);
        bytesWithoutEnd = false;
        alarm(0);
        if (asks) {
            port->waitReadable(CLOCK_After(30'000), {});
        }
        EXPECT_EQ(port->lostReason(),
                  asks ? "the port server asks without taking the answers" : "");
    }
}

TEST(Rfc2217Port, SaysWhyThereIsNoConnection) {
    const auto descriptors = [] {
        return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
    };
    const auto openBefore = descriptors();
    std::string listening;
    { listening = Listener().name; }
    std::string host;
    std::string port;
    EXPECT_TRUE(tcpParseName("rfc2217://", "rfc2217://[::1]:7", host, port));
    EXPECT_EQ(host + " " + port, "::1 7");
    std::vector<std::pair<std::string, std::string>> cases = {
        {"no.such.host.invalid:1", "the host no.such.host.invalid is not known"},
        {listening, "nothing listens on port " + listening.substr(10) + " of 127.0.0.1"}};
    for (const char* bad : {"", "host", ":1", "host:", "::1:7", "host:1x", "host:123456"}) {
        cases.emplace_back(bad, "a port server is named rfc2217://HOST:PORT");
    }
    for (const auto& [name, reason] : cases) {
        std::string error;
        EXPECT_FALSE(SERIALPORT_Open("rfc2217://" + name, error));
        EXPECT_EQ(error, reason) << name;
    }
    EXPECT_EQ(descriptors(), openBefore);
}

// The other end is the test itself: what is sent lies in the system until it is fetched.
TEST(TcpPort, CarriesBytesAndRefusesWhatItCannotDo) {
    const Listener listener;
    std::string error;
    const SerialPortPtr port = SERIALPORT_Open("tcp://" + listener.name, error);
    ASSERT_TRUE(port) << error;
    const int peer = accept(listener.descriptor, nullptr, nullptr);

    EXPECT_EQ(port->configure({9600}), 9600U);
    EXPECT_EQ(port->configure({9600}), 9600U);
    EXPECT_FALSE(port->configure({115200}));
    EXPECT_NE(port->refusal().find("taken to be 9600 Bd"), std::string::npos) << port->refusal();
    EXPECT_TRUE(port->setDtr(true) && port->setRts(false));

    uint8_t buffer[4] = {'p', 'i', 'n', 'g'};
    EXPECT_TRUE(port->write(buffer));
    EXPECT_EQ(recv(peer, buffer, sizeof buffer, MSG_WAITALL), 4);
    EXPECT_FALSE(port->waitReadable(CLOCK_After(1), {}));
    EXPECT_EQ(send(peer, "pong", 4, 0), 4);
    EXPECT_TRUE(port->waitReadable(CLOCK_After(60'000), {}));
    EXPECT_EQ(port->read(buffer, CLOCK_After(60'000), {}), 4U);
    EXPECT_EQ(std::string(buffer, buffer + 4), "pong");
    EXPECT_EQ(port->lostReason(), "");
    close(peer);
    EXPECT_FALSE(port->waitReadable(CLOCK_After(60'000), {}));
    EXPECT_EQ(port->lostReason(), "the port server closed the connection");
    EXPECT_FALSE(port->write(buffer));
    EXPECT_EQ(port->read(buffer, CLOCK_After(60'000), {}), 0U);
    EXPECT_FALSE(SERIALPORT_Open("tcp://nowhere", error));
    EXPECT_EQ(error, "a port server without control is named tcp://HOST:PORT");
}

} // namespace
