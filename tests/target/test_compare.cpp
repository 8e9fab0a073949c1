// Comparing the image with the chip and with another file.
#include "data/data_rows.h"
#include "platform/format.h"
#include "shell/comparison.h"
#include "shell/edit_operations.h"
#include "shell/front_end.h"
#include "shell/image_origin.h"
#include "shell/summary.h"
#include "target_world.h"

namespace {

// An image of two stretches, 11 - 13C and 1FF38 - 1FFFF, on a chip that holds it.
struct CompareWorld : TargetWorld {
    CompareWorld() : TargetWorld({.device = "VT-B128", .chip = {}}) {
        runAuto();
        screen.questions.clear();
        screen.log.clear();
    }
    // What was said: errors, questions, and of the log what tells of the comparison.
    std::string said() const {
        std::string text = Reports::joined(errors(), '|') + Reports::joined(questions(), '|');
        for (const std::string& entry : log()) {
            const bool tells = entry.starts_with("Compared") || entry == "Comparing failed" ||
                               entry.starts_with("Block ") || entry.starts_with("In no") ||
                               entry.starts_with("Note");
            text += tells ? "\n" + entry : "";
        }
        return text;
    }
};

std::string imageText() {
    std::string text = HEXDUMPVIEW_CopyHex(HEXDUMPVIEW_GetRange()) + ORIGIN_Text();
    for (const AddressRange& area : HEXDATA_GetAreas()) {
        text += formatText(" %X-%X", area.start, area.last());
    }
    return text;
}

} // namespace

TEST(Compare, SaysWhereImageAndChipDiffer) {
    const std::string equal = "Comparing: Image and chip do not differ\nCompared with the chip "
                              "VT-B128 at COM1: no difference";
    const std::string differ = "Image and chip differ: ";
    const std::tuple<const char*, void (*)(CompareWorld&), std::string, const char*> cases[] = {
        {"equal", [](CompareWorld&) {}, equal, ""},
        {"where the image holds nothing", [](CompareWorld& w) { w.putFlash(0x1000, {1}); }, equal,
         ""},
        {"one byte", [](CompareWorld& w) { w.putFlash(0x80, {0}); },
         differ +
             "1 byte differs in 1 place, the first at 80: image 76, chip 00\nCompared with the "
             "chip VT-B128 at COM1: 1 byte differs in 1 place\nBlock 0 (0 - 7FFF): 1 byte "
             "differs",
         "Difference 1 of 1, 80: image 76, chip 00"},
        {"two blocks, one of them blank",
         [](CompareWorld& w) {
             w.putFlash(0x13B, {1, 2, 3});
             w.putFlash(0x18000, std::vector<uint8_t>(0x8000, 0xFF));
         },
         differ +
             "202 bytes differ in 2 places, the first at 13B: image 31, chip 01\nCompared with "
             "the chip VT-B128 at COM1: 202 bytes differ in 2 places\nBlock 0 (0 - 7FFF): 2 "
             "bytes differ\nBlock 3 (18000 - 1FFFF): 200 bytes differ",
         "Difference 1 of 2, 13B - 13C: image 31 32, chip 01 02"},
        {"a block that is not selected",
         [](CompareWorld& w) {
             w.putFlash(0x80, {0});
             DEVPROPS_SelectBlock(0, false);
         },
         "Comparing: Image and chip do not differ\nNote: 300 bytes outside of the selected blocks "
         "not compared\nCompared with the chip VT-B128 at COM1: no difference",
         ""},
        {"no data in the selected blocks",
         [](CompareWorld&) {
             DEVPROPS_SelectBlock(0, false);
             DEVPROPS_SelectBlock(3, false);
         },
         "Nothing to compare: no data lies in the selected blocks", ""},
        {"a lost line, after a comparison",
         [](CompareWorld& w) {
             w.putFlash(0x80, {0});
             COMPARISON_WithChip();
             EXPECT_TRUE(COMPARISON_IsOpen());
             w.screen.errors.clear();
             w.screen.log.clear();
             SIMPORT_Unplug(w.line);
         },
         "Timeout error (COM1 is sim://world: No such device)\nComparing failed", ""},
    };
    for (const auto& [what, prepare, said, note] : cases) {
        SCOPED_TRACE(what);
        CompareWorld world;
        prepare(world);
        RUN_SetExitCode(0);
        const std::string image = imageText();
        COMPARISON_WithChip();
        EXPECT_EQ(world.said(), said);
        EXPECT_EQ(RUN_GetExitCode(), said.starts_with("Comparing") ? 0 : 1);
        EXPECT_EQ(COMPARISON_IsOpen(), note[0] != '\0');
        COMPARISON_Next();
        EXPECT_EQ(COMPARISON_Note(), note);
        EXPECT_EQ(imageText(), image);
        EXPECT_EQ(world.violations(), "");
    }
}

