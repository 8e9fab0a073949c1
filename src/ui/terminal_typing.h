// What the terminal's panes have in common: every key that is pressed in one is the target's, but
// for the menu's keys; a pane is no editor.
#pragma once

#include "ui/terminal_keys.h"

#include <QPlainTextEdit>

class TypingPane : public QPlainTextEdit {
public:
    explicit TypingPane(QWidget* parent);

protected:
    // Sends what the key stands for and shows what is to be seen of it.
    virtual void type(const TerminalKey& key) = 0;

    bool event(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void inputMethodEvent(QInputMethodEvent* event) override; // text that is composed
    bool focusNextPrevChild(bool) override { return false; }  // Tab is sent
    bool canInsertFromMimeData(const QMimeData*) const override { return false; }
    void insertFromMimeData(const QMimeData*) override {}
};
