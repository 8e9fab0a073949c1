// When a file is whole, and the rounds of the desktop that follow, in virtual time.

#include "data/program_file.h"
#include "data/program_format.h"
#include "notice/progress.h"
#include "notice/status.h"
#include "platform/format.h"
#include "shell/command_ids.h"
#include "shell/frame_rules.h"
#include "shell/notifiers.h"
#include "shell/program_files.h"
#include "shell/program_on_change.h"
#include "shell/watched_file.h"
#include "support/world.h"
#include "target/worker.h"

#include <fstream>
#include <functional>
#include <gtest/gtest.h>

namespace {

namespace fs = std::filesystem;

constexpr char kEnd[] = ":00000001FF\n";

// A program of four equal bytes at 0.
std::string programOfByte(uint8_t byte) {
    const auto sum = static_cast<uint8_t>(-(4 + 4 * byte));
    return formatText(":04000000%02X%02X%02X%02X%02X\n", byte, byte, byte, byte, sum) + kEnd;
}

// "=TEXT" is written to the file, "+TEXT" added, "~TEXT" replaces it, "-" takes it away. Every
// state has a time of its own, however fast the test writes.
void happen(const fs::path& path, const std::string& what) {
    static int states = 0;
    if (what == "-") {
        fs::remove(path);
        return;
    }
    const fs::path written = what[0] == '~' ? path.string() + "~" : path.string();
    std::ofstream(written, what[0] == '+' ? std::ios::app : std::ios::trunc) << what.substr(1);
    fs::last_write_time(written, fs::file_time_type::clock::now() + std::chrono::seconds(++states));
    fs::rename(written, path);
}

using Writes = std::vector<std::pair<int64_t, std::string>>; // when, in ms, and what

// What five looks a second tell of a file that was whole before, "MS LOOK" each.
std::string toldOf(const Writes& writes, bool throughLink) {
    const World world({});
    const fs::path path = world.folder() / "app.hex";
    const fs::path link = world.folder() / "link.hex";
    fs::create_symlink(path, link);
    happen(path, "=" + programOfByte(1));
    WatchedFile watched((throughLink ? link : path).string());
    watched.take();
    std::string told;
    auto next = writes.begin();
    for (int now = 0; now < 10'000; now += 200) {
        for (; next != writes.end() && next->first <= now; ++next) {
            happen(path, next->second);
        }
        const FileLook look = watched.look();
        told += look < FileLook::whole     ? ""
                : look == FileLook::whole  ? formatText("%d whole, ", now)
                : look == FileLook::cutOff ? formatText("%d cut off, ", now)
                                           : formatText("%d gone, ", now);
        CLOCK_Sleep(200);
    }
    return told;
}

// A frame without windows over a virtual chip and a program file, which is watched.
struct RoundsWorld : World {
    explicit RoundsWorld(const std::string& device = "VT-B128") : World({.device = device}) {
        NOTIFIERS_Register();
        FRAMERULES_Reset();
        FrontEnd& frontEnd = FRONTEND_Get();
        frontEnd.hasWindows = true;
        frontEnd.showError = [this](WindowHandle, const std::string& text, const std::string&) {
            boxes += text + "|";
        };
        frontEnd.ask = [this](WindowHandle, const std::string& text, const std::string&, unsigned) {
            boxes += text + "|";
            return answer;
        };
        frontEnd.openView = [this](View view) { terminals += view == View::terminal ? 1 : 0; };
        frontEnd.isDialogOpen = [this] { return dialogOpen; };
        TARGET_Init(nullptr, [](uint8_t) {});
        build(1);
        EXPECT_TRUE(PROGRAM_Open(path()));
        FRAMERULES_Run(CMD_TARGET_PROGRAM_ON_CHANGE);
    }

