#include "shell/program_files.h"
#include "shell/shell_world.h"

#include <gtest/gtest.h>

TEST(ProgramFiles, AreOfferedAndSavedInTheirFormats) {
    const ShellWorld world;
    ShellWorld::load(0x10, {0x12});
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
    }
    offered.clear();
    PROGRAM_OpenDialog();
    EXPECT_EQ(offered, "Target program files (*.h*;*.s*;*.hex;*.mot;)=*.h*;*.s*;*.hex;*.mot; "
                       "All files (*.*)=*.* ");
}
