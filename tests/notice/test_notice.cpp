#include "notice/error.h"
#include "notice/log.h"
#include "notice/progress.h"
#include "notice/run.h"
#include "notice/status.h"
#include "platform/event_queue.h"
#include "platform/files.h"
#include "sim/virtual_clock.h"
#include "support/paths.h"
#include "support/temp_folder.h"

#include <array>
#include <gtest/gtest.h>
#include <regex>

namespace {

constexpr char kRule[] = "\r\n\\*{56}\r\n\r\n";

// The texts of a progress and what else is shown.
std::string shown() {
    const ProgressView view = PROGRESS_GetView();
    return view.caption + "|" + view.line1 + "|" + view.line2 + "|" + view.step + "|" + view.line3 +
           "|" + (view.barTextMode ? "bar: " + view.barText + " " : "") +
           (view.showClock ? "clock " : "") + (view.busyCursor ? "busy " : "") +
           (view.showCancel ? "cancel " : "");
}

// A program folder and the file beside the program that is looked at.
class NoticeFiles : public testing::Test {
protected:
    NoticeFiles() { FILES_SetProgramPath(folder / "tool"); }
    ~NoticeFiles() override { FILES_SetProgramPath({}); }

    // Header, the lines of `pattern`, closing rule.
    static void expectFile(const std::string& text, const std::string& title,
                           const std::string& pattern) {
        const std::regex whole("tool " + title +
                               ", compiled at \\w{3} [ \\d]\\d \\d{4} [\\d:]{8}\r\n" + kRule +
                               "\t\tDD-MM-YYYY HH:MM:SS\r\n\t\t-{19}\r\n"
                               "\t\t\\d\\d-\\d\\d-\\d{4} \\d\\d:\\d\\d:\\d\\d\r\n" +
                               kRule + pattern + kRule);
        EXPECT_TRUE(std::regex_match(text, whole)) << text;
    }

    const TempFolder folder;
};

} // namespace

TEST_F(NoticeFiles, AnErrorIsLoggedThenNotifiedThenSetsTheExitCode) {
    writeFile(folder / "tool.err", "of the run before");
    std::string calls;
    ERROR_SetHandlers(
        [&](WindowHandle, const std::string& text, const std::string& hint, int) {
            const bool logged = readFile(folder / "tool.err").find(text) != std::string::npos;
            calls += text + hint + (logged ? " logged, " : " not logged, ");
        },
        {}, [&](int code) { calls += std::to_string(code) + "; "; });
    ERROR_Notify("aside");
    EXPECT_EQ(readFile(folder / "tool.err"), "of the run before");
    ERROR_Out(nullptr, "first", 1);
    ERROR_Out(nullptr, "second", 0, {Cause::unknownDevice, "A, B"});
    EXPECT_EQ(
        calls,
        "aside not logged, 1; first logged, 1; secondDevices that there are: A, B logged, 0; ");
    ERROR_SetHandlers({}, {}, {});
    ERROR_Out(nullptr, "got '\x1B'", 1);
    EXPECT_EQ(ERROR_Ask(nullptr, "Continue?", "Question", BOX_YES_NO), ANSWER_NONE);
    ERROR_Exit();
    const std::string stamp = "\\* \\d{4}-\\d\\d-\\d\\d, \\d\\d:\\d\\d:\\d\\d\r\n";
    expectFile(readFile(folder / "tool.err"), "error log file",
               stamp + "first\r\n" + stamp + "second\r\nHint: Devices that there are: A, B\r\n" +
                   stamp + "got '\\\\x1B'\r\n");
}

TEST_F(NoticeFiles, ALogLineIsStampedWrittenAndShown) {
    EXPECT_EQ(LOG_Stamp(3'723'004), "1:02:03:004");
    EXPECT_EQ(LOG_Stamp(36'000'001), "0:00:00:001");
    std::string seen;
    LOG_SetObserver([&](const std::string&, const std::string& text) { seen += text; });
    LOG_Init();
    LOG_RestartClock();
    LOG_Add("Opening \x1B[31m\n\x9B.hex");
    LOG_AddMessage("Error: two\nlines\r");
    LOG_Exit();
    LOG_SetObserver({});
    EXPECT_EQ(seen, "Opening \\x1B[31m\\x0A\\x9B.hexError: two\nlines\\x0D");
    expectFile(readFile(folder / "tool.log"), "log file",
               "0:00:00:\\d{3} Opening \\\\x1B\\[31m\\\\x0A\\\\x9B.hex\r\n"
               "0:00:00:\\d{3} Error: two\nlines\\\\x0D\r\n");
}