TEST(Compare, GoesThroughDifferencesAndEndsWithTheImage) {
    CompareWorld world;
    world.putFlash(0x20, {1, 2});
    world.putFlash(0x30, {3});
    std::string shown;
    FrontEnd frontEnd;
    frontEnd.revealData = [&shown](const AddressRange& range) {
        shown += formatText("%X-%X ", range.start, range.last());
    };
    FRONTEND_Set(frontEnd);
    COMPARISON_WithChip();
    for (auto* const go : {COMPARISON_Previous, COMPARISON_Next, COMPARISON_Next, COMPARISON_Next,
                           COMPARISON_Previous}) {
        go();
    }
    EXPECT_TRUE(world.screen.hints.back().starts_with("The difference lies in block 0. "));
    EXPECT_EQ(shown, "30-30 20-21 30-30 20-21 30-30 ");
    EXPECT_EQ(COMPARISON_TextAt(0x21) + COMPARISON_TextAt(0x22), "21: image 17, chip 02");
    COMPARISON_Save((world.folder() / "report.txt").string());
    EXPECT_EQ(readFile(world.folder() / "report.txt"),
              "Comparison\nImage: without a name\nOther: the chip VT-B128 at COM1\n"
              "Device: VT-B128\n3 bytes differ in 2 places\nBlock 0 (0 - 7FFF): 3 bytes differ\n\n"
              "20 - 21: image 16 17, chip 01 02\n30: image 26, chip 03\n");
    COMPARISON_Save((world.folder() / "no/report.txt").string());
    EXPECT_EQ(world.errors().size(), 2U);

    SUMMARY_Refresh();
    EXPECT_TRUE(COMPARISON_IsOpen()) << "nothing has changed";
    EDIT_DeleteRange(0x11, 0x11);
    EXPECT_FALSE(COMPARISON_IsOpen());
    COMPARISON_WithChip();
    EXPECT_TRUE(COMPARISON_IsOpen());
    DEVICE_FindByName("VT-B256");
    CONFIGURATION_Changed();
    EXPECT_FALSE(COMPARISON_IsOpen());
}

TEST(Compare, ReadsAFileBesideTheImage) {
    const std::string end = ":00000001FF\n";
    const std::tuple<const char*, std::string, const char*> cases[] = {
        {":020020001617B1\n", "Comparing: 498 bytes differ in 3 places.\nF11 shows the next one.",
         "Difference 1 of 3, 11 - 1F: image 07 08 09 0A 0B 0C 0D 0E ..., "
         "file -- -- -- -- -- -- -- -- ..."},
        {":0100000007F8\n:0100000009F6\n",
         "Overlapping record problem: Areas overlap   ...\nOverwrite existing data and continue ?|"
         "Comparing: 501 bytes differ in 3 places.\nF11 shows the next one.",
         "Difference 1 of 3, 0: image --, file 09"},
        {":zz\n", "Error in line 1: Expected Hex character : 0..9, A..F", ""},
    };
    for (const auto& [text, said, note] : cases) {
        SCOPED_TRACE(text);
        TargetWorld world({.device = "VT-B128", .chip = {}});
        world.screen.answer = ANSWER_OK;
        const std::string image = imageText();
        writeFile(world.folder() / "other.hex", text + end);
        COMPARISON_WithFile((world.folder() / "other.hex").string());
        EXPECT_EQ(Reports::joined(world.errors(), '|') + Reports::joined(world.questions(), '|'),
                  said);
        COMPARISON_Next();
        EXPECT_EQ(COMPARISON_Note(), note);
        EXPECT_EQ(imageText(), image);
        EXPECT_STREQ(HEXDATA_AddData(0x11, std::vector<uint8_t>{1}), nullptr);
        EXPECT_EQ(world.questions().back().substr(0, 11), "Overlapping")
            << "the consent was the file's";
    }
}
