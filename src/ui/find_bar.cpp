#include "ui/find_bar.h"

#include "persist/hex_text.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <algorithm>

namespace {

enum Kind : int { kBytes, kText };
constexpr size_t kMaxPattern = 1024; // bytes

class FindBar : public QWidget {
public:
    FindBar(QWidget* parent, FindRequest find, std::function<void()> closed)
        : QWidget(parent), find_(std::move(find)), closed_(std::move(closed)),
          layout_(new QBoxLayout(QBoxLayout::LeftToRight, this)), kind_(new QComboBox(this)),
          edit_(new QLineEdit(this)), message_(new QLabel(this)) {
        layout_->setContentsMargins(4, 2, 4, 2);
        auto* entry = new QHBoxLayout;
        auto* buttons = new QHBoxLayout;
        layout_->addLayout(entry, 1);
        layout_->addLayout(buttons);
        layout_->addWidget(message_);
        addKind(entry);
        edit_->setAccessibleName("What to find");
        entry->addWidget(edit_, 1);
        addButton(buttons, "&Next", "findNext", true);
        addButton(buttons, "Previo&us", "findPrevious", false);
        QToolButton* close = FINDBAR_CreateClose(this);
        connect(close, &QToolButton::clicked, this, [this] { leave(); });
        entry->insertWidget(0, close);
        message_->setObjectName("findMessage");
        hide();
    }

    void preferText() { kind_->setCurrentIndex(kText); }

    void open() {
        setVisible(true);
        edit_->selectAll();
        edit_->setFocus(Qt::ShortcutFocusReason);
    }

protected:
    void keyPressEvent(QKeyEvent* event) override {
        if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
            search(!event->modifiers().testFlag(Qt::ShiftModifier));
        } else if (event->key() == Qt::Key_Escape) {
            leave();
        } else {
            QWidget::keyPressEvent(event);
        }
    }

    void resizeEvent(QResizeEvent*) override { arrange(); }

private:
    // Its parts stand side by side, or one below the other where the window is too narrow.
    void arrange() {
        layout_->setDirection(QBoxLayout::LeftToRight);
        if (layout_->minimumSize().width() > width()) {
            layout_->setDirection(QBoxLayout::TopToBottom);
        }
    }

    void showMessage(const QString& message) {
        message_->setText(message);
        message_->setVisible(!message.isEmpty());
        arrange();
    }

    void addKind(QHBoxLayout* layout) {
        auto* label = new QLabel("Fin&d:", this);
        label->setBuddy(edit_);
        kind_->addItems({"Bytes", "Text"});
        kind_->setObjectName("findKind");
        edit_->setObjectName("findText");
        edit_->setMinimumWidth(12 * fontMetrics().averageCharWidth());
        const auto tellForm = [this] {
            edit_->setPlaceholderText(kind_->currentIndex() == kBytes ? "Hex digits, as in 01 FF 3C"
                                                                      : "Characters");
            showMessage({});
        };
        connect(kind_, &QComboBox::currentIndexChanged, this, tellForm);
        connect(edit_, &QLineEdit::textChanged, this, [this] { showMessage({}); });
        tellForm();
        layout->addWidget(label);
        layout->addWidget(kind_);
    }

    void addButton(QHBoxLayout* layout, const QString& text, const QString& name, bool forward) {
        auto* button = new QPushButton(text, this);
        button->setObjectName(name);
        button->setAutoDefault(true); // Enter presses the button that has the focus
        connect(button, &QPushButton::clicked, this, [this, forward] { search(forward); });
        layout->addWidget(button);
    }

    // The bytes that the entered text stands for; a message instead when it stands for none.
    QString readPattern(std::vector<uint8_t>& pattern) const {
        const QString text = edit_->text();
        if (kind_->currentIndex() == kBytes) {
            std::string error;
            pattern =
                HEXTEXT_ToBytes(text.simplified().remove(' ').toStdString(), kMaxPattern, error);
            return QString::fromStdString(error);
        }
        if (std::ranges::any_of(text, [](QChar letter) { return letter.unicode() > 0xFF; })) {
            return "Only Latin-1 characters are allowed";
        }
        const QByteArray bytes = text.toLatin1();
        pattern.assign(bytes.begin(), bytes.end());
        return {};
    }

    void search(bool forward) {
        std::vector<uint8_t> pattern;
        QString message = readPattern(pattern);
        if (message.isEmpty() && !pattern.empty()) {
            message = find_(pattern, forward);
        }
        showMessage(message);
    }

    void leave() {
        hide();
        closed_();
    }

    FindRequest find_;
    std::function<void()> closed_;
    QBoxLayout* layout_;
    QComboBox* kind_;
    QLineEdit* edit_;
    QLabel* message_;
};

} // namespace

QToolButton* FINDBAR_CreateClose(QWidget* bar) {
    auto* close = new QToolButton(bar);
    close->setText("\u00D7");
    close->setToolTip("Close (Esc)");
    close->setAccessibleName("Close");
    close->setAutoRaise(true);
    return close;
}

QWidget* FINDBAR_Create(QWidget* parent, FindRequest find, std::function<void()> closed) {
    return new FindBar(parent, std::move(find), std::move(closed));
}

void FINDBAR_Open(QWidget* bar) {
    static_cast<FindBar*>(bar)->open();
}

void FINDBAR_PreferText(QWidget* bar) {
    static_cast<FindBar*>(bar)->preferText();
}
