#include "notice/error.h"
#include "notice/log.h"
#include "notice/progress.h"
#include "notice/run.h"
#include "notice/status.h"
#include "platform/event_queue.h"
#include "platform/files.h"
#include "support/temp_folder.h"

#include <gtest/gtest.h>
#include <regex>
#include <vector>

namespace {

constexpr char kHeaderPattern[] =
    "\r\n\\*{56}\r\n\r\n\t\tDD-MM-YYYY HH:MM:SS\r\n\t\t-{19}\r\n"
    "\t\t\\d\\d-\\d\\d-\\d{4} \\d\\d:\\d\\d:\\d\\d\r\n\r\n\\*{56}\r\n\r\n";

} // namespace

TEST(Error, LogsThenNotifiesThenSetsTheExitCode) {
    const TempFolder folder;
    FILES_SetProgramPath(folder / "tool");
    writeFile(folder / "tool.err", "of the run before");
    std::vector<std::string> calls;
    ERROR_SetHandlers(
        [&](WindowHandle, const std::string& text, int) {
            calls.push_back(readFile(folder / "tool.err").find(text) != std::string::npos
                                ? "notified after the log: " + text
                                : "notified too early");
        },
        {}, [&](int code) { calls.push_back("exit code " + std::to_string(code)); });
    ERROR_Notify("not for the log");
    EXPECT_EQ(readFile(folder / "tool.err"), "of the run before");
    calls.clear();

    ERROR_Out(nullptr, "first", 1);
    ERROR_Out(nullptr, "second", 0);
    EXPECT_EQ(calls, (std::vector<std::string>{"notified after the log: first", "exit code 1",
                                               "notified after the log: second", "exit code 0"}));
    EXPECT_EQ(ERROR_Ask(nullptr, "Continue?", "Question", BOX_YES_NO), ANSWER_NONE);
    ERROR_Exit();
    const std::regex whole(
        std::string("tool error log file, compiled at \\w{3} [ \\d]\\d \\d{4} [\\d:]{8}\r\n") +
        kHeaderPattern +
        "\\* \\d{4}-\\d\\d-\\d\\d, \\d\\d:\\d\\d:\\d\\d\r\nfirst\r\n"
        "\\* \\d{4}-\\d\\d-\\d\\d, \\d\\d:\\d\\d:\\d\\d\r\nsecond\r\n\r\n\\*{56}\r\n\r\n");
    EXPECT_TRUE(std::regex_match(readFile(folder / "tool.err"), whole));
    FILES_SetProgramPath({});
}

TEST(Log, StampsLinesAndWritesTheFile) {
    const TempFolder folder;
    FILES_SetProgramPath(folder / "tool");
    EXPECT_EQ(LOG_Stamp(3'723'004), "1:02:03:004");
    EXPECT_EQ(LOG_Stamp(36'000'001), "0:00:00:001");
    std::string seen;
    LOG_SetObserver([&](const std::string&, const std::string& text) { seen += text; });
    LOG_Init();
    LOG_RestartClock();
    LOG_Add("Connected with target");
    LOG_Exit();
    LOG_SetObserver({});
    EXPECT_EQ(seen, "Connected with target");
    const std::regex whole(std::string("tool log file, compiled at .*\r\n") + kHeaderPattern +
                           "0:00:00:\\d{3} Connected with target\r\n\r\n\\*{56}\r\n\r\n");
    EXPECT_TRUE(std::regex_match(readFile(folder / "tool.log"), whole));
    FILES_SetProgramPath({});
}

TEST(Status, PassesATextOnOnlyWhenItChanges) {
    STATUS_Init();
    int sent = 0;
    STATUS_SetObserver([&](int, const std::string&) { ++sent; });
    STATUS_SetText("MCU: X", STATUS_DEVICE);
    STATUS_SetText("MCU: X", STATUS_DEVICE);
    STATUS_SetText("nowhere", 5);
    EXPECT_EQ(sent, 1);
    STATUS_SetObserver({});
    int edges[kStatusParts];
    STATUS_Layout(800, edges);
    EXPECT_EQ(std::vector<int>(edges, edges + kStatusParts),
              (std::vector{260, 390, 520, 650, 780}));
}

TEST(Progress, ShowsBytesNoteAndPercentage) {
    EVENTS_Open();
    PROGRESS_Open("Programming", nullptr);
    EXPECT_FALSE(PROGRESS_GetView().hasRange);
    PROGRESS_SetMax(1000);
    PROGRESS_SetPos(250);
    ProgressView view = PROGRESS_GetView();
    EXPECT_EQ(view.line2, "250 of 1000 bytes");
    EXPECT_EQ(PROGRESS_Percent(view), 25);
    PROGRESS_HideByteCount();
    PROGRESS_SetNote("Block 3");
    EXPECT_EQ(PROGRESS_GetView().line2, "Block 3");
    // Addresses beyond the signed range are positions like any other.
    PROGRESS_SetMin(static_cast<int32_t>(0x7FFFFF00));
    PROGRESS_SetMax(static_cast<int32_t>(0x80000100));
    PROGRESS_SetPos(static_cast<int32_t>(0x80000000));
    EXPECT_EQ(PROGRESS_Percent(PROGRESS_GetView()), 50);
    PROGRESS_Close();
    EXPECT_TRUE(PROGRESS_GetView().closeRequest);
    EVENTS_Close();
}

TEST(Progress, EndsTheWaitAtOnceAlsoWhenDoneCameFirst) {
    EVENTS_Open();
    PROGRESS_Open("Reading", nullptr);
    PROGRESS_Done();
    PROGRESS_Run("Reading...", {});
    PROGRESS_Reset();
    const auto thread = CLOCK_StartThread([] { PROGRESS_Done(); });
    PROGRESS_Run("Reading...", {});
    CLOCK_JoinThread(thread);
    EXPECT_TRUE(PROGRESS_IsDone());
    EVENTS_Close();
}

TEST(Run, KeepsTheExitCodeOfAnInterruptedRun) {
    RUN_Reset();
    RUN_Interrupt();
    RUN_SetExitCode(0);
    EXPECT_EQ(RUN_GetExitCode(), 1);
    RUN_Reset();
    EXPECT_EQ(RUN_GetExitCode(), 0);
}
