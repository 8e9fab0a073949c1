#include "notice/error.h"
#include "shell/notifiers.h"
#include "shell/progress_line.h"

#include <gtest/gtest.h>

TEST(Notifiers, PrintWhatIsNotAskedOnOneLine) {
    EXPECT_EQ(NOTIFIERS_UnattendedLine("Broken!\r\nContinue?", "Reset Vector", BOX_YES_NO | 0x100),
              "Reset Vector: Broken! Continue? [not asked]");
    EXPECT_EQ(NOTIFIERS_UnattendedLine("Failed", "", BOX_OK), "Failed");
    EXPECT_EQ(NOTIFIERS_UnattendedLine("got '\r'\n", "", BOX_OK), "got '\r'");
}

TEST(ProgressLine, ShowsBarBytesRateAndTimes) {
    ProgressView view;
    view.caption = "Programming";
    view.line2 = "25000 of 100000 bytes";
    view.hasRange = view.byteCount = view.showClock = true;
    view.max = 100000;
    view.pos = 25000;
    view.elapsedMs = 65000;
    EXPECT_EQ(PROGRESSLINE_Format(view, 1000, 200),
              "Programming [======>                 ]  25 %  25000 of 100000 bytes  1.0 kB/s  "
              "1:05 elapsed  1:15 left");
    EXPECT_EQ(PROGRESSLINE_Format(view, 1000, 87),
              "Programming [==>     ]  25 %  25000 of 100000 bytes  "
              "1.0 kB/s  1:05 elapsed  1:15 left");
    EXPECT_EQ(PROGRESSLINE_Format(view, 1000, 80), "Programming  25 %  25000 of 100000 bytes  1.0 "
                                                   "kB/s  1:05 elapsed  1:15 left");
    EXPECT_EQ(PROGRESSLINE_Format(view, 1000, 12).size(), 11U);
    view.barTextMode = true;
    view.barText = "Maximum time: 30 sec";
    EXPECT_EQ(PROGRESSLINE_Format(view, 0, 200), "Programming  Maximum time: 30 sec  1:05 elapsed");
}

TEST(ProgressLine, MeasuresTheRateFromTheFirstLookOn) {
    ProgressRate rate;
    ProgressView view;
    view.hasRange = view.byteCount = true;
    view.max = 1000;
    const struct {
        int32_t pos;
        uint32_t elapsedMs;
        double bytesPerSecond;
    } looks[] = {{100, 5000, 0}, {600, 6000, 500}, {0, 7000, 0}, {100, 8000, 100}};
    for (const auto& look : looks) { // the position that falls back belongs to the next operation
        view.pos = look.pos;
        view.elapsedMs = look.elapsedMs;
        EXPECT_DOUBLE_EQ(PROGRESSLINE_Rate(rate, view), look.bytesPerSecond);
    }
}

TEST(ProgressLine, TellsEachTenthButNotMoreThanEveryTenSeconds) {
    ProgressSteps steps;
    ProgressView view;
    view.hasRange = true;
    view.max = 100;
    const struct {
        int32_t pos;
        uint32_t elapsedMs;
        bool isDue;
    } looks[] = {{9, 20000, false},  {10, 21000, true}, {30, 30000, false}, {30, 31000, true},
                 {39, 99000, false}, {40, 99000, true}, {10, 1000, false},  {10, 10000, true}};
    for (const auto& look : looks) {
        view.pos = look.pos;
        view.elapsedMs = look.elapsedMs;
        EXPECT_EQ(PROGRESSLINE_IsDue(steps, view), look.isDue) << look.elapsedMs;
    }
}
