// The terminal's one pane: what was received and typed, in the order in which it happened. It
// follows the end while it is there; new text leaves a selection and what is looked at alone.
#pragma once

#include "shell/terminal_text.h"
#include "ui/terminal_typing.h"

#include <QTimer>
#include <functional>
#include <vector>

class TerminalPane : public TypingPane {
public:
    // `leave` is called when the user goes to the tools by Shift+Tab.
    TerminalPane(QWidget* parent, std::function<void()> leave);

    void setSettings(const TerminalSettings& settings); // shows all anew where it is the form
    void setShown(bool shown);                          // one that is not follows nothing
    void refresh();                                     // takes what has come since
    void clearShown();                                  // what came before is not shown again
    // Selects the next place of the bytes as they are shown; the message for the find bar.
    QString find(const std::vector<uint8_t>& pattern, bool forward);

protected:
    void type(const TerminalKey& key) override;
    void keyPressEvent(QKeyEvent* event) override;
    void changeEvent(QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    bool isAtEnd() const;
    void goToEnd();
    void showAnew();
    void append(const std::vector<TerminalRun>& runs);
    void select(int anchor, int position);
    void trim();
    QTextCharFormat formatOf(TerminalSource source) const;
    void send(std::string_view bytes);

    std::function<void()> leave_;
    TerminalSettings settings_;
    TerminalText text_{settings_};
    uint64_t taken_ = 0; // of the history
    QTimer timer_{this};
};
