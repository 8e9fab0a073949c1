#include "serial/terminal_buffer.h"

#include <mutex>
#include <string_view>

namespace {

std::mutex textMutex; // the worker fills the text, the user interface takes it
std::string received;
bool changed = false;

// Makes room by dropping the oldest lines. A line that alone fills the buffer goes as a whole.
void append(std::string_view text) {
    while (received.size() + text.size() + 2 > kTerminalCapacity) {
        const size_t lineEnd = received.find('\n');
        received.erase(0, lineEnd == std::string::npos ? lineEnd : lineEnd + 1);
    }
    received += text;
    changed = true;
}

} // namespace

void TERMINAL_ReceiveByte(uint8_t value) {
    const std::lock_guard lock(textMutex);
    const char character = static_cast<char>(value);
    switch (character) {
    case '\0':
    case '\r':
        break;
    case '\b':
        if (!received.empty()) {
            received.pop_back();
            changed = true;
        }
        break;
    case '\n':
        append("\r");
        append("\n");
        break;
    default:
        append({&character, 1});
    }
}

bool TERMINAL_TakeIfChanged(std::string& text) {
    const std::lock_guard lock(textMutex);
    if (!changed) {
        return false;
    }
    changed = false;
    text = received;
    return true;
}

std::string TERMINAL_GetText() {
    const std::lock_guard lock(textMutex);
    return received;
}

void TERMINAL_Clear() {
    const std::lock_guard lock(textMutex);
    received.clear();
    changed = true;
}
