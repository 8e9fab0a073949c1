#include "notice/status.h"

#include <array>
#include <mutex>

namespace {

std::mutex statusMutex;
std::array<std::string, kStatusParts> texts;
StatusObserver statusObserver;

constexpr int kGripWidth = 20; // pixels kept free at the right end
constexpr int kPartWidth = 130;

bool isPart(int part) {
    return part >= 0 && part < kStatusParts;
}

} // namespace

void STATUS_Init() {
    const std::lock_guard lock(statusMutex);
    texts = {"Ready"};
}

void STATUS_SetObserver(StatusObserver newObserver) {
    const std::lock_guard lock(statusMutex);
    statusObserver = std::move(newObserver);
}

void STATUS_SetText(std::string_view text, int part) {
    if (!isPart(part)) {
        return;
    }
    StatusObserver changed;
    {
        const std::lock_guard lock(statusMutex);
        std::string& cached = texts[static_cast<size_t>(part)];
        if (cached == text) {
            return;
        }
        cached = text;
        changed = statusObserver;
    }
    if (changed) {
        changed(part, std::string(text));
    }
}

std::string STATUS_GetText(int part) {
    const std::lock_guard lock(statusMutex);
    return isPart(part) ? texts[static_cast<size_t>(part)] : std::string();
}

void STATUS_Layout(int width, int edges[kStatusParts]) {
    edges[0] = width - kGripWidth - (kStatusParts - 1) * kPartWidth;
    for (int part = 1; part < kStatusParts; ++part) {
        edges[part] = edges[part - 1] + kPartWidth;
    }
}
