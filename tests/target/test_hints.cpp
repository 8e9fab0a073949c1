// What the user is told to do about a failure, and that what he did himself is said once.

#include "bootrom/connect.h"
#include "notice/progress.h"
#include "notice/status.h"
#include "target_world.h"

namespace {

const Hint kNoHint;

void eraseWithBox() {
    TARGET_EraseChip(true);
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
        {"Cancel of the reset question", "VT-B128", "", nullptr, connectOnly, canceled, kNoHint},
        {"the same in a download", "VT-B128", "", nullptr, download, canceled, kNoHint},
        {"the same in an erase", "VT-B128", "", nullptr, eraseWithBox, canceled, kNoHint},
        {"the same in a command", "VT-A96", "", nullptr, flashStatus, canceled, kNoHint},
        {"Ctrl-C in a connect", "VT-A32", "tx-cut=0", RUN_Interrupt, connectOnly, "", kNoHint},
        {"in a download", "VT-B128", "tx-cut=0", RUN_Interrupt, download, "", kNoHint},
        {"in an erase", "VT-B128", "tx-cut=2", RUN_Interrupt, eraseWithBox, "", kNoHint},
        {"Cancel in an erase", "VT-B128", "seed=1", TARGET_Cancel, eraseWithBox, canceled,
         Hint(Cause::eraseRunsOn, "the chip is erased")},
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
