// What the commands leave in the record of the chip.
#include "bootrom/connect.h"
#include "link/chip_record.h"
#include "platform/format.h"
#include "shell/summary.h"
#include "target_world.h"

namespace {

// One text a stretch, neighbours that only differ in their bounds as they are.
std::string recordText() {
    constexpr const char* kMarks[] = {"none",     "erased",  "written",
                                      "verified", "differs", "unknown"};
    std::string text;
    for (const ChipStretch& stretch : CHIPRECORD_Get()) {
        text += formatText("%X-%X %s%s;", stretch.range.start, stretch.range.last(),
                           kMarks[static_cast<size_t>(stretch.facts.mark)],
                           stretch.facts.isProtected ? " protected" : "");
    }
    return text;
}

} // namespace

TEST(ChipRecord, TellsHowFarABlankCheckCame) {
    const std::tuple<const char*, uint32_t, const char*> cases[] = {
        {"VT-B128", 0x8004, "0-7FFF erased;"},   // the loader's own, block by block
        {"VT-B64S", 0xC004, "8000-BFFF erased;"} // by reading
    };
    for (const auto& [device, wrong, text] : cases) {
        TargetWorld world({.device = device, .chip = {}});
        CONFIGURATION_Changed();
        EXPECT_EQ(TARGET_Connect(), 1);
        world.putFlash(wrong, {0});
        TARGET_BlankCheckChip();
        EXPECT_EQ(recordText(), text) << device;
    }
}

TEST(ChipRecord, FollowsTheCommands) {
    TargetWorld world({.device = "VT-B128", .chip = {}});
    CONFIGURATION_Changed();
    const auto expectRecord = [](const char* command, const std::string& text) {
        EXPECT_EQ(recordText(), text) << command;
    };
    TARGET_BlankCheckBlocks();
    expectRecord("blank check", "0-1FFFF erased;");
    runAuto();
    expectRecord("Auto", "0-17F written;180-1FEFF erased;1FF00-1FFFF written;");
    runVerify();
    const std::string verified = "0-10 written;11-13C verified;13D-17F written;180-1FEFF erased;"
                                 "1FF00-1FF37 written;1FF38-1FFFF verified;";
    expectRecord("Verify", verified);
    world.putFlash(0x80, {0});
    runVerify();
    EXPECT_NE(recordText().find("11-7F verified;80-80 differs;81-"), std::string::npos);
    for (int block = 1; block < 4; ++block) {
        DEVPROPS_SelectBlock(block, false);
    }
    TARGET_EraseBlocks();
    expectRecord("Erase Blocks", "0-1FEFF erased;1FF00-1FF37 written;1FF38-1FFFF verified;");
    TARGET_Disconnect();
    TARGET_EraseChip(true);
    expectRecord("Erase Chip by the boot ROM", "0-1FFFF erased;");
    TARGET_Disconnect(); // the boot ROM awaits no more
    DEVPROPS_SetResetByPC(false);
    world.screen.answer = ANSWER_CANCEL;
    EXPECT_EQ(TARGET_Connect(), 0);
    expectRecord("a Cancel before anything was asked", "0-1FFFF erased;");
    DEVPROPS_SetResetByPC(true);
    world.setFaults({{FaultKind::noReply, ChipStep::match}});
    EXPECT_EQ(TARGET_Connect(), 0);
    expectRecord("no chip there", "");
    world.setFaults({});
    TARGET_EraseBlocks();
    expectRecord("Erase Blocks", "0-7FFF erased;");
    SIMPORT_Unplug(world.line);
    TARGET_EraseBlocks();
    expectRecord("a lost port", "");
}
