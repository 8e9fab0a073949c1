#include "notice/run.h"
#include "persist/mru.h"
#include "platform/files.h"
#include "platform/recent_store.h"
#include "support/temp_folder.h"

#include <cstdlib>
#include <gtest/gtest.h>

TEST(Mru, KeepsTheLastPathsAcrossRuns) {
    const TempFolder folder;
    setenv("XDG_CONFIG_HOME", folder.path().c_str(), 1);
    MRU_Init(MRU_PROGRAMS, 3);
    MRU_Init(MRU_PROJECTS, 3);
    for (const char* path : {"a.hex", "b.hex", "c.hex", "B.HEX", "d.hex", "d.hex"}) {
        MRU_Add(MRU_PROGRAMS, path);
    }
    MRU_Add(MRU_PROGRAMS, std::string(kMruPathLength + 1, 'x'));
    MRU_Add(MRU_PROGRAMS, "");
    const std::vector<std::string> expected = {"d.hex", "c.hex", "b.hex"};
    EXPECT_EQ(MRU_GetEntries(MRU_PROGRAMS), expected);
    EXPECT_TRUE(MRU_GetEntries(MRU_PROJECTS).empty());
    EXPECT_EQ(MRU_MenuText(MRU_PROGRAMS, 1), "&2 c.hex");
    EXPECT_EQ(MRU_GetEntry(MRU_PROGRAMS, 3), "");
    EXPECT_EQ(MRU_GetEntry(MRU_PROGRAMS, -1), "");

    MRU_Init(MRU_PROGRAMS, 2); // the next run, and a shorter menu
    EXPECT_EQ(MRU_GetEntries(MRU_PROGRAMS), (std::vector<std::string>{"d.hex", "c.hex"}));

    RUN_SetIsolated(true);
    MRU_Init(MRU_PROGRAMS, 2);
    MRU_Add(MRU_PROGRAMS, "e.hex");
    EXPECT_EQ(MRU_GetEntries(MRU_PROGRAMS), std::vector<std::string>{"e.hex"});
    RUN_SetIsolated(false);
    MRU_Init(MRU_PROGRAMS, 2);
    EXPECT_EQ(MRU_GetEntry(MRU_PROGRAMS, 0), "d.hex") << "an isolated run leaves the list alone";

    RECENTSTORE_Write("Recent File List 0", {"one", "", "with\nbreak", "two"});
    MRU_Init(MRU_PROGRAMS, 8);
    const std::string longest(kMruPathLength, 'x');
    MRU_Add(MRU_PROGRAMS, longest);
    EXPECT_EQ(MRU_GetEntries(MRU_PROGRAMS), (std::vector<std::string>{longest, "one", "two"}));
}
