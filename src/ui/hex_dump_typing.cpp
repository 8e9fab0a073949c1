// What the keys do in the hex dump: they move the caret, extend the selection and type over the
// bytes.

#include "persist/chars.h"
#include "shell/command_ids.h"
#include "shell/command_table.h"
#include "shell/edit_bytes.h"
#include "shell/edit_place.h"
#include "shell/frame_rules.h"
#include "ui/hex_dump_area.h"

#include <QKeyEvent>
#include <QScrollBar>

namespace {

// How far a key moves the caret, in addresses; the ends of the data clip it.
int64_t caretStep(int key, int page) {
    constexpr int64_t kLine = kBytesPerRow;
    constexpr int64_t kAll = int64_t{1} << 32;
    switch (key) {
    case Qt::Key_Left:
    case Qt::Key_Backspace:
        return -1;
    case Qt::Key_Right:
        return 1;
    case Qt::Key_Up:
        return -kLine;
    case Qt::Key_Down:
        return kLine;
    case Qt::Key_PageUp:
        return -kLine * page;
    case Qt::Key_PageDown:
        return kLine * page;
    case Qt::Key_Home:
        return -kAll;
    case Qt::Key_End:
        return kAll;
    default:
        return 0;
    }
}

uint32_t moved(uint32_t address, int64_t step, const AddressRange& within) {
    return static_cast<uint32_t>(
        std::clamp<int64_t>(address + step, within.start, int64_t{within.last()}));
}

// What the image holds there.
std::optional<uint8_t> heldByte(uint32_t address) {
    uint8_t byte = 0;
    bool held = false;
    HEXDATA_Copy(address, {&byte, 1}, {&held, 1});
    return held ? std::optional(byte) : std::nullopt;
}

// Control characters, and those beyond Latin-1, are no bytes that could be typed.
std::optional<uint8_t> byteOf(QChar letter) {
    const bool isByte = letter.unicode() <= 0xFF && letter.isPrint();
    return isByte ? std::optional(static_cast<uint8_t>(letter.unicode())) : std::nullopt;
}

} // namespace

void HexDumpArea::keyPressEvent(QKeyEvent* event) {
    if (event->matches(QKeySequence::Paste)) {
        if (COMMAND_IsEnabled(CMD_EDIT_PASTE_HEX)) {
            FRAMERULES_Run(CMD_EDIT_PASTE_HEX);
        }
        return;
    }
    const bool shift = event->modifiers().testFlag(Qt::ShiftModifier);
    if (!(shift && extendSelection(event->key())) && !moveByKey(*event) && !type(*event)) {
        event->ignore();
    }
}

bool HexDumpArea::extendSelection(int key) {
    const int64_t step = caretStep(key, scroll().page);
    if (step == 0 || key == Qt::Key_Backspace) {
        return false;
    }
    DumpSelection next =
        selection_.value_or(DumpSelection{caret_.address, caret_.address, caret_.characters});
    if (selection_) {
        next.caret = moved(next.caret, step, range_);
    }
    select(next);
    return true;
}

bool HexDumpArea::moveByKey(const QKeyEvent& event) {
    const int key = event.key();
    const bool isPage = key == Qt::Key_PageUp || key == Qt::Key_PageDown;
    const bool isLine = key == Qt::Key_Up || key == Qt::Key_Down;
    if (isLine && event.modifiers().testFlag(Qt::ControlModifier)) {
        move(key == Qt::Key_Up ? ScrollRequest::lineUp : ScrollRequest::lineDown);
        return true;
    }
    int64_t step = caretStep(key, scroll().page);
    if (step == 0) {
        return false;
    }
    if (step == -1 && (caret_.digit || caret_.behind)) {
        step = 0; // back to the start of the byte
    }
    if (isPage) {
        move(key == Qt::Key_PageUp ? ScrollRequest::pageUp : ScrollRequest::pageDown);
    }
    placeCaret(moved(caret_.address, step, range_));
    return true;
}

// Tab goes from the hex digits to the characters and then on to the next control.
bool HexDumpArea::focusNextPrevChild(bool next) {
    if (next == caret_.characters) {
        return QAbstractScrollArea::focusNextPrevChild(next);
    }
    moveCaret({caret_.address, next});
    return true;
}

bool HexDumpArea::mayType() {
    const char* refusal = nullptr;
    if (HEXDATA_IsEmpty()) {
        refusal = "No program is loaded";
    } else if (!FRAMERULES_IsFree()) {
        refusal = "A command is under way";
    } else if (caret_.behind) {
        refusal = "The data ends here; Paste Hex, Fill and Insert File add to it";
    }
    if (refusal != nullptr) {
        EDITPLACE_Refuse(refusal);
    }
    return refusal == nullptr;
}

bool HexDumpArea::type(const QKeyEvent& event) {
    constexpr auto kOfCommands = Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier;
    if (event.key() == Qt::Key_Escape && (caret_.digit || selection_)) {
        leaveHalfByte();
        return true;
    }
    if (event.text().size() != 1 || (event.modifiers() & kOfCommands) != 0 ||
        !event.text().at(0).isPrint()) {
        return false;
    }
    const std::optional<uint8_t> byte = byteOf(event.text().at(0));
    const int digit = byte ? hexDigitValue(static_cast<char>(*byte)) : -1;
    if (!caret_.characters && digit < 0) {
        EDITPLACE_Refuse("Only hex digits can be typed here; Tab goes to the characters");
    } else if (!byte) {
        EDITPLACE_Refuse("Only Latin-1 characters are allowed");
    } else if (mayType()) {
        if (selection_) {
            placeCaret(selection_->range().start); // where a paste goes too
        }
        caret_.characters ? typeByte(*byte) : typeDigit(static_cast<uint8_t>(digit));
    }
    return true;
}

// The first digit shows in the image at once where it holds the byte, else with the second one.
void HexDumpArea::typeDigit(uint8_t digit) {
    if (caret_.digit) {
        typeByte(static_cast<uint8_t>(*caret_.digit << 4 | digit));
        return;
    }
    const DumpCaret half{caret_.address, false, false, digit, heldByte(caret_.address)};
    if (half.before) {
        EDIT_TypeByte(half.address, static_cast<uint8_t>(digit << 4 | (*half.before & 0xF)));
    }
    caret_ = half;
    reveal(half.address);
    viewport()->update();
}

void HexDumpArea::typeByte(uint8_t byte) {
    DumpCaret next = caret_;
    EDIT_TypeByte(next.address, byte);
    next.behind = next.address == range_.last();
    next.address += next.behind ? 0 : 1;
    caret_ = {next.address, next.characters, next.behind};
    reveal(next.address);
    viewport()->update();
    tellPlace();
}

// The byte is what it was before its first digit.
void HexDumpArea::leaveHalfByte() {
    if (caret_.digit && caret_.before) {
        EDIT_TypeByte(caret_.address, uint8_t{*caret_.before});
    }
    placeCaret(caret_.address);
}