    std::string path() const { return (folder() / "app.hex").string(); }
    void build(uint8_t byte) const { happen(path(), "~" + programOfByte(byte)); }
    // As the frame does it four times a second; what the log says of rounds meanwhile.
    std::string glances(int64_t ms) {
        screen.takeAll(screen.log);
        for (const Moment end = CLOCK_After(ms); CLOCK_Now() < end; CLOCK_Sleep(250)) {
            ONCHANGE_Glance();
            FRAMERULES_Activated();
            while (EVENTS_ProcessOne()) {
            }
        }
        std::string verdicts;
        for (const std::string& said : log()) {
            if (said.starts_with("Passed: ") || said.starts_with("Failed: ")) {
                verdicts += said.substr(0, said.find(", blocks")) + "|";
            }
        }
        return verdicts;
    }
    // What stands at the start of the flash.
    int inChip() {
        int byte = -1;
        SIMPORT_WithChip(line, [&](Chip& looked) { byte = CHIP_GetFlash(looked, 0, 1)[0]; });
        return byte;
    }

    std::string boxes;
    BoxAnswer answer = ANSWER_CANCEL;
    bool dialogOpen = false;
    int terminals = 0;
};

constexpr char kPassed[] = "Passed: VT-B128, TargetAuto, TargetVerify, TargetStartApplication|";

} // namespace

TEST(WatchedFile, IsWholeWhenNothingIsMissingAndNothingMoves) {
    const std::string whole = programOfByte(7); // as long as what was there
    const std::string begun = whole.substr(0, 9);
    const std::string cut = whole.substr(0, whole.size() - 2);
    const struct {
        Writes writes;
        const char* told;
    } cases[] = {
        {{}, ""},
        {{{0, "=" + whole}}, "400 whole, "},
        {{{0, "=" + begun}, {200, "+00"}, {1000, "=" + whole}}, "1400 whole, "},
        {{{0, "="}, {2800, "+" + whole}}, "3200 whole, "},
        {{{0, "~" + whole}, {200, "=" + whole}, {2000, "~" + whole}}, "600 whole, 2400 whole, "},
        {{{0, "-"}, {2800, "~" + whole}}, "3200 whole, "},
        {{{0, "=S1040000AA51\nS9030000FC\r\n\x1A"}}, "400 whole, "},
        {{{0, "=" + cut}}, "3000 cut off, "},
        {{{0, "=S1040000AA51\n"}}, "3000 cut off, "},
        {{{0, "="}, {4000, "~" + whole}}, "3000 cut off, 4400 whole, "},
        {{{0, "-"}, {4000, "~" + whole}}, "3000 gone, 4400 whole, "},
    };
    for (const auto& c : cases) {
        for (const bool throughLink : {false, true}) {
            EXPECT_EQ(toldOf(c.writes, throughLink), c.told) << &c - cases;
        }
    }
}

