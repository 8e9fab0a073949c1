// Each fault of the chip that has a message: that message alone with the hint what to do, exit code
// 1, no claim of success; and that what the user did himself is said once.

#include "bootrom/connect.h"
#include "notice/progress.h"
#include "notice/status.h"
#include "target_world.h"

namespace {

struct Case {
    std::string fault; // behind the device
    std::string errors;
    Hint hint;
    void (*command)() = [] { TARGET_GetCrc(true); };
};

void eraseChip() {
    TARGET_EraseChip(true);
}

void program() {
    TARGET_Program(HEXDATA_GetFirstAddr(), HEXDATA_GetLastAddr());
}

void blankCheck() {
    TARGET_BlankCheckChip();
}

const Hint kNone;

Hint wrong(const std::string& came, const std::string& belongs) {
    return {Cause::wrongAnswer, came + " where " + belongs + " belongs"};
}

Hint silent(int ms) {
    return {Cause::fellSilent, "0 of 1 bytes of an answer in " + std::to_string(ms) + " ms"};
}

Hint lost(const std::string& command) {
    return {Cause::loaderLost, "command " + command};
}

Hint refused(const std::string& asked, const std::string& offered) {
    return {Cause::passwordRefused,
            asked + "; " + offered + " offered last, and by its checksum the chip is not blank"};
}

// On a chip that is not blank.
void expectMessage(const Case& c) {
    SCOPED_TRACE(c.fault);
    const size_t space = c.fault.find(' ');
    WorldOptions options{.device = c.fault.substr(0, space), .chip = {}, .baudrate = 115200};
    std::string wrong;
    EXPECT_TRUE(
        CHIP_ParseFault(c.fault.substr(space + 1), options.chip.faults.emplace_back(), wrong))
        << wrong;
    options.chip.password = std::vector<uint8_t>(12, 0xAA);
    TargetWorld world(options);
    world.putFlash(DEVICE_GetFlashStart() + 0x11, {0x0F});
    c.command();
    EXPECT_EQ(world.allErrors(), c.errors);
    EXPECT_EQ(world.allHints(), HINT_Text(c.hint));
    EXPECT_EQ(RUN_GetExitCode(), 1);
    EXPECT_FALSE(PROGRESS_IsOpen());
    const std::string asked = Reports::joined(world.questions(), '|');
    EXPECT_EQ(asked.find("successfully"), std::string::npos) << asked;
    EXPECT_FALSE(world.log().back().ends_with("finished")) << world.log().back();
}

void connectOnly() {
    TARGET_Connect();
}

// Runs the function 1500 ms from now, when a connect awaits the chip or an erase has begun.
class Later {
public:
    explicit Later(void (*what)())
        : thread_(CLOCK_StartThread([what] {
              CLOCK_Sleep(1500);
              what();
          })) {}
    ~Later() { CLOCK_JoinThread(thread_); }
    Later(const Later&) = delete;
    Later& operator=(const Later&) = delete;

private:
    ClockThreadPtr thread_;
};

} // namespace

TEST(Messages, ConnectEndsInTheErrorAndItsSummary) {
    const Case cases[] = {
        {"VT-A32 no-reply@match", "Matching data failed",
         Hint{Cause::noAnswer, "5A was sent 10 times; the reset was DTR on, RTS on, DTR off"}},
        {"VT-A32 wrong-reply@match", "Matching data failed",
         Hint{Cause::otherAnswer, "5A was sent 10 times, what came is 0F"}},
        {"VT-B128 slow@match,value=190", "Matching data failed",
         Hint{Cause::lateAnswer, "98 ms after 10 tries"}},
        {"VT-A32 wrong-reply@baudrate", "Setting baudrate failed", wrong("49", "1C")},
        {"VT-A32 no-reply@baudrate", "", silent(30)},
        {"VT-A32 wrong-reply@sum", "SUM command failed", wrong("C5", "90")},
        {"VT-A32 wrong-reply@ram", "Echoback RAM loader command failed", wrong("35", "60")},
        {"VT-A32 no-reply@data", "",
         refused("8 bytes at FFC1 - FFC8", "that of the loaded file (FFC1 - FFC8) was")},
        {"VT-A96 no-reply@data", "", refused("8 bytes at 27F01 - 27F08", "yours of 12 bytes was")},
        {"VT-B128 no-reply@match", "Matching data failed",
         Hint{Cause::noAnswer, "86 was sent 10 times; the reset was DTR on, RTS on, DTR off"}},
        {"VT-B128 wrong-reply@match", "Matching data failed",
         Hint{Cause::otherAnswer, "86 was sent 10 times, what came is D3"}},
        {"VT-B128 wrong-reply@sum", "Get SUM Command failed", wrong("75", "20")},
        {"VT-B128 bad-checksum@sum", "Checksum of checksum failed", wrong("F2", "F1")},
        {"VT-B128 wrong-reply@ram", "Echoback RAM loader command failed", wrong("45", "10")},
        {"VT-B128 refuse-password", "Password checksum failed",
         refused("12 bytes at 1FFF4 - 1FFFF", "that of the loaded file (1FFF4 - 1FFFF) was")},
        {"VT-B128 wrong-reply@header", "Password checksum failed",
         refused("12 bytes at 1FFF4 - 1FFFF", "that of the loaded file (1FFF4 - 1FFFF) was")},
        {"VT-B128 wrong-reply@data", "Data checksum failed", wrong("45", "10")},
    };
    for (Case c : cases) {
        c.errors += c.errors.empty() ? "" : "|";
        c.errors += "Could not download RAM image. Please check password";
        expectMessage(c);
    }
}

