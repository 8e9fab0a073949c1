#include "platform/serial_port.h"

#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

// The other end is the test itself: what is sent lies in the system until it is fetched.
TEST(TcpPort, CarriesBytesAndRefusesWhatItCannotDo) {
    const int listener = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    ASSERT_EQ(bind(listener, reinterpret_cast<sockaddr*>(&address), size), 0);
    listen(listener, 1);
    getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size);
    std::string error;
    const SerialPortPtr port =
        SERIALPORT_Open("tcp://127.0.0.1:" + std::to_string(ntohs(address.sin_port)), error);
    ASSERT_TRUE(port) << error;
    const int peer = accept(listener, nullptr, nullptr);

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
    close(listener);

    EXPECT_FALSE(SERIALPORT_Open("tcp://nowhere", error));
    EXPECT_EQ(error, "a port server without control is named tcp://HOST:PORT");
}
