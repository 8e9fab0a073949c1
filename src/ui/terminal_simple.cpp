#include "ui/terminal_simple.h"

#include "serial/terminal_buffer.h"
#include "target/worker.h"
#include "ui/look.h"
#include "ui/terminal_tools.h"
#include "ui/terminal_typing.h"

#include <QApplication>
#include <QGridLayout>
#include <QLabel>
#include <QMenu>
#include <QScrollBar>

namespace {

constexpr int kRefreshMs = 250;
constexpr int kReceiveBlocks = 5000; // lines; the buffer holds fewer
constexpr int kSendBlocks = 2000;

// Sends every key at once and shows what it sent.
class SendPane : public TypingPane {
public:
    explicit SendPane(QWidget* parent) : TypingPane(parent) { setMaximumBlockCount(kSendBlocks); }

protected:
    void type(const TerminalKey& key) override {
        TARGET_TerminalSend(key.value);
        const QString echo = TERMINALKEYS_Echo(key);
        if (!echo.isEmpty()) {
            moveCursor(QTextCursor::End);
            insertPlainText(echo);
            ensureCursorVisible();
        }
    }
};

QLabel* createLabel(const char* text, QWidget* pane, QWidget* parent) {
    auto* label = new QLabel(text, parent);
    label->setBuddy(pane);
    return label;
}

} // namespace

TerminalSimple::TerminalSimple(QWidget* parent)
    : QWidget(parent), sendHead_(new QHBoxLayout), receive_(new QPlainTextEdit(this)),
      send_(new SendPane(this)) {
    receive_->setObjectName("Receive");
    receive_->setReadOnly(true);
    receive_->setAcceptDrops(false);
    receive_->setMaximumBlockCount(kReceiveBlocks);
    receive_->setFont(LOOK_FixedFont());
    send_->setObjectName("Send");
    auto* layout = new QGridLayout(this);
    layout->setContentsMargins(5, 2, 5, 5);
    layout->setHorizontalSpacing(10);
    layout->setVerticalSpacing(1);
    layout->addWidget(createLabel("Receive:", receive_, this), 0, 0);
    layout->addLayout(sendHead_, 0, 1);
    sendHead_->addWidget(createLabel("Send:", send_, this));
    sendHead_->addStretch(1);
    layout->addWidget(receive_, 1, 0);
    layout->addWidget(send_, 1, 1);
    layout->setRowStretch(1, 1);
    setFocusProxy(send_);
    connect(&timer_, &QTimer::timeout, this, [this] { takeChange(); });
}

void TerminalSimple::refresh() {
    showReceived(TERMINAL_GetText());
}

void TerminalSimple::activate() {
    if (QApplication::mouseButtons() == Qt::NoButton || !receive_->underMouse()) {
        send_->setFocus();
    }
}

void TerminalSimple::setShown(bool shown) {
    if (shown) {
        refresh();
        timer_.start(kRefreshMs);
    } else {
        timer_.stop();
    }
}

void TerminalSimple::addFormItem(QAction* item) {
    sendHead_->addWidget(TERMINALTOOLS_CreateButton(item, this));
    for (QPlainTextEdit* pane : {receive_, send_}) {
        pane->setContextMenuPolicy(Qt::CustomContextMenu);
        connect(pane, &QWidget::customContextMenuRequested, this,
                [pane, item](const QPoint& place) {
                    QMenu* menu = pane->createStandardContextMenu(place);
                    menu->setAttribute(Qt::WA_DeleteOnClose);
                    menu->addSeparator();
                    menu->addAction(item);
                    menu->popup(pane->mapToGlobal(place));
                });
    }
}

void TerminalSimple::takeChange() {
    std::string text;
    if (TERMINAL_TakeIfChanged(text)) {
        showReceived(text);
    }
}

// The usual case, more text behind the old, leaves a selection of the user alone.
void TerminalSimple::showReceived(const std::string& bytes) {
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
