#include "ui/terminal_bars.h"

#include "shell/terminal_sender.h"
#include "ui/find_bar.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTimer>

namespace {

QHBoxLayout* createBarLayout(QWidget* bar) {
    auto* layout = new QHBoxLayout(bar);
    layout->setContentsMargins(4, 2, 4, 2);
    return layout;
}

class HexBar : public QWidget {
public:
    HexBar(QWidget* parent, std::function<void()> sent, std::function<void()> closed)
        : QWidget(parent), sent_(std::move(sent)), closed_(std::move(closed)),
          edit_(new QLineEdit(this)), message_(new QLabel(this)) {
        auto* layout = createBarLayout(this);
        QToolButton* close = FINDBAR_CreateClose(this);
        connect(close, &QToolButton::clicked, this, [this] { leave(); });
        auto* label = new QLabel("He&x:", this);
        label->setBuddy(edit_);
        edit_->setObjectName("hexText");
        edit_->setAccessibleName("Bytes to send");
        edit_->setPlaceholderText("Hex digits, as in 01 FF 3C");
        message_->setObjectName("hexMessage");
        auto* send = new QPushButton("Send", this);
        send->setObjectName("hexSend");
        send->setAccessibleName("Send the bytes");
        layout->addWidget(close);
        layout->addWidget(label);
        layout->addWidget(edit_, 1);
        layout->addWidget(send);
        layout->addWidget(message_);
        connect(send, &QPushButton::clicked, this, [this] { sendBytes(); });
        connect(edit_, &QLineEdit::textChanged, message_, &QLabel::clear);
    }

    void open() {
        edit_->selectAll();
        edit_->setFocus(Qt::ShortcutFocusReason);
    }

protected:
    void keyPressEvent(QKeyEvent* event) override {
        if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
            sendBytes();
        } else if (event->key() == Qt::Key_Escape) {
            leave();
        } else {
            QWidget::keyPressEvent(event);
        }
    }

private:
    void sendBytes() {
        std::string error;
        if (TERMSEND_Hex(edit_->text().toStdString(), error)) {
            sent_();
            edit_->selectAll();
        }
        message_->setText(QString::fromStdString(error));
    }

    void leave() {
        hide();
        closed_();
    }

    std::function<void()> sent_;
    std::function<void()> closed_;
    QLineEdit* edit_;
    QLabel* message_;
};

class SendBar : public QWidget {
public:
    SendBar(QWidget* parent, std::function<void()> ended)
        : QWidget(parent), ended_(std::move(ended)), progress_(new QLabel(this)),
          cancel_(new QPushButton("&Cancel", this)) {
        auto* layout = createBarLayout(this);
        progress_->setObjectName("sendProgress");
        progress_->setAccessibleName("Progress of sending");
        cancel_->setObjectName("sendCancel");
        cancel_->setAccessibleName("Cancel sending");
        layout->addWidget(progress_, 1);
        layout->addWidget(cancel_);
        connect(cancel_, &QPushButton::clicked, this, [this] {
            TERMSEND_Cancel();
            tell();
        });
        connect(&timer_, &QTimer::timeout, this, [this] { turn(); });
        hide();
    }
    ~SendBar() override { TERMSEND_Cancel(); }

    void follow() {
        timer_.start(kTermSendTurnMs);
        turn();
    }

private:
    void turn() {
        TERMSEND_Turn();
        tell();
    }

    void tell() {
        const bool hadFocus = cancel_->hasFocus();
        progress_->setText(QString::fromStdString(TERMSEND_Progress()));
        setVisible(TERMSEND_IsRunning());
        if (!TERMSEND_IsRunning()) {
            timer_.stop();
            if (hadFocus) {
                ended_();
            }
        }
    }

    std::function<void()> ended_;
    QLabel* progress_;
    QPushButton* cancel_;
    QTimer timer_{this};
};

} // namespace

QWidget* HEXBAR_Create(QWidget* parent, std::function<void()> sent, std::function<void()> closed) {
    return new HexBar(parent, std::move(sent), std::move(closed));
}

void HEXBAR_Open(QWidget* bar) {
    static_cast<HexBar*>(bar)->open();
}

QWidget* SENDBAR_Create(QWidget* parent, std::function<void()> ended) {
    return new SendBar(parent, std::move(ended));
}

void SENDBAR_Follow(QWidget* bar) {
    static_cast<SendBar*>(bar)->follow();
}
