#include "notice/error.h"
#include "shell/notifiers.h"
#include "shell/progress_line.h"

#include <gtest/gtest.h>

namespace {

ProgressView at(int32_t pos, uint32_t elapsedMs, int32_t max = 1000) {
    ProgressView view;
    view.hasRange = view.byteCount = view.showClock = true;
    view.max = max;
    view.pos = pos;
    view.elapsedMs = elapsedMs;
    return view;
}

} // namespace

TEST(Notifiers, PrintWhatIsNotAskedOnOneLine) {
    EXPECT_EQ(NOTIFIERS_UnattendedLine("Broken!\r\nContinue?", "Reset Vector", BOX_YES_NO | 0x100),
              "Reset Vector: Broken! Continue? [not asked]");
    EXPECT_EQ(NOTIFIERS_UnattendedLine("Failed", "", BOX_OK), "Failed");
    EXPECT_EQ(NOTIFIERS_UnattendedLine("got '\r'\n", "", BOX_OK), "got '\r'");
}

TEST(ProgressLine, ShowsBarBytesRateAndTimes) {
    ProgressView view = at(25000, 65000, 100000);
    view.caption = "Programming";
    view.line2 = "25000 of 100000 bytes";
    const std::string behindTheBar =
        "  25 %  25000 of 100000 bytes  1.0 kB/s  1:05 elapsed  1:15 left";
    const std::pair<int, std::string> cases[] = {{200, " [======>                 ]"},
                                                 {87, " [==>     ]"},
                                                 {85, " [=>    ]"},
                                                 {84, ""},
                                                 {80, ""}};
    for (const auto& [width, bar] : cases) {
        EXPECT_EQ(PROGRESSLINE_Format(view, 1000, width),
                  std::string("Programming").append(bar).append(behindTheBar));
    }
    EXPECT_EQ(PROGRESSLINE_Format(view, 1000, 12).size(), 11U);
    ProgressSteps steps;
    EXPECT_TRUE(PROGRESSLINE_IsDue(steps, view));
    view.barTextMode = true;
    EXPECT_FALSE(PROGRESSLINE_IsDue(steps, at(0, 0)) || PROGRESSLINE_IsDue(steps, view));
    view.barText = "Maximum time: 30 sec";
    EXPECT_EQ(PROGRESSLINE_Format(view, 0, 200), "Programming  Maximum time: 30 sec  1:05 elapsed");
}

TEST(ProgressLine, MeasuresTheRateFromTheFirstLookOn) {
    ProgressRate rate;
    EXPECT_DOUBLE_EQ(PROGRESSLINE_Rate(rate, at(100, 5000)), 0);
    EXPECT_DOUBLE_EQ(PROGRESSLINE_Rate(rate, at(600, 6000)), 500);
    EXPECT_DOUBLE_EQ(PROGRESSLINE_Rate(rate, at(0, 7000)), 0) << "the next operation begins";
    EXPECT_DOUBLE_EQ(PROGRESSLINE_Rate(rate, at(100, 8000)), 100);
}

TEST(ProgressLine, TellsEachTenthButNotMoreThanEveryTenSeconds) {
    ProgressSteps steps;
    const struct {
        int32_t pos; // of 1000
        uint32_t elapsedMs;
        bool isDue;
    } looks[] = {{90, 20000, false},  {100, 21000, true}, {300, 30000, false}, {300, 31000, true},
                 {390, 99000, false}, {400, 99000, true}, {100, 1000, false},  {100, 10000, true}};
    for (const auto& look : looks) {
        EXPECT_EQ(PROGRESSLINE_IsDue(steps, at(look.pos, look.elapsedMs)), look.isDue)
            << look.elapsedMs;
    }
}
