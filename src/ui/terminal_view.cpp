#include "serial/terminal_buffer.h"
#include "target/worker.h"
#include "ui/frame_menu.h"
#include "ui/look.h"
#include "ui/terminal_keys.h"
#include "ui/view_widget.h"

#include <QApplication>
#include <QGridLayout>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QLabel>
#include <QPlainTextEdit>
#include <QScrollBar>
#include <QTimer>

namespace {

constexpr int kRefreshMs = 250;
constexpr int kReceiveBlocks = 5000; // lines; the buffer holds fewer
constexpr int kSendBlocks = 2000;

void typeKey(QPlainTextEdit& pane, const TerminalKey& key) {
    TARGET_TerminalSend(key.value);
    const QString echo = TERMINALKEYS_Echo(key);
    if (!echo.isEmpty()) {
        pane.moveCursor(QTextCursor::End);
        pane.insertPlainText(echo);
        pane.ensureCursorVisible();
    }
}

// Sends every key at once and shows what it sent; it is no editor.
class SendPane : public QPlainTextEdit {
public:
    explicit SendPane(QWidget* parent) : QPlainTextEdit(parent) {
        setAcceptDrops(false);
        setUndoRedoEnabled(false);
        setMaximumBlockCount(kSendBlocks);
    }

protected:
    bool event(QEvent* event) override {
        if (event->type() == QEvent::ShortcutOverride) {
            const auto* key = static_cast<QKeyEvent*>(event);
            if (FRAMEMENU_IsEditKey(key->key(), key->modifiers())) {
                event->accept(); // comes here and not to the menu
                return true;
            }
        }
        return QPlainTextEdit::event(event);
    }

    void keyPressEvent(QKeyEvent* event) override {
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
            typeKey(*this, *key);
        }
    }

    // Text that an input method has composed.
    void inputMethodEvent(QInputMethodEvent* event) override {
        for (const QChar character : event->commitString()) {
            const auto key = TERMINALKEYS_Translate(Qt::Key_unknown, {}, QString(character));
            if (key) {
                typeKey(*this, *key);
            }
        }
        event->accept();
    }

    bool focusNextPrevChild(bool) override { return false; } // Tab is sent

    bool canInsertFromMimeData(const QMimeData*) const override { return false; }
    void insertFromMimeData(const QMimeData*) override {}
};

QLabel* createLabel(const char* text, QWidget* pane, QWidget* parent) {
    auto* label = new QLabel(text, parent);
    label->setBuddy(pane);
    return label;
}

class TerminalView final : public ViewWidget {
public:
    explicit TerminalView(QWidget* parent) : ViewWidget(parent) {
        receive_ = new QPlainTextEdit(this);
        receive_->setObjectName("Receive");
        receive_->setReadOnly(true);
        receive_->setAcceptDrops(false);
        receive_->setMaximumBlockCount(kReceiveBlocks);
        send_ = new SendPane(this);
        send_->setObjectName("Send");
        const QFont fixed = LOOK_FixedFont();
        receive_->setFont(fixed);
        send_->setFont(fixed);
        auto* layout = new QGridLayout(this);
        layout->setContentsMargins(5, 2, 5, 5);
        layout->setHorizontalSpacing(10);
        layout->setVerticalSpacing(1);
        layout->addWidget(createLabel("Receive:", receive_, this), 0, 0);
        layout->addWidget(createLabel("Send:", send_, this), 0, 1);
        layout->addWidget(receive_, 1, 0);
        layout->addWidget(send_, 1, 1);
        layout->setRowStretch(1, 1);
        setFocusProxy(send_);
        connect(&timer_, &QTimer::timeout, this, [this] { takeChange(); });
        timer_.start(kRefreshMs);
    }

    void refresh() override { showReceived(TERMINAL_GetText()); }

    // Ready to type, but for a click that begins to select what was received.
    void activated() override {
        if (QApplication::mouseButtons() == Qt::NoButton || !receive_->underMouse()) {
            send_->setFocus();
        }
    }

private:
    void takeChange() {
        std::string text;
        if (TERMINAL_TakeIfChanged(text)) {
            showReceived(text);
        }
    }

    // The usual case, more text behind the old, leaves a selection of the user alone.
    void showReceived(const std::string& bytes) {
        const QString text = QString::fromLatin1(bytes).remove('\r');
        if (text.startsWith(shown_) && !shown_.isEmpty()) {
            QTextCursor end(receive_->document());
            end.movePosition(QTextCursor::End);
            end.insertText(text.mid(shown_.size()));
        } else {
            receive_->setPlainText(text);
        }
        shown_ = text;
        receive_->verticalScrollBar()->setValue(receive_->verticalScrollBar()->maximum());
    }

    QPlainTextEdit* receive_ = nullptr;
    SendPane* send_ = nullptr;
    QTimer timer_;
    QString shown_;
};

} // namespace

ViewWidget* TERMINALVIEW_Create(QWidget* parent) {
    return new TerminalView(parent);
}
