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

// "Programming [=====>    ] 48 %  63488 of 131072 bytes  10.6 kB/s  0:06 elapsed  0:06 left", cut
// to `width` columns.
std::string PROGRESSLINE_Format(const ProgressView& view, double bytesPerSecond, int width);
