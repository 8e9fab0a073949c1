#include "platform/files.h"
#include "support/temp_folder.h"

#include <gtest/gtest.h>

namespace fs = std::filesystem;

TEST(Files, ReplacesAFileInOneStepOrNotAtAll) {
    const TempFolder folder;
    writeFile(folder / "true.tpu", "old");
    fs::permissions(folder / "true.tpu", fs::perms::owner_all);
    fs::create_symlink("true.tpu", folder / "link.tpu");
    {
        FileReplacer file;
        ASSERT_TRUE(file.open(folder / "link.tpu").ok());
        ASSERT_TRUE(file.write("half of the ne").ok());
        // no commit: the program died or the disk was full
    }
    EXPECT_EQ(readFile(folder / "true.tpu"), "old");
    ASSERT_TRUE(FILES_Replace(folder / "link.tpu", "new").ok());
    EXPECT_EQ(readFile(folder / "true.tpu"), "new");
    fs::create_hard_link(folder / "true.tpu", folder / "same");
    ASSERT_TRUE(FILES_Replace(folder / "true.tpu", "new").ok());
    EXPECT_EQ(fs::hard_link_count(folder / "same"), 2U) << "nothing to replace";
    fs::remove(folder / "same");
    EXPECT_EQ(fs::status(folder / "true.tpu").permissions(), fs::perms::owner_all);
    EXPECT_TRUE(fs::is_symlink(folder / "link.tpu"));
    EXPECT_EQ(std::distance(fs::directory_iterator(folder.path()), {}), 2);
}

TEST(Files, TellsMissingFromUnreadable) {
    const TempFolder folder;
    std::string text;
    EXPECT_EQ(FILES_ReadAll(folder / "none", text).status, FileStatus::notFound);
    EXPECT_EQ(FILES_ReadAll(folder.path(), text).status, FileStatus::failed);
    EXPECT_EQ(FILES_ReadAll(folder.path(), text).reason, "Is a directory");
    EXPECT_EQ(FILES_Replace(folder / "no/such/place", "x").status, FileStatus::notFound);
    EXPECT_EQ(FILES_Replace(folder.path(), "x").status, FileStatus::failed);
    EXPECT_EQ(FILES_Replace("/dev/full", "x").reason, "No space left on device");
}

TEST(Files, ListsByExtensionInOrder) {
    const TempFolder folder;
    for (const char* name : {"b.dev", "a.dev", "c.txt"}) {
        writeFile(folder / name, "");
    }
    EXPECT_EQ(FILES_List(folder.path(), ".dev"),
              (std::vector<fs::path>{folder / "a.dev", folder / "b.dev"}));
    EXPECT_TRUE(FILES_List(folder / "none", ".dev").empty());
}
