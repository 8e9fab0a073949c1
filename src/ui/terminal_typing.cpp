#include "ui/terminal_typing.h"

#include "ui/frame_menu.h"
#include "ui/look.h"

#include <QInputMethodEvent>
#include <QKeyEvent>

TypingPane::TypingPane(QWidget* parent) : QPlainTextEdit(parent) {
    setAcceptDrops(false);
    setUndoRedoEnabled(false);
    setFont(LOOK_FixedFont());
}

bool TypingPane::event(QEvent* event) {
    if (event->type() == QEvent::ShortcutOverride) {
        const auto* key = static_cast<QKeyEvent*>(event);
        if (FRAMEMENU_IsEditKey(key->key(), key->modifiers())) {
            event->accept(); // comes here and not to the menu
            return true;
        }
    }
    return QPlainTextEdit::event(event);
}

void TypingPane::keyPressEvent(QKeyEvent* event) {
    // The menu's keys are the menu's also while their items are disabled.
    if (FRAMEMENU_IsAccelerator(event->key(), event->modifiers())) {
        return;
    }
    if ((event->modifiers() & Qt::AltModifier) != 0) {
        event->ignore(); // for the menu bar
        return;
    }
    const auto key = TERMINALKEYS_Translate(event->key(), event->modifiers(), event->text());
    if (key) {
        type(*key);
    }
}

void TypingPane::inputMethodEvent(QInputMethodEvent* event) {
    for (const QChar character : event->commitString()) {
        const auto key = TERMINALKEYS_Translate(Qt::Key_unknown, {}, QString(character));
        if (key) {
            type(*key);
        }
    }
    event->accept();
}
