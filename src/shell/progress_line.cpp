#include "shell/progress_line.h"

#include "platform/format.h"

#include <algorithm>

namespace {

constexpr size_t kWidestBar = 24; // columns
constexpr size_t kNarrowestBar = 6;
constexpr size_t kBarFrame = 3; // brackets and the blank in front
constexpr uint32_t kStepMs = 10'000;
constexpr uint32_t kLongMs = 10'000;

std::string minutes(uint32_t ms) {
    return formatText("%u:%02u", ms / 60'000, ms / 1000 % 60);
}

std::string bar(int percent, int width) {
    const int filled = std::clamp(percent, 0, 100) * width / 100;
    std::string text(static_cast<size_t>(filled), '=');
    if (filled < width) {
        text += '>';
        text.resize(static_cast<size_t>(width), ' ');
    }
    return "[" + text + "]";
}

std::string remaining(const ProgressView& view, double bytesPerSecond) {
    if (bytesPerSecond <= 0) {
        return "";
    }
    const double left = static_cast<double>(view.max) - view.pos;
    return minutes(static_cast<uint32_t>(std::max(0.0, left) * 1000 / bytesPerSecond)) + " left";
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

std::string PROGRESSLINE_Figures(const ProgressView& view, double bytesPerSecond) {
    std::string line;
    if (view.hasRange && !view.barTextMode) {
        line += formatText(" %3d %%", PROGRESS_Percent(view));
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
        const std::string left = remaining(view, bytesPerSecond);
        line += left.empty() ? "" : "  " + left;
    }
    return line;
}

std::string PROGRESSLINE_Details(const ProgressView& view, double bytesPerSecond) {
    const bool counts = view.hasRange && view.byteCount && !view.barTextMode;
    const std::string figures[] = {
        view.barTextMode ? "" : view.step,
        counts && bytesPerSecond > 0 ? formatText("%.1f kB/s", bytesPerSecond / 1000) : "",
        counts ? remaining(view, bytesPerSecond) : "",
    };
    std::string line;
    for (const std::string& figure : figures) {
        line += (line.empty() || figure.empty() ? "" : ", ") + figure;
    }
    return line;
}

bool PROGRESSLINE_IsLong(const ProgressView& view) {
    return view.elapsedMs >= kLongMs;
}

std::string PROGRESSLINE_Format(const ProgressView& view, double bytesPerSecond, int width) {
    const std::string figures = PROGRESSLINE_Figures(view, bytesPerSecond);
    // The last column stays free, where some terminals would wrap.
    const auto columns = static_cast<size_t>(std::max(0, width - 1));
    std::string line = view.caption;
    if (view.hasRange && !view.barTextMode) {
        const size_t others = line.size() + figures.size() + kBarFrame;
        const size_t room = columns - std::min(columns, others);
        if (room >= kNarrowestBar) {
            line += " " + bar(PROGRESS_Percent(view), static_cast<int>(std::min(room, kWidestBar)));
        }
    }
    return (line + figures).substr(0, columns);
}

bool PROGRESSLINE_IsDue(ProgressSteps& steps, const ProgressView& view) {
    if (!view.hasRange || view.barTextMode) {
        return false;
    }
    const int tenth = PROGRESS_Percent(view) / 10;
    const bool begins = view.elapsedMs < steps.toldMs;
    if (begins) {
        steps = {};
    }
    if (tenth == steps.tenth || view.elapsedMs - steps.toldMs < kStepMs) {
        return false;
    }
    steps = {view.elapsedMs, tenth};
    return true;
}
