#include "data/program_format.h"
#include "persist/mru.h"
#include "shell/edit_operations.h"
#include "shell/identity.h"
#include "shell/program_files.h"
#include "shell/shell_world.h"

#include <gtest/gtest.h>

TEST(ProgramFiles, AreOfferedAndSavedInTheirFormats) {
    const ShellWorld world;
    ShellWorld::load(0x10, {0x12});
    MRU_Init(MRU_PROGRAMS, 1);
    std::string offered;
    size_t chosen = 0;
    FRONTEND_Get().chooseFile = [&](const FileRequest& request) -> std::optional<FileChoice> {
        for (const FileFilter& filter : request.filters) {
            offered += filter.text + "=" + filter.pattern + " ";
        }
        return FileChoice{(world.folder / "x.y").string(), chosen};
    };
    for (const auto& [filter, start] : {std::pair(0U, ":01001000"), {1U, "S1040010"}}) {
        offered.clear();
        chosen = filter;
        PROGRAM_SaveAsDialog();
        EXPECT_TRUE(readFile(world.folder / "x.y").starts_with(start)) << start;
        EXPECT_EQ(offered, "Intel Hex file (*.hex)=*.hex Motorola S file (*.mot)=*.mot ");
        EXPECT_EQ(MRU_GetEntry(MRU_PROGRAMS, 0), world.folder / "x.y");
    }
    offered.clear();
    PROGRAM_OpenDialog();
    EXPECT_EQ(offered, "Target program files (*.h*;*.s*;*.hex;*.mot;)=*.h*;*.s*;*.hex;*.mot; "
                       "All files (*.*)=*.* ");
}

// What each step makes of the image's origin, and what Save does then: writes the file, or asks.
TEST(ProgramFiles, AreWrittenWithoutAskingOnlyWhereTheImageIsTheirs) {
    ShellWorld world;
    const std::string app = world.folder / "app.hex";
    const std::string boot = world.folder / "boot.hex";
    std::string title;
    int asked = 0;
    FRONTEND_Get().setTitle = [&title](const std::string& text) { title = text; };
    FRONTEND_Get().chooseFile = [&asked](const FileRequest&) {
        ++asked;
        return std::optional<FileChoice>();
    };
    const auto open = [&] { PROGRAM_Open(app); };
    const auto merge = [&] { PROGRAM_Merge(boot); };
    const auto edit = [] { EDIT_Relocate(0x10); };
    const auto shorten = [] { EDIT_DeleteRange(0, 0); };
    const auto fail = [&] {
        PROGRAM_Merge(world.folder / "none");
        PROGRAM_Save(world.folder / "none" / "x.hex", FILETYPE_INTEL);
        EDIT_DeleteRange(0x1000, 0x1000); // holds nothing
        EDIT_Relocate(0);
    };
    const auto loseIt = [&] { PROGRAM_Merge(world.file("cut.hex", kCutHex)); };
    const auto saveAs = [&] { PROGRAM_Save(boot, FILETYPE_INTEL); };
    const struct {
        std::vector<std::function<void()>> steps;
        std::string origin;
        std::string saved; // by Save without asking
    } cases[] = {
        {{open}, app, app},
        {{open, edit}, app + " *", app},
        {{open, shorten}, app + " *", app},
        {{open, fail}, app, app},
        {{open, merge}, app + " + 1 *", ""},
        {{open, merge, saveAs}, boot, boot},
        {{open, loseIt}, "", ""},
        {{open, PROGRAM_Close}, "", ""},
        {{open, merge, open}, app, app},
    };
    for (const auto& c : cases) {
        world.file("app.hex", kAppHex);
        world.file("boot.hex", kBootHex);
        PROGRAM_Unload();
        for (const auto& step : c.steps) {
            step();
        }
        SCOPED_TRACE(title);
        EXPECT_EQ(title, IDENTITY_Title() + (c.origin.empty() ? "" : " - " + c.origin));
        std::filesystem::remove(app);
        std::filesystem::remove(boot);
        asked = 0;
        PROGRAM_SaveCurrent();
        EXPECT_EQ(asked, c.saved.empty() ? 1 : 0);
        for (const std::string& file : {app, boot}) {
            EXPECT_EQ(std::filesystem::exists(file), file == c.saved) << file;
        }
        EXPECT_EQ(title.find('*') != std::string::npos, c.saved.empty() && c.origin.ends_with('*'));
    }
    RUN_SetUnattended(true);
    world.file("boot.hex", kBootHex);
    merge();
    world.screen.takeAll(world.reports);
    PROGRAM_SaveCurrent();
    EXPECT_EQ(world.reports,
              std::vector<std::string>{"The image is not that of one file, Save needs a name"});
}
