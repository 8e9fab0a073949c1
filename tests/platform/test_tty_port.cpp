#include "support/port_text.h"

#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

// A pseudo-terminal: the test holds the far end, the port opens `name`.
struct FarEnd {
    int descriptor = posix_openpt(O_RDWR | O_NOCTTY);
    std::string name;
    FarEnd() {
        grantpt(descriptor);
        unlockpt(descriptor);
        name = ptsname(descriptor);
    }
    ~FarEnd() { hangUp(); }
    FarEnd(const FarEnd&) = delete;
    FarEnd& operator=(const FarEnd&) = delete;
    void hangUp() { close(std::exchange(descriptor, -1)); }
    bool send(std::string_view text) const {
        return write(descriptor, text.data(), text.size()) == static_cast<ssize_t>(text.size());
    }
    std::string receive() const {
        char buffer[64];
        const ssize_t count = ::read(descriptor, buffer, sizeof buffer);
        return {buffer, count > 0 ? static_cast<size_t>(count) : 0};
    }
};

SerialPortPtr openTty(const std::string& name) {
    std::string error;
    SerialPortPtr port = TTYPORT_Open(name, error);
    EXPECT_TRUE(port) << error;
    return port;
}

std::string lineCalls; // what was asked of the control lines
int lineError = 0;     // and what becomes of it

// In the system's place: a pseudo-terminal has no control lines.
extern "C" int controlInstead(int descriptor, unsigned long request,
                              void* argument) __asm__("ioctl");
extern "C" int controlInstead(int descriptor, unsigned long request, void* argument) {
    if (request != TIOCMBIS && request != TIOCMBIC) {
        return static_cast<int>(syscall(SYS_ioctl, descriptor, request, argument));
    }
    lineCalls += request == TIOCMBIS ? "+" : "-";
    lineCalls += *static_cast<int*>(argument) == TIOCM_DTR ? "DTR " : "RTS ";
    errno = lineError;
    return lineError == 0 ? 0 : -1;
}

// Whether the system keeps other programs off the device; privileged ones can open it and look.
bool isClaimed(const std::string& name) {
    const int descriptor = open(name.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK);
    if (descriptor < 0) {
        return errno == EBUSY;
    }
    int claimed = 0;
    ioctl(descriptor, TIOCGEXCL, &claimed);
    close(descriptor);
    return claimed != 0;
}