TEST(Messages, CommandsEndInTheirError) {
    const std::string timeout = "Timeout error";
    const Case cases[] = {
        {"VT-A60 wrong-reply@rewrite", "Echoback flash memory rewrite command failed",
         wrong("65", "30"), eraseChip},
        {"VT-A60 wrong-reply@cleared", "Clearing flash memory failed", wrong("94", "C1"),
         eraseChip},
        {"VT-A96 wrong-reply@erase", "Echoback flash memory erase command failed",
         wrong("A5", "F0"), eraseChip},
        {"VT-A96 wrong-reply@erased", "", kNone, eraseChip},
        {"VT-B256 wrong-reply@enable", "Echoback erase enable command failed", wrong("01", "54"),
         eraseChip},
        {"VT-B128 wrong-reply@cleared", "Erase operation result failure", wrong("1A", "4F"),
         eraseChip},
        {"VT-B256 wrong-product",
         "The chip is no VT-B256 (product info: expected 56542D42323536, found 57542D42323536)",
         Hint{Cause::productDiffers, "none of the devices that there are"}},
        {"VT-A32 no-reply@sum", "The chip does not send its checksum", silent(1000)},
        {"VT-B128 no-reply@identify", timeout, Hint{Cause::loaderSilent, "vt-b.s, 618 bytes sent"}},
        {"VT-B128 no-reply@read", timeout, lost("03, 5000 ms"), runVerify},
        {"VT-B128 no-reply@crc", timeout, lost("04, 5000 ms")},
        {"VT-B128 bad-checksum@crc", timeout, lost("04, 5000 ms")},
        {"VT-B128 nak@crc", "Not acknowledged", kNone},
        {"VT-B128 error-reply@erase-block,value=1", "Error erasing sector",
         Hint{Cause::blockRefused, "block 0 (0 - 7FFF)"}, TARGET_EraseBlocks},
        {"VT-B128 error-reply@program,address=11,value=2",
         "Error writing on address 11\nContents: 07",
         Hint{Cause::pageRefused, "the page at 0 of block 0 (0 - 7FFF); address 11 holds 07"},
         program},
        {"VT-B128 stuck-bits,address=11,value=FF",
         "Error comparing contents of address 11\nContents: FF (expected 07, found FF; 128 of 128 "
         "bytes in this answer differ)",
         Hint{Cause::contentsDiffer, "block 0 (0 - 7FFF)"}, runVerify},
        {"VT-B128 dead-bits,address=11,value=1", "Target not blank at address 11\nContents: 0E",
         kNone, blankCheck},
        {"VT-B128 die@program#2", timeout, lost("02, 2000 ms"), program},
        {"VT-B128 error-reply@program,value=63",
         "Unknown target error 99 at address 0\nContents: FF",
         Hint{Cause::pageRefused, "the page at 0 of block 0 (0 - 7FFF); address 0 holds FF"},
         program},
    };
    for (const Case& c : cases) {
        expectMessage(c);
    }
}

TEST(Hints, NameTheDeviceThatTheChipIs) {
    TargetWorld world({.device = "VT-B256", .chip = {}});
    std::string other = readFile(builtFolder() / "Device" / "VT-B256.dev");
    for (const auto& [from, to] :
         {std::pair{"\"VT-B256\"", "\"OTHER\""}, std::pair{"56542D42323536", "56542D42323537"}}) {
        ASSERT_NE(other.find(from), std::string::npos) << other;
        other.replace(other.find(from), std::string_view(from).size(), to);
    }
    ASSERT_EQ(_ParseDeviceFile(other, "other.dev"), 0);
    ASSERT_EQ(DEVICE_FindByName("OTHER"), 0);
    connectOnly();
    EXPECT_EQ(world.allHints(), HINT_Text({Cause::productDiffers, "VT-B256"}));
}

