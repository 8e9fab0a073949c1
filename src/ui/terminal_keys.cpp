#include "ui/terminal_keys.h"

#include <algorithm>
#include <iterator>

namespace {

struct NamedKey {
    int key;
    uint8_t value;
    const char* echo;
};

// Keys without a character, with the numbers that targets have always received for them.
constexpr NamedKey kNamedKeys[] = {
    {Qt::Key_Shift, 0x10, ""},         {Qt::Key_Control, 0x11, ""},
    {Qt::Key_Pause, 0x13, ""},         {Qt::Key_CapsLock, 0x14, ""},
    {Qt::Key_PageUp, 0x21, "<PG_UP>"}, {Qt::Key_PageDown, 0x22, "<PG_DOWN>"},
    {Qt::Key_End, 0x23, "<END>"},      {Qt::Key_Home, 0x24, "<HOME>"},
    {Qt::Key_Left, 0x25, "<LEFT>"},    {Qt::Key_Up, 0x26, "<UP>"},
    {Qt::Key_Right, 0x27, "<RIGHT>"},  {Qt::Key_Down, 0x28, "<DOWN>"},
    {Qt::Key_Insert, 0x2D, "<INS>"},   {Qt::Key_Delete, 0x2E, "<DEL>"},
    {Qt::Key_F1, 0x70, "<F1>"},        {Qt::Key_F2, 0x71, "<F2>"},
    {Qt::Key_F3, 0x72, "<F3>"},        {Qt::Key_F4, 0x73, "<F4>"},
    {Qt::Key_F5, 0x74, "<F5>"},        {Qt::Key_F6, 0x75, "<F6>"},
    {Qt::Key_F7, 0x76, "<F7>"},        {Qt::Key_F8, 0x77, "<F8>"},
    {Qt::Key_F9, 0x78, "<F9>"},        {Qt::Key_F11, 0x7A, "<F11>"},
    {Qt::Key_F12, 0x7B, "<F12>"},      {Qt::Key_Clear, 0x0C, ""},
    {Qt::Key_Super_L, 0x5B, ""},       {Qt::Key_Super_R, 0x5C, ""},
    {Qt::Key_Meta, 0x5B, ""},          {Qt::Key_Menu, 0x5D, ""},
    {Qt::Key_NumLock, 0x90, ""},       {Qt::Key_ScrollLock, 0x91, ""},
};

constexpr uint8_t kTab = 0x09;
constexpr uint8_t kLineFeed = 0x0A;

const NamedKey* findNamed(int key) {
    const auto* found = std::find_if(std::begin(kNamedKeys), std::end(kNamedKeys),
                                     [key](const NamedKey& named) { return named.key == key; });
    return found == std::end(kNamedKeys) ? nullptr : found;
}

bool isPrintable(uint8_t value) {
    constexpr uint8_t kDelete = 0x7F;
    constexpr uint8_t kFirstHigh = 0xA0; // Latin-1 beyond its control characters
    return (value >= 0x20 && value < kDelete) || value >= kFirstHigh;
}

} // namespace

std::optional<TerminalKey> TERMINALKEYS_Translate(int key, Qt::KeyboardModifiers modifiers,
                                                  const QString& text) {
    // First the named keys: some systems report a control character with them (Delete).
    if (const NamedKey* named = findNamed(key)) {
        return TerminalKey{named->value, false};
    }
    const bool enter = key == Qt::Key_Return || key == Qt::Key_Enter;
    if (enter && (modifiers & Qt::ControlModifier) != 0) {
        return TerminalKey{kLineFeed, true};
    }
    if (key == Qt::Key_Backtab) {
        return TerminalKey{kTab, true}; // some systems report no character with it
    }
    if (text.size() == 1 && text.at(0).unicode() <= 0xFF) {
        return TerminalKey{static_cast<uint8_t>(text.at(0).unicode()), true};
    }
    return std::nullopt;
}

QString TERMINALKEYS_Echo(const TerminalKey& key) {
    if (!key.isCharacter) {
        const auto* named =
            std::find_if(std::begin(kNamedKeys), std::end(kNamedKeys),
                         [&key](const NamedKey& entry) { return entry.value == key.value; });
        return named == std::end(kNamedKeys) ? QString() : QString(named->echo);
    }
    switch (key.value) {
    case kTab:
        return "<TAB>";
    case kLineFeed:
        return "\n";
    default:
        return isPrintable(key.value) ? QString(QChar(key.value)) : QString();
    }
}
