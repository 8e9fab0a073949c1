// The one live line that shows a running operation on a terminal: arithmetic only, no output.
#pragma once

#include "notice/progress.h"

#include <string>

// Tells the rate of the bytes that have passed since the operation's range was set.
struct ProgressRate {
    int32_t startPos = 0;
    uint32_t startMs = 0;
    int32_t lastPos = 0;
    bool started = false;
};

// Bytes a second since the first call for this range; 0 while it cannot be told.
double PROGRESSLINE_Rate(ProgressRate& rate, const ProgressView& view);

// "Programming [=====>    ] 48 %  63488 of 131072 bytes  10.6 kB/s  0:06 elapsed  0:06 left". Where
// that is wider than `width` columns the bar is narrower or left out; figures are cut last.
std::string PROGRESSLINE_Format(const ProgressView& view, double bytesPerSecond, int width);
// The same without caption and bar.
std::string PROGRESSLINE_Figures(const ProgressView& view, double bytesPerSecond);
// What a window with the other lines of the view adds to them: "block 3 of 8, 10.6 kB/s, 0:06
// left".
std::string PROGRESSLINE_Details(const ProgressView& view, double bytesPerSecond);

// Whether it has taken so long that the user may look at something else and is told of its end.
bool PROGRESSLINE_IsLong(const ProgressView& view);

// What was told last of an operation where no live line can be shown.
struct ProgressSteps {
    uint32_t toldMs = 0; // by the operation's clock
    int tenth = 0;
};

// Whether a line of its own is due: another tenth is done, and 10 s have passed since the last
// line.
bool PROGRESSLINE_IsDue(ProgressSteps& steps, const ProgressView& view);
