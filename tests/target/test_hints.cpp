// What the user is told to do about a failure, and that what he did himself is said once.

#include "bootrom/connect.h"
#include "notice/progress.h"
#include "notice/status.h"
#include "target_world.h"

namespace {

void eraseWithBox() {
    TARGET_EraseChip(true);
}

void programAll() {
    TARGET_Program(HEXDATA_GetFirstAddr(), HEXDATA_GetLastAddr());
}

void connectOnly() {
    TARGET_Connect();
}

std::string allHints(const World& world) {
    std::string all;
    for (const std::string& hint : world.screen.copyOf(world.screen.hints)) {
        all += hint;
    }
    return all;
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

TEST(Hints, SayWhatCame) {
    const std::string refused =
        "12 bytes at 1FFF4 - 1FFFF; that of the loaded file (1FFF4 - 1FFFF) was offered last, and "
        "by its checksum the chip is not blank";
    const struct {
        const char* device;
        const char* fault;
        Hint hint;
        void (*command)() = connectOnly;
    } cases[] = {
        {"VT-B128",
         "no-reply@match",
         {Cause::noAnswer, "86 was sent 10 times; the reset was DTR on, RTS on, DTR off"}},
        {"VT-A32",
         "wrong-reply@match",
         {Cause::otherAnswer, "5A was sent 10 times, what came is 0F"}},
        {"VT-B128", "slow@match,value=190", {Cause::lateAnswer, "94 ms after 10 tries"}},
        {"VT-A32", "no-reply@sum", {Cause::fellSilent, "0 of 1 bytes of an answer in 1000 ms"}},
        {"VT-B128", "wrong-reply@ram", {Cause::wrongAnswer, "45 where 10 belongs"}},
        {"VT-B128", "refuse-password", {Cause::passwordRefused, refused}},
        {"VT-A96",
         "no-reply@data",
         {Cause::passwordRefused, "8 bytes at 27F01 - 27F08; yours of 12 bytes was offered last, "
                                  "and by its checksum the chip is not blank"}},
        {"VT-B256", "wrong-product", {Cause::productDiffers, "none of the devices that there are"}},
        {"VT-B128",
         "no-reply@identify",
         {Cause::loaderSilent, "vt-b.s, 618 bytes sent"},
         runVerify},
        {"VT-B128", "no-reply@read", {Cause::loaderLost, "command 03, 5000 ms"}, runVerify},
        {"VT-B128",
         "error-reply@erase-block,value=1",
         {Cause::blockRefused, "block 0 (0 - 7FFF)"},
         TARGET_EraseBlocks},
        {"VT-B128",
         "error-reply@program,address=11,value=2",
         {Cause::pageRefused, "the page at 0 of block 0 (0 - 7FFF); address 11 holds 07"},
         programAll},
        {"VT-B128",
         "stuck-bits,address=14,value=FF",
         {Cause::contentsDiffer, "block 0 (0 - 7FFF)"},
         runVerify},
        {"VT-B128",
         "wrong-reply@cleared",
         {Cause::wrongAnswer, "1A where 4F belongs"},
         eraseWithBox},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.device) + " " + c.fault);
        WorldOptions options{.device = c.device, .chip = {}};
        std::string wrong;
        EXPECT_TRUE(CHIP_ParseFault(c.fault, options.chip.faults.emplace_back(), wrong)) << wrong;
        options.chip.password = std::vector<uint8_t>(12, 0xAA);
        TargetWorld world(options);
        SIMPORT_WithChip(world.line, [](Chip& chip) {
            CHIP_PutFlash(chip, DEVICE_GetFlashStart() + 0x11, std::vector<uint8_t>{0x0F});
        });
        c.command();
        EXPECT_EQ(allHints(world), HINT_Text(c.hint));
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
    EXPECT_EQ(allHints(world), HINT_Text({Cause::productDiffers, "VT-B256"}));
}

TEST(Hints, NameTheImageThatCannotBeRead) {
    TargetWorld world({.device = "VT-B128", .chip = {}});
    std::filesystem::remove(world.folder() / "RamImage");
    connectOnly();
    EXPECT_EQ(allHints(world),
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
    const struct {
        const char* name;
        const char* device;
        const char* port;
        void (*later)();
        void (*command)();
        std::string errors;
        Hint hint = {};
    } cases[] = {
        {"Cancel of the reset question", "VT-B128", "", nullptr, connectOnly, canceled},
        {"the same in a download", "VT-B128", "", nullptr, download, canceled},
        {"the same in an erase", "VT-B128", "", nullptr, eraseWithBox, canceled},
        {"the same in a command", "VT-A96", "", nullptr, flashStatus, canceled},
        {"Ctrl-C in a connect", "VT-A32", "faulty://tx-cut=0@", RUN_Interrupt, connectOnly, ""},
        {"in a download", "VT-B128", "faulty://tx-cut=0@", RUN_Interrupt, download, ""},
        {"in an erase", "VT-B128", "faulty://tx-cut=2@", RUN_Interrupt, eraseWithBox, ""},
        {"Cancel in an erase",
         "VT-B128",
         "faulty://seed=1@",
         TARGET_Cancel,
         eraseWithBox,
         canceled,
         {Cause::eraseRunsOn, "the chip is erased"}},
        {"port lost at the echo",
         "VT-A32",
         "faulty://rx-hangup=0@",
         nullptr,
         connectOnly,
         "Matching data failed (" + gone + ")",
         {Cause::portGone, gone}},
        {"port lost later",
         "VT-A32",
         "faulty://rx-hangup=2@",
         nullptr,
         connectOnly,
         "Could not download RAM image (" + gone + ")",
         {Cause::portGone, gone}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        WorldOptions options{.device = c.device, .chip = {}};
        options.port = std::string(c.port) + options.port;
        options.chip.eraseChipUs = 3'000'000;
        TargetWorld world(options);
        world.screen.answer = ANSWER_CANCEL;
        DEVPROPS_SetResetByPC(*c.port != '\0');
        {
            const Later later(c.later != nullptr ? c.later : [] {});
            c.command();
        }
        std::string told = world.allErrors();
        std::string hints = allHints(world);
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
    SIMPORT_WithChip(world.line, [](Chip& chip) {
        CHIP_SetFaults(chip, {{FaultKind::noReply, ChipStep::identify}});
    });
    CLOCK_Sleep(3000);
    EXPECT_EQ(shown(), "Disconnected"); // it was, and has fallen silent
    EXPECT_TRUE(allHints(world).starts_with("The loader ran")) << allHints(world);
}
