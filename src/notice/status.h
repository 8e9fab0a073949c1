// The five texts of the status bar. A text is passed on only when it changes.
#pragma once

#include <functional>
#include <string>
#include <string_view>

enum StatusPart : int {
    STATUS_GENERAL = 0,
    STATUS_CONNECTION = 1,
    STATUS_CHECKSUM = 2,
    STATUS_DEVICE = 3,
    STATUS_SERIAL = 4,
};
inline constexpr int kStatusParts = 5;

// Called on the thread that set the text.
using StatusObserver = std::function<void(int part, const std::string& text)>;

// "Ready" as the general text, the others empty.
void STATUS_Init();
void STATUS_SetObserver(StatusObserver observer);
// Any thread. Parts outside 0 to 4 are ignored.
void STATUS_SetText(std::string_view text, int part);
std::string STATUS_GetText(int part);
// The right edges in pixels of the five parts in a bar of `width` pixels.
void STATUS_Layout(int width, int edges[kStatusParts]);