TEST(Hints, NameTheImageThatCannotBeRead) {
    TargetWorld world({.device = "VT-B128", .chip = {}});
    std::filesystem::remove(world.folder() / "RamImage");
    connectOnly();
    EXPECT_EQ(world.allHints(),
              HINT_Text({Cause::ramImage, FILES_ProgramFolder() + "RamImage/vt-b.s"}));
}

// One text for what the user did or what became of the port, whatever was under way.
TEST(Hints, AreNotNeededWhereTheUserKnows) {
    const std::string canceled = "Action canceled";
    const std::string gone = "COM1 is faulty:@sim://world: the line was hung up on purpose";
    const auto download = [] {
        TARGET_DownloadRamImage(FILES_ProgramFolder() + "RamImage/vt-b.s");
    };
    const auto flashStatus = [] { TARGET_FlashStatus(); };
    const Hint lost{Cause::portGone, gone};
    const struct {
        const char* name;
        const char* device;
        const char* port;
        void (*later)();
        void (*command)();
        std::string errors;
        Hint hint;
    } cases[] = {
        {"Cancel of the reset question", "VT-B128", "", nullptr, connectOnly, canceled, kNone},
        {"the same in a download", "VT-B128", "", nullptr, download, canceled, kNone},
        {"the same in an erase", "VT-B128", "", nullptr, eraseChip, canceled, kNone},
        {"the same in a command", "VT-A96", "", nullptr, flashStatus, canceled, kNone},
        {"Ctrl-C in a connect", "VT-A32", "tx-cut=0", RUN_Interrupt, connectOnly, "", kNone},
        {"in a download", "VT-B128", "tx-cut=0", RUN_Interrupt, download, "", kNone},
        {"in an erase", "VT-B128", "tx-cut=2", RUN_Interrupt, eraseChip, "", kNone},
        {"Cancel in an erase", "VT-B128", "seed=1", TARGET_Cancel, eraseChip, canceled,
         Hint{Cause::eraseRunsOn, "the chip is erased"}},
        {"port lost at the echo", "VT-A32", "rx-hangup=0", nullptr, connectOnly,
         "Matching data failed (" + gone + ")", lost},
        {"port lost later", "VT-A32", "rx-hangup=2", nullptr, connectOnly,
         "Could not download RAM image (" + gone + ")", lost},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        WorldOptions options{.device = c.device, .chip = {}};
        if (*c.port != '\0') {
            options.port = "faulty://" + std::string(c.port) + "@" + options.port;
        }
        options.chip.eraseChipUs = 3'000'000;
        TargetWorld world(options);
        world.screen.answer = ANSWER_CANCEL;
        DEVPROPS_SetResetByPC(*c.port != '\0');
        {
            const Later later(c.later != nullptr ? c.later : [] {});
            c.command();
        }
        std::string told = world.allErrors();
        std::string hints = world.allHints();
        for (std::string* text : {&told, &hints}) { // whatever faults the port has
            if (const size_t at = text->find("faulty://"); at != std::string::npos) {
                text->replace(at, text->find("@sim") - at, "faulty:");
            }
        }
        EXPECT_EQ(told, c.errors);
        EXPECT_EQ(hints, HINT_Text(c.hint));
        for (const std::string& text : world.questions()) {
            EXPECT_EQ(text, "Target: Please reset target\nand then press enter...");
        }
    }
}

TEST(Hints, ConnectedIsALoaderThatRuns) {
    TargetWorld world({.device = "VT-B128", .chip = {}});
    const auto shown = [] { return STATUS_GetText(STATUS_CONNECTION); };
    TARGET_SetLinkState(LINK_BOOTROM);
    EXPECT_EQ(shown(), "Disconnected");
    TARGET_SetLinkState(LINK_IDLE);
    connectOnly();
    EXPECT_EQ(shown(), "Connected");
    world.setFaults({{FaultKind::noReply, ChipStep::identify}});
    CLOCK_Sleep(3000);
    EXPECT_EQ(shown(), "Disconnected"); // it was, and has fallen silent
    EXPECT_TRUE(world.allHints().starts_with("The loader ran")) << world.allHints();
}
