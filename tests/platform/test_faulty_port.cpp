#include "sim/virtual_clock.h"
#include "support/port_text.h"
#include "support/test_line.h"

#include <gtest/gtest.h>

namespace {

struct World {
    VirtualClock clock{1};
    TestLines lines{{"a"}};
    std::string error;

    SerialPortPtr open(const std::string& faults) {
        error.clear();
        return SERIALPORT_Open("faulty://" + faults + "@test://a", error);
    }
};

// Every fault does the same in both directions.
TEST(FaultyPort, SpoilsTheNamedBytes) {
    World world;
    const std::pair<std::string, std::string> cases[] = {
        {"", "abcdef"},
        {"seed=7", "abcdef"},
        {"DIR-lose=1,DIR-lose=4", "acdf"},
        {"DIR-flip=2.5", "abCdef"},
        {"DIR-double=0,DIR-double=5", "aabcdeff"},
        {"DIR-lose=100%", ""},
        {"DIR-hangup=3", "abc"},
        {"DIR-double=2,DIR-flip=2.0", "abbbdef"},
        {"DIR-set=2:7A,DIR-add=4:ff", "abzddf"},
        {"DIR-insert=0:2D,DIR-insert=3:2B", "-abc+def"},
        {"DIR-cut=4", "abcd"},
    };
    for (const auto& [faults, expected] : cases) {
        for (const std::string direction : {"tx", "rx"}) {
            std::string named = faults;
            for (size_t at = 0; (at = named.find("DIR")) != std::string::npos;) {
                named.replace(at, 3, direction);
            }
            const SerialPortPtr port = world.open(named);
            ASSERT_TRUE(port) << world.error;
            std::string passed;
            if (direction == "rx") {
                world.lines["a"].send("abc");
                passed = readText(*port, 4, 10);
                world.lines["a"].send("def");
                passed += readText(*port, 9, 10);
            } else {
                writeText(*port, "abc");
                writeText(*port, "def");
                for (const std::string& text : world.lines["a"].fromProgram) {
                    passed += text;
                }
            }
            EXPECT_EQ(passed, expected) << named;
            const bool hungUp = faults.find("hangup") != std::string::npos;
            EXPECT_EQ(port->lostReason(), hungUp ? "the line was hung up on purpose" : "");
            EXPECT_EQ(port->write(std::vector<uint8_t>{1}), !hungUp);
            if (faults.find("cut") != std::string::npos) { // in both directions
                world.lines["a"].send("x");
                EXPECT_EQ(readText(*port, 1, 5), "");
                EXPECT_EQ(world.lines["a"].fromProgram.size(), direction == "rx" ? 0U : 2U);
            }
            world.lines["a"].fromProgram.clear();
            world.lines["a"].toProgram.clear();
        }
    }
}

TEST(FaultyPort, AFailingWriteSendsNothingAndIsTheOnlyOne) {
    World world;
    const SerialPortPtr port = world.open("tx-fail=1");
    const std::string text = "ab";
    const std::vector<uint8_t> bytes(text.begin(), text.end());
    EXPECT_FALSE(port->write(bytes));
    EXPECT_TRUE(port->write(bytes));
    EXPECT_EQ(port->lostReason(), "");
    EXPECT_EQ(world.lines["a"].fromProgram, (std::vector<std::string>{text}));
}

TEST(FaultyPort, ALateByteHoldsUpWhatIsBehindIt) {
    World world;
    const SerialPortPtr port = world.open("rx-late=1:20ms,tx-late=1:30ms");
    ASSERT_TRUE(port) << world.error;
    world.lines["a"].send("abc");
    const Moment start = CLOCK_Now();
    EXPECT_EQ(readText(*port, 3, 5), "a");
    EXPECT_EQ(CLOCK_Now().us - start.us, 5'000);
    EXPECT_TRUE(port->waitReadable(kNever, {}));
    EXPECT_EQ(CLOCK_Now().us - start.us, 20'000);
    EXPECT_EQ(readText(*port, 2, 0), "bc");
    writeText(*port, "xyz");
    EXPECT_EQ(CLOCK_Now().us - start.us, 50'000);
    EXPECT_EQ(world.lines["a"].fromProgram, (std::vector<std::string>{"x", "yz"}));
}

TEST(FaultyPort, ChanceFollowsTheSeedAndNotThePieces) {
    World world;
    std::map<std::string, std::string> heard;
    std::string text;
    for (int count = 0; count < 2000; ++count) {
        text += static_cast<char>(count);
    }
    for (const std::string seed : {"1", "2"}) {
        for (const size_t piece : {1U, 7U, 2000U}) {
            const SerialPortPtr port = world.open("seed=" + seed + ",rx-lose=10%");
            world.lines["a"].send(text);
            std::string passed;
            for (std::string next = "x"; !next.empty(); passed += next) {
                next = readText(*port, piece, 0);
            }
            EXPECT_TRUE(passed.size() > 1740 && passed.size() < 1860) << passed.size();
            const auto [first, isNew] = heard.emplace(seed, passed);
            EXPECT_TRUE(isNew || first->second == passed) << "seed " << seed;
        }
    }
    EXPECT_NE(heard["1"], heard["2"]);
}

TEST(FaultyPort, AHangUpWakesAWaitingReader) {
    World world;
    const SerialPortPtr port = world.open("tx-hangup=0");
    const ClockThreadPtr reader =
        CLOCK_StartThread([&port] { EXPECT_FALSE(port->waitReadable(kNever, {})); });
    CLOCK_Sleep(1);
    EXPECT_FALSE(port->write(std::vector<uint8_t>{1}));
    CLOCK_JoinThread(reader);
}

TEST(FaultyPort, RefusesWhatItDoesNotUnderstand) {
    World world;
    for (const std::string bad :
         {"rx", "rx-lose", "rx-lose=", "rx-lose=x", "rx-lose=-1", "rx-lose=1.2", "rx-flip=1.8",
          "rx-flip=101%", "rx-flip=0%", "rx-late=3", "rx-late=3:5", "rx-late=1%:5s", "rx-set=3",
          "rx-add=3:100", "rx-fail=1", "xx-lose=1", "rx-melt=1", "seed=a", "speed=1"}) {
        EXPECT_FALSE(world.open("seed=3," + bad + ",tx-lose=1"));
        EXPECT_EQ(world.error, "the line fault \"" + bad + "\" is not understood");
    }
    EXPECT_FALSE(SERIALPORT_Open("faulty://rx-lose=1", world.error));
    EXPECT_EQ(world.error, "a faulty port is named faulty://FAULTS@DEVICE");
    EXPECT_FALSE(SERIALPORT_Open("faulty://@test://b", world.error));
    EXPECT_EQ(world.error, "No such line");
    EXPECT_FALSE(SERIALPORT_Open("", world.error));
    EXPECT_EQ(world.error, "no device is named");
    EXPECT_FALSE(SERIALPORT_Open("telnet://host:23", world.error));
    EXPECT_EQ(world.error, "there is no kind of port called telnet");
}

} // namespace
