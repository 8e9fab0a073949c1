#include "link/failure.h"
#include "notice/log_text.h"
#include "persist/ini.h"
#include "platform/files.h"
#include "serial/sio.h"
#include "serial/sio_line.h"
#include "serial/sio_log.h"
#include "sim/virtual_clock.h"
#include "support/hex_bytes.h"
#include "support/reports.h"
#include "support/seed.h"
#include "support/temp_folder.h"
#include "support/test_line.h"

#include <gtest/gtest.h>

namespace {

using Texts = Reports::Texts;

// The serial module in virtual time with COM1 and COM2 on lines "a" and "b".
struct World {
    TempFolder folder;
    VirtualClock clock;
    TestLines lines{{"a", "b"}};
    Reports screen;

    explicit World(uint64_t seed = testSeed()) : clock(seed) {
        FILES_SetProgramPath(folder / "calvorin");
        writeFile(folder / "calvorin.ini", "[Settings PORTS]\r\nCOM10 = \"test://b\"\r\n"
                                           "COM1 = \"test://a\"\r\nCOM2 = \"test://b\"\r\n"
                                           "COM3 = \"test://missing\"\r\n"
                                           "COM12 = \"/nowhere/tty\"\r\n");
        INI_Load();
        RUN_Reset();
        SIO_Init(0, 0, 0, 8, 0, 0);
    }
    ~World() {
        SIO_Exit();
        ERROR_Exit();
        FILES_SetProgramPath({});
    }
    Texts log() { return screen.takeAll(screen.log); }
    Texts errors() { return screen.takeAll(screen.errors); }
    void openA() {
        SIO_SetConfig({1, 38400, 0});
        log();
    }
};

std::string readText(size_t count, uint32_t timeoutMs) {
    std::vector<uint8_t> bytes(count);
    bytes.resize(SIO_Read(bytes.data(), count, timeoutMs));
    return {bytes.begin(), bytes.end()};
}

bool writeText(std::string_view text) {
    return SIO_Write({reinterpret_cast<const uint8_t*>(text.data()), text.size()});
}

TEST(Sio, OpensClosesAndReopensWithItsLogLines) {
    World world;
    SIO_SetConfig({1, 38400, 0});
    EXPECT_EQ(world.log(),
              (Texts{"COM1 is test://a", "COM1 opened with 38400 Baud", "Communication started"}));
    EXPECT_EQ(world.lines["a"].calls, Texts{"rate 38400"});
    SIO_SetDevice("test://missing");
    SIO_SetPort(2); // in its place
    SIO_SetBaudrate(9600);
    EXPECT_TRUE(world.log().empty());
    EXPECT_TRUE(SIO_Restart());
    EXPECT_EQ(world.log(), (Texts{"Closing COM1", "COM2 is test://b", "COM2 opened with 9600 Baud",
                                  "Communication started"}));
    EXPECT_FALSE(world.lines["a"].isOpen);
    SIO_SetPort(0);
    EXPECT_TRUE(SIO_Restart());
    SIO_CloseAll();
    EXPECT_EQ(world.log(), Texts{"Closing COM2"});
    EXPECT_FALSE(SIO_IsOpen());
}

TEST(Sio, ReportsAPortThatCannotBeOpened) {
    World world;
    const std::string missing = "No such file or directory";
    const std::tuple<uint32_t, std::string, std::string, const char*> cases[] = {
        {3, "COM3 (test://missing): No such line", "COM3 is test://missing: No such line", ""},
        {12, "COM12 (/nowhere/tty): " + missing, "COM12 is /nowhere/tty: " + missing, "Ports that"},
        {21, "COM21 is not one of COM1 to COM20", "COM21 is not one of COM1 to COM20",
         "Ports that"},
    };
    for (const auto& [port, reason, behindError, hint] : cases) {
        SIO_SetPort(port);
        EXPECT_FALSE(SIO_Restart());
        EXPECT_EQ(world.log(), Texts{reason});
        EXPECT_EQ(world.errors(), (Texts{"SIO::_InitSIO: Port not available (" + behindError + ")",
                                         "SIO::_StartComm: Could not open COM-Port"}));
        EXPECT_EQ(world.screen.takeAll(world.screen.hints).front().substr(0, 10), hint);
        EXPECT_EQ(RUN_GetExitCode(), 1);
        EXPECT_EQ(SIO_GetOpenFailure(), reason);
        const Moment start = CLOCK_Now();
        EXPECT_EQ(readText(1, 700), "");
        EXPECT_FALSE(SIO_WaitReadable([] { return false; }, CLOCK_After(50)));
        EXPECT_EQ(CLOCK_Now().us - start.us, 750'000);
        EXPECT_FALSE(writeText("x") || SIO_SetLines(SETDTR));
        SIO_TolerateOpenFailure(true);
        EXPECT_FALSE(SIO_Restart());
        EXPECT_TRUE(world.log().empty() && world.errors().empty());
        EXPECT_EQ(SIO_GetOpenFailure(), reason);
        SIO_TolerateOpenFailure(false);
    }
    world.openA();
    EXPECT_EQ(SIO_GetOpenFailure(), "");
}

TEST(Sio, FindsTheDeviceOfAPort) {
    World world;
    const std::pair<uint32_t, std::string> cases[] = {
        {10, "test://b"}, {4, "/dev/ttyS3"}, {5, "/dev/ttyUSB0"}, {20, "/dev/ttyACM7"}};
    for (const auto& [port, device] : cases) {
        EXPECT_EQ(SIO_DeviceOfPort(port), device);
    }
}

TEST(Sio, ChangesTheRateAndTheLines) {
    World world;
    EXPECT_EQ(SIO_ChangeBaudrate(9600), 0U);
    EXPECT_EQ(world.errors(),
              Texts{"SIO::SIO_ChangeBaudrate: GetCommState failed (no port is open)"});
    world.openA();
    EXPECT_EQ(SIO_ChangeBaudrate(9600), 38400U);
    EXPECT_EQ(SIO_GetBaudrate(), 38400U);
    EXPECT_TRUE(SIO_SetLines(SETDTR) && SIO_SetLines(CLRRTS) && SIO_SetLines(CLRDTR) &&
                SIO_SetLines(SETRTS));
    EXPECT_EQ(world.lines["a"].calls,
              (Texts{"rate 38400", "rate 9600", "DTR on", "RTS off", "DTR off", "RTS on"}));
    world.lines["a"].refuseCalls = true;
    EXPECT_EQ(SIO_ChangeBaudrate(1), 0U);
    EXPECT_FALSE(SIO_SetLines(SETDTR));
    EXPECT_EQ(world.log(), Texts(2, "COM1 (test://a): that is refused"));
    EXPECT_EQ(
        world.errors(),
        Texts{"SIO::SIO_ChangeBaudrate: SetCommState failed (COM1 is test://a: that is refused)"});
}

TEST(Sio, ReadsWhatArrivesInTime) {
    World world;
    world.openA();
    world.lines["a"].send("abc");
    EXPECT_EQ(readText(2, 0), "ab");
    const Moment start = CLOCK_Now();
    EXPECT_EQ(readText(2, 30), "c");
    EXPECT_EQ(CLOCK_Now().us - start.us, 30'000);
    uint8_t byte = 0;
    world.lines["a"].send("d");
    EXPECT_EQ(SIO_Read(&byte, 1, 50, [] { return true; }), 0U);
    int looks = 0;
    EXPECT_FALSE(SIO_WaitReadable([&looks] { return ++looks > 1; }));
    EXPECT_TRUE(SIO_WaitReadable([] { return false; }));
    EXPECT_EQ(readText(1, 0), "d");
}

TEST(Sio, HandsAFrameOverInOneWrite) {
    World world;
    world.openA();
    TestLine& line = world.lines["a"];
    {
        const SioFrame outer;
        EXPECT_TRUE(SIO_WriteByte('a'));
        {
            const SioFrame inner;
            EXPECT_TRUE(writeText("bc"));
        }
        EXPECT_TRUE(line.fromProgram.empty());
        readText(1, 1); // whoever awaits a reply has sent the question
        EXPECT_EQ(line.fromProgram, Texts{"abc"});
        EXPECT_TRUE(writeText("d"));
        SIO_ChangeBaudrate(9600);
        EXPECT_EQ(line.fromProgram, (Texts{"abc", "d"}));
        writeText("e");
        line.refuseWrites = true;
    }
    const SioFrame next;
    EXPECT_FALSE(writeText("f"));
    line.refuseWrites = false;
    SIO_SetLines(SETRTS);
    EXPECT_EQ(line.fromProgram, (Texts{"abc", "d", "e", "f"}));
    EXPECT_TRUE(writeText("g"));
}

TEST(Sio, ALostPortIsNamedOnceAndCanBeReopened) {
    World world;
    world.openA();
    EXPECT_TRUE(SIO_EnsureOpen());
    EXPECT_EQ(world.lines["a"].opened, 1);
    world.lines["a"].lose("the device has gone");
    const Moment start = CLOCK_Now();
    EXPECT_EQ(readText(1, 500), "");
    EXPECT_EQ(readText(1, 500), "");
    EXPECT_EQ(CLOCK_Now().us - start.us, 1'000'000);
    EXPECT_FALSE(writeText("x"));
    EXPECT_TRUE(SIO_IsLost());
    EXPECT_EQ(world.log(), Texts{"COM1 lost: the device has gone (test://a)"});
    EXPECT_EQ(failureText({TERR_TIMEOUT}), "Timeout error (COM1 is test://a: the device has gone)");
    EXPECT_TRUE(SIO_EnsureOpen());
    EXPECT_EQ(world.log(), (Texts{"Closing COM1", "COM1 is test://a", "COM1 opened with 38400 Baud",
                                  "Communication started"}));
    EXPECT_FALSE(SIO_IsLost());
}

// The worker watches the port, or reads from it, while it is closed, lost and opened again.
TEST(Sio, TheWorkerFollowsAPortThatIsReopened) {
    for (uint64_t seed = testSeed(); seed < testSeed() + 20; ++seed) {
        World world(seed);
        std::atomic<bool> stop{false};
        std::string heard;
        const ClockThreadPtr worker = CLOCK_StartThread([&] {
            while (SIO_WaitReadable([&stop] { return stop.load(); })) {
                heard += readText(2, 10);
            }
        });
        for (const uint32_t port : {1U, 2U, 1U}) {
            CLOCK_Sleep(5);
            SIO_SetConfig({port, 9600, 0});
            TestLine& line = world.lines[port == 1 ? "a" : "b"];
            line.send("x");
            CLOCK_Sleep(port == 2 ? 5 : 20); // the second is closed in the middle of a read
        }
        world.lines["a"].lose("unplugged");
        CLOCK_Sleep(1);
        EXPECT_TRUE(SIO_IsLost()) << "seed " << seed;
        SIO_EnsureOpen();
        world.lines["a"].send("y");
        CLOCK_Sleep(20);
        stop = true;
        CLOCK_Notify();
        CLOCK_JoinThread(worker);
        EXPECT_EQ(heard, "xxxy") << "seed " << seed;
        EXPECT_EQ(world.lines["a"].closedInUse + world.lines["b"].closedInUse, 0);
    }
}

TEST(SioLog, RecordsTheConversation) {
    World world;
    SIO_SetPort(1);
    SIO_SetBaudrate(9600);
    const std::string header = LOG_HeaderBlock();
    SIO_SetLogging(1);
    EXPECT_EQ(world.log(), Texts{"SIO-Logging started"});
    CLOCK_Sleep(36'000'000 + 3'723'004); // the hour is one digit
    SIO_Restart();
    writeText("\x01\xAB");
    world.lines["a"].send(std::string(1200, '\x5A'));
    CLOCK_Sleep(7);
    readText(1200, 10);
    readText(1, 10);
    world.lines["a"].refuseCalls = true;
    SIO_ChangeBaudrate(1);
    SIO_SetLines(CLRRTS);
    SIO_CloseAll();
    writeText("z");
    const Moment start = CLOCK_Now();
    SIO_SetLogging(0);
    EXPECT_EQ(CLOCK_Now().us - start.us, 100'000);
    EXPECT_EQ(world.log().back(), "SIO-Logging stopped");

    const std::string rule(56, '-');
    const std::string text = readFile(world.folder / "calvorin.sio");
    EXPECT_TRUE(text.starts_with("calvorin communication protocoll file, compiled at "));
    const std::string title = text.substr(0, text.find("\r\n"));
    const size_t body = text.find(rule);
    ASSERT_NE(body, std::string::npos);
    EXPECT_TRUE(title.ends_with(LOG_BuildTime()));
    EXPECT_EQ(text.substr(title.size(), body - title.size()), "\r\n" + header);
    EXPECT_EQ(text.substr(body), rule + "\r\nH:MM:SS: MS  Len Dir   Data/Event\r\n" + rule +
                                     "\r\n"
                                     "1:02:03:004            COM1 opened with 9600 Baud\r\n"
                                     "1:02:03:004    2 WRITE 01 AB \r\n"
                                     "1:02:03:011 1200 READ  " +
                                     repeat("5A ", 1200) +
                                     "\r\n"
                                     "1:02:03:021            Rate 1 Bd, DTR off, RTS on\r\n"
                                     "1:02:03:021            Rate not changed\r\n"
                                     "1:02:03:021            RTS off\r\n"
                                     "1:02:03:021            RTS off failed\r\n"
                                     "1:02:03:021            Closing COM1\r\n"
                                     "1:02:03:021    1 WRITE 7A \r\n" +
                                     rule + "\r\n");
    SIO_SetLogging(1);
    EXPECT_LT(readFile(world.folder / "calvorin.sio").size(), 500U);
}

TEST(SioLog, ATranscriptIsALogElsewhere) {
    World world;
    world.openA();
    EXPECT_FALSE(SIO_StartTranscript(world.folder / "no" / "transcript").ok());
    SIO_EndTranscript();
    EXPECT_TRUE(SIO_StartTranscript(world.folder / "transcript").ok());
    writeText("ab");
    SIO_EndTranscript();
    EXPECT_NE(readFile(world.folder / "transcript").find("2 WRITE 61 62"), std::string::npos);
}

TEST(SioLog, AFileThatCannotBeWrittenIsToldOnceAndFailsNothing) {
    World world;
    const std::string path = world.folder / "calvorin.sio";
    const std::pair<std::string, std::string> cases[] = {{"/proc", "Is a directory"},
                                                         {"/dev/full", "No space left on device"}};
    for (const auto& [target, reason] : cases) {
        std::filesystem::remove(path);
        std::filesystem::create_symlink(target, path);
        SIO_Init(1, 9600, 1, 8, 0, 0);
        writeText("ab");
        SIO_Exit();
        writeText("c");
        EXPECT_EQ(world.errors(), Texts{});
        std::string unwritable = "The communication log cannot be written (";
        unwritable.append(path).append(": ").append(reason).append("); the run goes on");
        EXPECT_EQ(world.log(),
                  (Texts{"SIO-Logging started", unwritable,
                         "3 entries of the communication log were lost", "SIO-Logging stopped"}));
    }
}

} // namespace
