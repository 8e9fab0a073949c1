#include "shell/progress_line.h"

#include "platform/format.h"

#include <algorithm>

namespace {

constexpr int kBarWidth = 24; // columns

std::string minutes(uint32_t ms) {
    return formatText("%u:%02u", ms / 60'000, ms / 1000 % 60);
}

std::string bar(int percent) {
    const int filled = std::clamp(percent, 0, 100) * kBarWidth / 100;
    std::string text(static_cast<size_t>(filled), '=');
    if (filled < kBarWidth) {
        text += '>';
        text.resize(kBarWidth, ' ');
    }
    return "[" + text + "]";
}

std::string remaining(const ProgressView& view, double bytesPerSecond) {
    if (bytesPerSecond <= 0) {
        return "";
    }
    const double left = static_cast<double>(view.max) - view.pos;
    return "  " + minutes(static_cast<uint32_t>(std::max(0.0, left) * 1000 / bytesPerSecond)) +
           " left";
}

} // namespace

double PROGRESSLINE_Rate(ProgressRate& rate, const ProgressView& view) {
    if (!view.hasRange || !view.byteCount) {
        rate.started = false;
        return 0;
    }
    if (!rate.started || view.pos < rate.lastPos) {
        rate = {view.pos, view.elapsedMs, view.pos, true};
    }
    rate.lastPos = view.pos;
    const uint32_t elapsed = view.elapsedMs - rate.startMs;
    return elapsed == 0 ? 0 : (static_cast<double>(view.pos) - rate.startPos) * 1000 / elapsed;
}

std::string PROGRESSLINE_Format(const ProgressView& view, double bytesPerSecond, int width) {
    std::string line = view.caption;
    if (view.hasRange && !view.barTextMode) {
        const int percent = PROGRESS_Percent(view);
        line += " " + bar(percent) + formatText(" %3d %%", percent);
        line += view.line2.empty() ? "" : "  " + view.line2;
        if (bytesPerSecond > 0) {
            line += formatText("  %.1f kB/s", bytesPerSecond / 1000);
        }
    } else if (view.barTextMode && !view.barText.empty()) {
        line += "  " + view.barText;
    } else if (!view.line1.empty()) {
        line += "  " + view.line1;
    }
    if (view.showClock) {
        line += "  " + minutes(view.elapsedMs) + " elapsed";
    }
    if (view.hasRange && view.byteCount && !view.barTextMode) {
        line += remaining(view, bytesPerSecond);
    }
    // The last column stays free, where some terminals would wrap.
    return line.substr(0, static_cast<size_t>(std::max(0, width - 1)));
}
