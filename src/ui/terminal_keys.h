// What a key pressed in the terminal sends and how it is echoed: tables without a widget.
#pragma once

#include <QString>
#include <cstdint>
#include <optional>

struct TerminalKey {
    uint8_t value = 0;        // the byte that is sent
    bool isCharacter = false; // it is a character, not the number of a key without one
};

// `key` and `text` as Qt reports them with a key press. None for a key that sends nothing: one that
// the terminal does not know, or a character that no byte stands for.
std::optional<TerminalKey> TERMINALKEYS_Translate(int key, Qt::KeyboardModifiers modifiers,
                                                  const QString& text);
// What the send pane shows for it; empty for nothing, "\n" for a new line.
QString TERMINALKEYS_Echo(const TerminalKey& key);