TEST(ProgramOnChange, RunsARoundAChangeWhateverRunsInTheChip) {
    RoundsWorld world;
    EXPECT_EQ(world.glances(2000), "");
    uint8_t byte = 0x20;
    for (const bool resets : {true, true, false, false}) { // the application runs, or the loader
        DEVPROPS_SetResetByPC(resets);
        world.build(++byte);
        EXPECT_EQ(world.glances(30'000),
                  resets ? kPassed : "Passed: VT-B128, TargetAuto, TargetVerify|");
        EXPECT_EQ(world.inChip(), byte);
    }
    EXPECT_EQ(world.terminals, 4);
    EXPECT_EQ(world.boxes, "") << "one save, no click";
    EXPECT_EQ(world.violations(), "");
    FRAMERULES_Run(CMD_TARGET_PROGRAM_ON_CHANGE);
    world.build(0x55);
    EXPECT_EQ(world.glances(2000), "");
    EXPECT_EQ(world.boxes, "File has changed. Reload?|") << "asked again once it is off";
}

TEST(ProgramOnChange, KnowsThePasswordThatTheLastBuildHasLeft) {
    RoundsWorld world("VT-BE32"); // which asks for it before it can be erased
    for (const int byte : {0x31, 0x32, 0x33}) {
        HEXDATA_Clear();
        HEXDATA_AddData(DEVICE_GetIDAdr(0), std::vector<uint8_t>(12, static_cast<uint8_t>(byte)));
        ASSERT_TRUE(PROGRAMFILE_Save(world.path(), FILETYPE_INTEL));
        EXPECT_TRUE(world.glances(60'000).starts_with("Passed: ")) << byte;
    }
}

TEST(ProgramOnChange, WaitsForWhatIsUnderWayAndTakesTheLastState) {
    RoundsWorld world;
    world.dialogOpen = true;
    world.build(2);
    EXPECT_EQ(world.glances(3000), "");
    world.dialogOpen = false;
    FRONTEND_Get().openView = [&world, loads = 0](View view) mutable {
        if (view == View::hexDump && loads++ == 0) { // read, and about to be programmed
            world.build(3);
        } else if (view == View::terminal && world.terminals++ == 0) {
            world.build(4);
            world.build(5);
        }
    };
    EXPECT_EQ(world.glances(60'000), std::string(kPassed) + kPassed);
    EXPECT_EQ(world.inChip(), 5) << "never what was replaced while it was read";
}

TEST(ProgramOnChange, TellsAFailureOnceAndGoesOn) {
    const struct {
        std::function<void(RoundsWorld&)> spoil;
        const char* notice;
    } cases[] = {
        {[](RoundsWorld& world) { fs::remove(world.path()); }, "File not found ("},
        {[](RoundsWorld& world) { happen(world.path(), "=" + programOfByte(9).substr(0, 19)); },
         " is cut off: the end record that it had before is missing"},
        {[](RoundsWorld& world) { happen(world.path(), "=S1040000AA50\nS9030000FC\n"); },
         "Error in line 1: CheckSum error !"},
        {[](RoundsWorld& world) {
             SIMPORT_WithChip(world.line,
                              [](Chip& chip) { CHIP_SetFaults(chip, {{.kind = FaultKind::die}}); });
             world.build(9);
         },
         "Matching data failed"},
        {[](RoundsWorld& world) {
             FRONTEND_Get().updateMenu = [] {
                 EVENTS_Post(PROGRESS_Cancel);
                 FRONTEND_Get().updateMenu = [] {};
             };
             world.build(9);
         },
         "Action canceled"},
    };
    for (const auto& c : cases) {
        RoundsWorld world;
        c.spoil(world);
        EXPECT_TRUE(world.glances(60'000).starts_with("Failed: "));
        const std::string said = ONCHANGE_Notice().text;
        EXPECT_TRUE(said.starts_with("Programming on change failed: ")) << said;
        EXPECT_NE(said.find(c.notice), std::string::npos) << said << ONCHANGE_Notice().hint;
        EXPECT_EQ(world.glances(60'000), "") << "once";
        EXPECT_EQ(world.boxes, "");
        SIMPORT_WithChip(world.line, [](Chip& chip) { CHIP_SetFaults(chip, {}); });
        world.build(7);
        EXPECT_EQ(world.glances(60'000), kPassed);
        EXPECT_EQ(ONCHANGE_Notice(), Notice{});
        EXPECT_TRUE(STATUS_GetText(STATUS_GENERAL)
                        .starts_with("Programming when app.hex changes, passed at "));
        EXPECT_EQ(world.inChip(), 7);
    }
}

TEST(ProgramOnChange, AsksBeforeChangesAreLostAndEndsWithItsFile) {
    RoundsWorld world;
    ORIGIN_MarkChanged();
    world.build(2);
    EXPECT_EQ(world.glances(10'000), "");
    EXPECT_EQ(world.boxes, "The program has changes that are not saved.\nGo on and lose them?|");
    world.answer = ANSWER_OK;
    ONCHANGE_TryAgain();
    EXPECT_EQ(world.glances(30'000), kPassed);
    writeFile(world.folder() / "other.hex", programOfByte(3));
    PROGRAM_Open((world.folder() / "other.hex").string());
    world.build(4);
    int menus = 0;
    FRONTEND_Get().updateMenu = [&menus] { ++menus; };
    EXPECT_EQ(world.glances(10'000), "");
    EXPECT_FALSE(ONCHANGE_IsOn());
    EXPECT_GT(menus, 0);
    EXPECT_EQ(STATUS_GetText(STATUS_GENERAL), "Ready");
}