TEST(TtyPort, PassesEveryByteUnchangedAndInOrder) {
    const FarEnd far;
    const SerialPortPtr port = openTty(far.name);
    ASSERT_TRUE(port->configure({.baudrate = 62500}));
    const std::string awkward("\r\n\x03\x11\x13\x00\xFF\x7F\x04", 9);
    ASSERT_TRUE(far.send(awkward));
    EXPECT_TRUE(port->waitReadable(CLOCK_After(30'000), {}));
    EXPECT_EQ(readText(*port, 4, 30'000), awkward.substr(0, 4));
    EXPECT_EQ(readText(*port, 5, 30'000), awkward.substr(4));
    EXPECT_TRUE(writeText(*port, awkward));
    EXPECT_EQ(far.receive(), awkward);
}

TEST(TtyPort, StartsWithoutWhatCameForAnEarlierUser) {
    const FarEnd far;
    const int keptOpen = open(far.name.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK);
    SerialPortPtr port = openTty(far.name);
    ASSERT_TRUE(far.send("late"));
    ASSERT_TRUE(port->waitReadable(CLOCK_After(30'000), {}));
    port.reset();
    port = openTty(far.name);
    ASSERT_TRUE(far.send("new"));
    EXPECT_EQ(readText(*port, 3, 30'000), "new");
    port.reset();
    close(keptOpen);
}

TEST(TtyPort, ReadEndsAtTheDeadlineOrWhenToldTo) {
    const FarEnd far;
    const SerialPortPtr port = openTty(far.name);
    const Moment start = CLOCK_Now();
    ASSERT_TRUE(far.send("ab"));
    EXPECT_EQ(readText(*port, 3, 20), "ab");
    EXPECT_GE(CLOCK_Now().us - start.us, 20'000);
    std::atomic<bool> stop{false};
    const ClockThreadPtr other = CLOCK_StartThread([&stop] {
        CLOCK_Sleep(5);
        stop = true;
        CLOCK_Notify();
    });
    EXPECT_FALSE(port->waitReadable(kNever, [&stop] { return stop.load(); }));
    CLOCK_JoinThread(other);
}

TEST(TtyPort, RateChangesKeepWaitingInputAndTellTheRateBefore) {
    const FarEnd far;
    const SerialPortPtr port = openTty(far.name);
    ASSERT_TRUE(port->configure({.baudrate = 38400}));
    ASSERT_TRUE(far.send("x"));
    for (const uint32_t rate : {31250U, 76800U, 9600U}) {
        const std::optional<uint32_t> before = port->configure({.baudrate = rate});
        ASSERT_TRUE(before);
        EXPECT_EQ(port->configure({.baudrate = rate}), rate);
    }
    EXPECT_EQ(readText(*port, 1, 30'000), "x");
    EXPECT_FALSE(port->configure({.baudrate = 0}));
    EXPECT_EQ(port->refusal(), "a rate of 0 Bd is not possible");
    EXPECT_EQ(port->configure({.baudrate = 2400}), 9600U);
}

TEST(TtyPort, SetsTheControlLines) {
    const FarEnd far;
    const SerialPortPtr port = openTty(far.name);
    lineCalls.clear();
    EXPECT_TRUE(port->configure({.baudrate = 9600}));
    EXPECT_TRUE(port->configure({.baudrate = 9600, .keepLines = true}));
    EXPECT_TRUE(port->setDtr(true) && port->setRts(false));
    EXPECT_EQ(lineCalls, "-DTR +RTS +DTR -RTS ");
    const std::tuple<int, bool, const char*> cases[] = {{ENOTTY, true, ""}, // it has none
                                                        {EPERM, false, ""},
                                                        {EIO, false, "the device has gone"}};
    for (const auto& [error, isSet, lost] : cases) {
        lineError = error;
        EXPECT_EQ(port->setDtr(true), isSet);
        EXPECT_EQ(port->lostReason(), lost);
    }
    lineError = 0;
    EXPECT_EQ(port->refusal(), "the control lines cannot be set: Input/output error");
}

TEST(TtyPort, IsExclusiveUntilClosed) {
    const FarEnd far;
    SerialPortPtr port = openTty(far.name);
    for (int attempt = 0; attempt < 2; ++attempt) {
        std::string error;
        EXPECT_FALSE(TTYPORT_Open(far.name, error));
        EXPECT_EQ(error, "in use by another program");
        EXPECT_TRUE(isClaimed(far.name)); // a refused attempt leaves the owner's claim in force
    }
    port.reset();
    EXPECT_TRUE(openTty(far.name));
}

TEST(TtyPort, HangUpLosesThePortAfterItsLastBytes) {
    for (const bool waitFirst : {false, true}) {
        FarEnd far;
        const SerialPortPtr port = openTty(far.name);
        EXPECT_EQ(port->lostReason(), "");
        far.hangUp();
        if (waitFirst) {
            EXPECT_FALSE(port->waitReadable(kNever, {}));
            EXPECT_EQ(port->lostReason(), "the device has gone");
        }
        EXPECT_EQ(readText(*port, 1, 60'000), "");
        EXPECT_EQ(port->lostReason(), "the device has gone");
        EXPECT_FALSE(port->waitReadable(kNever, {}));
        EXPECT_FALSE(port->write(std::vector<uint8_t>{1}));
    }
}

TEST(TtyPort, SaysWhyADeviceCannotBeOpened) {
    const std::pair<const char*, const char*> cases[] = {
        {"/dev/no-such-tty", "No such file or directory"},
        {"/dev/null", "not a serial device"},
        {"/tmp", "not a serial device"},
    };
    for (const auto& [device, reason] : cases) {
        std::string error;
        EXPECT_FALSE(TTYPORT_Open(device, error));
        EXPECT_EQ(error, reason) << device;
    }
}

} // namespace