TEST(Status, PassesATextOnOnlyWhenItChanges) {
    STATUS_Init();
    int sent = 0;
    STATUS_SetObserver([&](int, const std::string&) { ++sent; });
    for (const int part : {STATUS_DEVICE + 0, STATUS_DEVICE + 0, kStatusParts}) {
        STATUS_SetText("MCU: X", part);
    }
    EXPECT_EQ(sent, 1);
    STATUS_SetObserver({});
    int edges[kStatusParts];
    STATUS_Layout(800, edges);
    EXPECT_EQ(std::to_array(edges), (std::array{260, 390, 520, 650, 780}));
}

// The page "When it does not connect" holds the table of the hints as the program has it.
TEST(Hints, AreWhatThePageSays) {
    const std::string page = readFile(builtFolder() / "when-it-does-not-connect.md");
    EXPECT_NE(page.find("|---|---|\n" + HINT_PageTable() + "\n"), std::string::npos)
        << HINT_PageTable();
}

TEST(Progress, ShowsWhatIsSetAndBeginsAnew) {
    VirtualClock clock(1);
    std::string told;
    PROGRESS_SetObserver({[&](void*) { told += "opened "; }, [&] { told += "changed "; }});
    PROGRESS_HideClock();
    PROGRESS_ShowCancel(false);
    PROGRESS_SetText(""); // which stays when a command begins
    const ProgressTotal before = PROGRESS_Total();
    PROGRESS_Open("Programming", nullptr);
    EXPECT_EQ(shown(), "Programming||0 of 0 bytes||Elapsed time: 0:00|clock busy cancel ");
    CLOCK_Sleep(67'900);
    PROGRESS_SetMax(1000);
    PROGRESS_SetPos(250);
    PROGRESS_SetText("Page");
    EXPECT_EQ(shown(), "Programming|Page|250 of 1000 bytes||Elapsed time: 1:07|clock busy cancel ");
    EXPECT_EQ(PROGRESS_Percent(PROGRESS_GetView()), 25);
    PROGRESS_HideByteCount();
    PROGRESS_SetNote("Block 3");
    PROGRESS_SetStep("3 of 8");
    PROGRESS_SetBarText("30 s");
    PROGRESS_SetBarTextMode(true);
    PROGRESS_ShowCancel(false);
    PROGRESS_HideClock();
    EXPECT_EQ(shown(), "Programming|Page|Block 3|3 of 8||bar: 30 s ");
    // Addresses beyond the signed range are positions like any other.
    PROGRESS_SetMin(static_cast<int32_t>(0x7FFFFF00));
    PROGRESS_SetMax(static_cast<int32_t>(0x80000100));
    PROGRESS_SetPos(static_cast<int32_t>(0x80000000));
    EXPECT_EQ(PROGRESS_Percent(PROGRESS_GetView()), 50);
    PROGRESS_Open("Reading", nullptr);
    PROGRESS_SetBarTextMode(true);
    EXPECT_EQ(shown(), "Reading|Page|0 of 0 bytes||Elapsed time: 0:00|bar:  clock busy cancel ");
    CLOCK_Sleep(100);
    PROGRESS_Close();
    CLOCK_Sleep(100);
    EXPECT_TRUE(PROGRESS_GetView().closeRequest);
    EXPECT_EQ(PROGRESS_Total().openings - before.openings, 2U);
    EXPECT_EQ(PROGRESS_Total().ms - before.ms, 68'000U);
    EXPECT_EQ(told, "changed opened changed changed opened changed ");
    PROGRESS_SetObserver({});
    PROGRESS_Reset();
    EXPECT_FALSE(PROGRESS_GetView().barTextMode || PROGRESS_GetView().closeRequest);
}

TEST(Progress, EndsTheWaitAtOnceAlsoWhenDoneCameFirst) {
    EVENTS_Open();
    PROGRESS_Open("Reading", nullptr);
    PROGRESS_Done();
    PROGRESS_Run("Reading...", {});
    PROGRESS_Reset();
    const auto thread = CLOCK_StartThread([] { EVENTS_PostAndWait(PROGRESS_Cancel); });
    PROGRESS_Run("Reading more...", PROGRESS_Done);
    CLOCK_JoinThread(thread);
    EXPECT_TRUE(PROGRESS_IsDone());
    EXPECT_EQ(PROGRESS_GetView().line1, "Reading more...");
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
