// The terminal's simple form: what is received at the left, what is typed at the right.
#pragma once

#include <QTimer>
#include <QWidget>
#include <string>

class QAction;
class QHBoxLayout;
class QPlainTextEdit;

class TerminalSimple : public QWidget {
public:
    explicit TerminalSimple(QWidget* parent);
    void refresh(); // shows all that is there
    // Ready to type, but for a click that begins to select what was received.
    void activate();
    void setShown(bool shown); // one that is not follows nothing
    // The item that leads to the other form: a button above the panes, and in their menus.
    void addFormItem(QAction* item);

private:
    void takeChange();
    void showReceived(const std::string& bytes);

    QHBoxLayout* sendHead_ = nullptr;
    QPlainTextEdit* receive_ = nullptr;
    QPlainTextEdit* send_ = nullptr;
    QTimer timer_{this};
    QString shown_;
};
