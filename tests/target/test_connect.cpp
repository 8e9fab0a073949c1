// Reaching a chip and leaving it alone: passwords, keys, slow and far lines, the hand-over of the
// port.

#include "bootrom/connect.h"
#include "serial/idle_rate.h"
#include "serial/sio_line.h"
#include "target_world.h"

TEST(Connect, ARefusedPasswordIsFollowedByTheOthersThatMayFit) {
    const std::vector<uint8_t> right = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
    const std::vector<uint8_t> wrong(12, 0x44);
    const std::string tried = "Trying the password in the loaded file (1FFF4 - 1FFFF)";
    const struct {
        const char* name;
        bool looksBlank;
        std::vector<uint8_t> users;
        std::vector<uint8_t> inFile;
        int connected;
        bool triesFile;
    } cases[] = {
        {"checksum of a blank chip", true, right, {}, 1, false},
        {"none given", false, {}, right, 1, true},
        {"the user's is refused", false, wrong, right, 1, true},
        {"both are refused", false, wrong, std::vector<uint8_t>(12, 0x55), 0, true},
        {"the file holds a part", false, wrong, {1, 2, 3}, 0, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        ChipOptions options;
        options.password = right;
        TargetWorld world({.device = "VT-B128", .chip = options});
        // 257 zeros and one FE less than all FF: the same sum of 16 bits.
        std::vector<uint8_t> flash(258, 0);
        flash.back() = c.looksBlank ? 0xFE : 0x10;
        world.putFlash(0x100, flash);
        PASSWORD_SetBytes(c.users);
        HEXDATA_Clear();
        HEXDATA_AddData(0x1FFF4, c.inFile);
        EXPECT_EQ(TARGET_Connect(), c.connected);
        EXPECT_EQ(world.hasLogged(tried), c.triesFile);
        EXPECT_EQ(PASSWORD_GetBytes(), c.users);
        EXPECT_EQ(world.violations(), "");
    }
}

// With another file loaded and no password given, a chip takes what the last file gave it.
TEST(Connect, TheProgrammedPasswordIsKnown) {
    TargetWorld world({.device = "VT-B128", .chip = {}});
    runAuto();
    TARGET_Disconnect();
    HEXDATA_Clear();
    PASSWORD_SetBytes({});
    EXPECT_EQ(TARGET_Connect(), 1);
    EXPECT_EQ(world.allErrors() + world.violations(), "");
}

// To a chip in its boot ROM every byte is a command; only who answers by itself is not in it.
TEST(Connect, KeysDoNotReachABootRom) {
    WorldOptions options;
    options.chip.password = std::vector<uint8_t>(12, 0x11);
    options.chip.applicationText = "hello";
    TargetWorld world(options);
    world.putFlash(0, {1});
    PASSWORD_SetBytes(std::vector<uint8_t>(12, 0x22));
    const auto sent = [&world] { return SIMPORT_BytesToChip(world.line); };
    const auto type = [&] {
        const uint64_t before = sent();
        TARGET_TerminalSend('@');
        TARGET_TerminalSend('0');
        CLOCK_Sleep(50);
        return sent() - before;
    };
    EXPECT_EQ(type(), 2U);
    world.terminal.clear();
    EXPECT_EQ(TARGET_Connect(), 0); // the password is refused
    EXPECT_FALSE(TARGET_TerminalWrite(std::vector<uint8_t>{'@', '0'}));
    const std::string note =
        "\n[not sent: the chip is in its boot ROM until Start Application or a "
        "reset]\n";
    EXPECT_EQ(world.terminal, note);
    EXPECT_EQ(type(), 0U);
    EXPECT_EQ(world.terminal, note) << "once";
    CLOCK_Sleep(3000);
    SIMPORT_WithChip(world.line, [](Chip& chip) { // the user presses reset
        CHIP_SetLines(chip, true, false, CLOCK_Now());
        CHIP_SetLines(chip, false, false, CLOCK_Now());
    });
    CLOCK_Sleep(1000);
    EXPECT_EQ(type(), 2U);
    world.terminal.clear();
    EXPECT_EQ(TARGET_Connect(), 0);
    EXPECT_EQ(type(), 0U);
    EXPECT_EQ(world.terminal, note);
    TARGET_StartApplication();
    EXPECT_EQ(type(), 2U);
    PASSWORD_SetBytes(options.chip.password);
    EXPECT_EQ(TARGET_Connect(), 1);
    TARGET_Disconnect();
    EXPECT_EQ(type(), 2U) << "a loader is no boot ROM";
}

// It is there before the application speaks and gone before the boot ROM is spoken to; beside a
// reset nothing touches the lines.
TEST(Connect, TheTerminalMayHaveARateOfItsOwn) {
    for (const char* const device : {"VT-A32", "VT-B128"}) {
        SCOPED_TRACE(device);
        TargetWorld world({.device = device, .chip = {}});
        EXPECT_EQ(TARGET_Connect(), 1);
        IDLERATE_Set(9600);
        const size_t before = SIMPORT_Calls(world.line).size();
        TARGET_StartApplication();
        IDLERATE_Use();
        EXPECT_EQ(SIO_RateInForce(), 9600U);
        EXPECT_EQ(TERMHISTORY_Since(0).pieces.back().bytes, "9600 Bd");
        std::vector<LineCall> calls = SIMPORT_Calls(world.line);
        EXPECT_EQ(calls.size(), before + 4);
        EXPECT_EQ(calls[before].kind, LineCall::Kind::configure);
        EXPECT_EQ(TARGET_Connect(), 1);
        EXPECT_EQ(SIO_RateInForce(), 38400U);
        TARGET_Disconnect();
        IDLERATE_Set(0);
        IDLERATE_Use();
        EXPECT_EQ(SIO_RateInForce(), 38400U);
        EXPECT_EQ(world.allErrors() + world.violations(), "");
    }
}

// A reply that is on its way when the link is taken neither reaches the terminal nor is read as the
// boot ROM's answer; one that does not come holds nobody up for long.
TEST(Connect, TheLinkIsTakenAtAnyPointOfAnExchange) {
    ChipOptions paced;
    paced.pacing = true;
    for (int64_t us = 0; us < 8000; us += 80) {
        TargetWorld world({.device = "VT-B128", .chip = paced});
        EXPECT_EQ(TARGET_Connect(), 1);
        CLOCK_Wait(CLOCK_AfterUs(us), [] { return false; });
        us % 160 == 0 ? TARGET_DownloadRamImage(FILES_ProgramFolder() + "RamImage/vt-b.s")
                      : TARGET_Disconnect();
        EXPECT_EQ(world.allErrors() + world.terminal, "") << us << " us";
    }
    TargetWorld world({.device = "VT-B128", .chip = paced});
    EXPECT_EQ(TARGET_Connect(), 1);
    world.setFaults({{FaultKind::noReply, ChipStep::identify}});
    CLOCK_Sleep(50);
    const Moment start = CLOCK_Now();
    TARGET_Disconnect();
    EXPECT_LE(CLOCK_Now().us - start.us, 310'000);
    EXPECT_EQ(world.allErrors(), "");
}

// The slowest rate with the largest page; a line that pauses inside of replies, as a busy computer
// and a port server make it pause; a port server that is a second away, where every byte comes that
// late, also those of before the reset.
TEST(Connect, SlowPausingAndFarLinesAreWaitedFor) {
    WorldOptions slow;
    slow.device = "OWN";
    slow.description = "Version = 100\nManufacturer = \"M\"\nDevice = \"OWN\"\nBank = 0,4000\n"
                       "UARTRamcode = \"vt-b.s\", \"TYPE_B\"\nFLASHPageLen = 1024\n"
                       "TimeoutEraseBlock = 5000\nTimeoutGetSUM = 5000\nSprtErase = 1\n"
                       "SkipPasswordCheck = 1\n";
    slow.baudrate = 2400;
    slow.chip.pacing = true;
    WorldOptions pausing;
    pausing.port = "faulty://rx-late=60:450ms,rx-late=61:450ms,rx-late=200:450ms,rx-late=421:450ms,"
                   "rx-late=700:450ms@sim://world";
    WorldOptions far;
    far.chip.applicationText = "running ";
    far.chip.applicationEveryMs = 5;
    WorldOptions farA = far;
    farA.device = "VT-A96";
    for (const WorldOptions& options : {slow, pausing, far, farA}) {
        SCOPED_TRACE(options.device + " " + options.port);
        TargetWorld world(options);
        SIMPORT_SetDelay(world.line, options.chip.applicationEveryMs != 0 ? 1000 : 0);
        CLOCK_Sleep(3000);
        expectAutoAndVerify(world);
    }
}
