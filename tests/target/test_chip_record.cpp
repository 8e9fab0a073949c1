// What the commands leave in the record of the chip.
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
    SIMPORT_WithChip(world.line,
                     [](Chip& chip) { CHIP_PutFlash(chip, 0x80, std::vector{uint8_t{0}}); });
    runVerify();
    EXPECT_NE(recordText().find("11-7F verified;80-80 differs;81-"), std::string::npos);
    for (int block = 1; block < 4; ++block) {
        DEVPROPS_SelectBlock(block, false);
    }
    TARGET_EraseBlocks();
    expectRecord("Erase Blocks", "0-1FEFF erased;1FF00-1FF37 written;1FF38-1FFFF verified;");
    SIMPORT_Unplug(world.line);
    TARGET_EraseBlocks();
    expectRecord("a lost port", "");
}
