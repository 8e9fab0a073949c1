// The terminal's simple form: what is received at the left, what is typed at the right.
#pragma once

#include <QTimer>
#include <QWidget>
#include <string>

class QAction;
class QPlainTextEdit;

class TerminalSimple : public QWidget {
public:
    explicit TerminalSimple(QWidget* parent);
    void refresh(); // shows all that is there
    // Ready to type, but for a click that begins to select what was received.
    void activate();
    void setShown(bool shown); // one that is not follows nothing
    // An item that its context menus end with.
    void addMenuItem(QAction* item);

private:
    void takeChange();
    void showReceived(const std::string& bytes);

    QPlainTextEdit* receive_ = nullptr;
    QPlainTextEdit* send_ = nullptr;
    QTimer timer_;
    QString shown_;
};
