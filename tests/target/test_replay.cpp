// What happens on the line while nothing happens, and communication logs that are played back.
#include "bootrom/connect.h"
#include "platform/format.h"
#include "sim/replay.h"
#include "support/test_line.h"
#include "target/target_world.h"

#include <sstream>

namespace {

size_t countOf(const std::string& part, const std::string& text) {
    size_t found = 0;
    for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
        ++found;
    }
    return found;
}

WorldOptions withLog(const std::string& device) {
    return {.device = device, .chip = {}, .openPort = false};
}

// Auto, a minute of nothing, a verify and Start Application, with the log on from the opening.
std::string record(const std::string& device) {
    TargetWorld world(withLog(device));
    SIO_SetLogging(1);
    SIO_SetConfig({1, 38400, 1});
    runAuto();
    CLOCK_Sleep(60'000);
    runVerify();
    TARGET_StartApplication();
    EXPECT_EQ(world.allErrors() + world.violations(), "");
    TARGET_Stop();
    SIO_Exit();
    return readFile(world.folder() / "calvorin.sio");
}

// A program that talks to a replay in virtual time.
struct ReplayWorld {
    ReplayWorld(const std::string& device, const std::string& log)
        : lines({"replay"}), world([&] {
              WorldOptions options = withLog(device);
              options.port = "test://replay";
              return options;
          }()) {
        std::string error;
        replay.emplace(REPLAY_ParseLog(log, error), true);
        EXPECT_EQ(error, "");
        lines["replay"].heard = [this](const std::string& what, bool isData) {
            hear(what, isData);
        };
        SIO_SetConfig({1, 38400, 0});
    }
    ~ReplayWorld() {
        TARGET_Stop();
        SIO_Exit();
    }
    ReplayWorld(const ReplayWorld&) = delete;
    ReplayWorld& operator=(const ReplayWorld&) = delete;

    void hear(const std::string& what, bool isData) {
        using enum HostEvent::Kind;
        std::vector<uint8_t> bytes;
        {
            const std::lock_guard lock(mutex);
            const auto pass = [this](const HostEvent& event) {
                replay->take(event, Moment{++step}); // the clock is not asked in a write
            };
            if (isData) {
                pass({data, {what.begin(), what.end()}, 0});
            } else if (what.starts_with("rate ")) {
                pass({rate, {}, static_cast<uint32_t>(std::stoul(what.substr(5)))});
                pass({dtr, {}, 0});
                pass({rts, {}, 1});
            } else {
                pass({what.starts_with("DTR") ? dtr : rts, {}, what.ends_with(" on")});
            }
            bytes = replay->takeOutput(kNever);
        }
        lines["replay"].send({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
    }

    TestLines lines;
    TargetWorld world;
    std::mutex mutex;
    int64_t step = 0;
    std::optional<Replay> replay;
};

} // namespace

// Thirteen lines, and a count every ten seconds.
TEST(Idle, TheLogCountsPolls) {
    const std::string log = record("VT-B128");
    EXPECT_EQ(countOf("            The 13 lines above came 51 times more within 10000 ms\r\n", log),
              5U);
    EXPECT_EQ(countOf("EB \r\n" + std::string(13, ' '), log), 0U);
    EXPECT_EQ(countOf("56 54 31 30", log), 2U) << "after connecting and after programming";
}

TEST(Idle, ThePollsAreCountedAsTheyEnd) {
    TargetWorld world({.chip = {}});
    SIO_SetLogging(1);
    EXPECT_EQ(TARGET_Connect(), 1);
    CLOCK_Sleep(3000);
    TARGET_Disconnect();
    CLOCK_Sleep(2000);
    EXPECT_NE(readFile(world.folder() / "calvorin.sio").find("lines above came"),
              std::string::npos);
}

// Two resets, a minute apart, with the ms since the line call before; the first of them for the
// boot ROM's erase where there is one.
TEST(Idle, TheLogTellsThePausesOfTheResets) {
    const std::pair<const char*, const char*> cases[] = {
        {"VT-A32", "500DTR on|50RTS on|250DTR off|250Rate 9600 Bd, DTR off, RTS on|"
                   "0Rate 38400 Bd, DTR off, RTS on|61011DTR on|50RTS off|250DTR off|"},
        {"VT-B128", "500DTR on|50RTS on|250DTR off|61803DTR on|50RTS off|250DTR off|"},
    };
    for (const auto& [device, expected] : cases) {
        std::istringstream stream(record(device));
        std::string calls;
        int before = 0;
        for (std::string line; std::getline(stream, line);) {
            int minutes = 0;
            int seconds = 0;
            int ms = 0;
            char call[80] = "";
            if (std::sscanf(line.c_str(), "%*d:%d:%d:%d            %1[DR]%78[^\r]", &minutes,
                            &seconds, &ms, call, call + 1) == 5) {
                const int at = (minutes * 60 + seconds) * 1000 + ms;
                calls += std::to_string(at - std::exchange(before, at)) + call + "|";
            }
        }
        EXPECT_EQ(calls, expected) << device;
    }
}

// Five questions a second, a lost loader or line noticed in time, and an operation begun at once.
TEST(Idle, TheLoaderIsAskedFiveTimesASecond) {
    TargetWorld world({.chip = {}});
    runAuto();
    const auto frames = [&world] {
        uint64_t count = 0;
        SIMPORT_WithChip(world.line, [&](Chip& chip) { count = CHIP_GetCounts(chip).frames; });
        return count;
    };
    CLOCK_Sleep(1000);
    const uint64_t before = frames();
    CLOCK_Sleep(20'000);
    EXPECT_NEAR(static_cast<double>(frames() - before), 100, 2);
    CLOCK_Sleep(50); // in the middle of a pause
    const Moment posted = CLOCK_Now();
    TARGET_BeginCommand("Verify");
    const AddressRange range{HEXDATA_GetFirstAddr(), uint64_t{HEXDATA_GetFirstAddr()} + 100};
    EXPECT_TRUE(TARGET_PostOperation({OP_VERIFY, range}));
    CLOCK_Wait(kNever, [] { return TARGET_State().Operation == 0; });
    EXPECT_EQ(CLOCK_Now(), posted) << "answered at once";

    for (const bool unplugged : {false, true}) {
        world.screen.take(world.screen.errors, '|');
        world.setFaults({});
        runAuto();
        EXPECT_EQ(TARGET_State().LinkState, LINK_RAMCODE);
        CLOCK_Sleep(1000);
        const Moment gone = CLOCK_Now();
        if (unplugged) {
            SIMPORT_Unplug(world.line);
        } else {
            world.setFaults({{FaultKind::die, ChipStep::any, 0, 0, 0}});
        }
        CLOCK_Wait(kNever, [] { return TARGET_State().LinkState == LINK_IDLE; });
        EXPECT_LE(CLOCK_Now().us - gone.us, unplugged ? 1000 : 1'220'000);
        EXPECT_TRUE(world.allErrors().starts_with("Timeout error")) << world.allErrors();
    }
}

TEST(Replay, TheHostThatMadeTheLogPlaysItToItsEnd) {
    for (const char* const device : {"VT-B128", "VT-A60"}) {
        SCOPED_TRACE(device);
        const std::string log = record(device);
        ReplayWorld host(device, log);
        runAuto();
        CLOCK_Sleep(3000); // another number of polls
        runVerify();
        TARGET_StartApplication();
        EXPECT_EQ(host.replay->difference(), "");
        EXPECT_EQ(host.replay->missing(), "");
        EXPECT_EQ(host.world.allErrors(), "");
    }
}

// What is changed in the log is where the host differs from it; a log that is cut off ends too
// early.
TEST(Replay, TheFirstDifferenceIsNamed) {
    // What is changed into what; what the difference says of the log and of the host, and how many
    // lines on from the changed one.
    const std::tuple<const char*, std::string, std::string, std::string, std::string, int> cases[] =
        {
            {"VT-A60", "Rate 9600 Bd", "Rate 19200 Bd", "a rate of 19200 Bd", "a rate of 9600 Bd",
             1},
            {"VT-B128", "RTS off", "RTS on", "DTR off", "RTS off", 2}, // nothing changes RTS
            {"VT-B128", "WRITE 86 ", "WRITE 5A ", "WRITE 5A", "86 (byte 1)", 1},
            {"VT-B128", "D7 0A 27 F3 ", "D7 0A 27 F4 ", "WRITE ... 93 8A EF 43 67 D7 0A 27 F4 0B",
             "... 93 8A EF 43 67 D7 0A 27 F3 (byte 11)", 1},
            {"VT-B128", "WRITE 03 11 00 ", "WRITE 03 12 00 ", "WRITE 03 12 00 00 00 80 00",
             "03 11 (byte 2)", 1},
            {"VT-B128", "            DTR on\r\n", "    1 WRITE 00 \r\n            DTR on\r\n",
             "WRITE 00", "DTR on", 1},
            {"VT-B128", "            Closing COM1\r\n", "    2 WRITE 41 42 \r\n", "WRITE 41 42",
             "nothing", 1},
            {"VT-B128", "DTR off\r\n", "", "the end of the log", "86", 0},
        };
    for (const auto& [device, from, to, wanted, came, linesOn] : cases) {
        SCOPED_TRACE(formatText("%s -> %s", from.c_str(), to.c_str()));
        std::string log = record(device);
        const size_t at = log.find(from);
        ASSERT_NE(at, std::string::npos);
        const int line = static_cast<int>(countOf("\n", log.substr(0, at))) + linesOn;
        if (to.empty()) {
            log.resize(at + from.size());
        } else {
            log.replace(at, from.size(), to);
        }
        ReplayWorld host(device, log);
        runAuto();
        runVerify();
        TARGET_StartApplication();
        const std::string told = host.replay->difference() + host.replay->missing();
        EXPECT_TRUE(told.starts_with(to.empty() ? wanted : formatText("line %d (", line))) << told;
        EXPECT_NE(told.find(wanted), std::string::npos) << told;
        EXPECT_NE(told.find("came: " + came), std::string::npos) << told;
    }
}

// What the chip sends by itself keeps its distance, answers do not wait.
TEST(Replay, KeepsTheTimesOfWhatIsNoAnswer) {
    std::string error;
    Replay replay(REPLAY_ParseLog("0:00:01:000    1 WRITE 86 \r\n"
                                  "0:00:03:000    1 READ  86 \r\n"
                                  "0:00:03:050    1 READ  87 \r\n"
                                  "0:00:04:000    2 READ  68 69 \r\n"
                                  "0:00:05:000    1 WRITE 20 \r\n",
                                  error),
                  true);
    replay.take({HostEvent::Kind::data, {0x86}, 0}, Moment{1'000'000});
    EXPECT_EQ(replay.takeOutput(Moment{1'000'000}), (std::vector<uint8_t>{0x86, 0x87}));
    EXPECT_EQ(replay.nextOutput(), Moment{1'950'000});
    replay.take({HostEvent::Kind::data, {0x20}, 0}, Moment{1'900'000});
    EXPECT_EQ(replay.difference(),
              "line 4 (0:00:04:000)\n  log:  READ 68 69\n  came: 20 before that "
              "was sent\n");
    const std::pair<const char*, const char*> bad[] = {
        {"0:00:01:000    2 WRITE 86 \r\n", "line 1 is no entry of a communication log"},
        {"hello\r\n0:00:01:000    1 WRITE 8x \r\n", "line 2 is no entry of a communication log"},
        {"hello\r\n0:00:01:000            Closing COM1\r\n",
         "no communication log, or an empty one"},
    };
    for (const auto& [text, fault] : bad) {
        EXPECT_TRUE(REPLAY_ParseLog(text, error).empty());
        EXPECT_EQ(error, fault);
    }
}
