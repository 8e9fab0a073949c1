#include "ui/notice_bar.h"

#include "shell/command_ids.h"
#include "shell/frame_rules.h"
#include "shell/port_notice.h"
#include "shell/program_on_change.h"

#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace {

// What is wrong with the port comes first: nothing else can be done until that is mended.
Notice notice() {
    const Notice port = PORTNOTICE_Get();
    return port == Notice{} ? ONCHANGE_Notice() : port;
}

void tryAgain() {
    if (PORTNOTICE_Get() == Notice{}) {
        ONCHANGE_TryAgain();
    } else {
        PORTNOTICE_TryAgain();
    }
}

class NoticeBar : public QFrame {
public:
    explicit NoticeBar(QWidget* parent) : QFrame(parent) {
        setObjectName("notice");
        setFrameStyle(QFrame::StyledPanel | QFrame::Plain);
        setBackgroundRole(QPalette::ToolTipBase);
        setAutoFillBackground(true);
        auto* row = new QHBoxLayout(this);
        auto* texts = new QVBoxLayout;
        row->addLayout(texts, 1);
        text_ = addLabel(texts, "noticeText");
        QFont bold = font();
        bold.setBold(true);
        text_->setFont(bold);
        hint_ = addLabel(texts, "noticeHint");
        addButton(row, "Options...", [] { FRAMERULES_Run(CMD_OPTIONS); });
        addButton(row, "Try again", tryAgain);
        hide();
    }

    void tell(const Notice& notice) {
        if (told_ == notice) {
            return;
        }
        told_ = notice;
        text_->setText(QString::fromStdString(notice.text));
        hint_->setText(QString::fromStdString(notice.hint));
        hint_->setVisible(!notice.hint.empty());
        setVisible(!notice.text.empty());
    }

private:
    QLabel* addLabel(QVBoxLayout* layout, const char* name) {
        auto* label = new QLabel(this);
        label->setObjectName(name);
        label->setTextFormat(Qt::PlainText);
        label->setWordWrap(true);
        label->setTextInteractionFlags(Qt::TextSelectableByMouse);
        layout->addWidget(label);
        return label;
    }

    void addButton(QHBoxLayout* layout, const char* text, void (*action)()) {
        auto* button = new QPushButton(text, this);
        button->setObjectName(text);
        layout->addWidget(button, 0, Qt::AlignVCenter);
        connect(button, &QPushButton::clicked, this, action);
    }

    Notice told_;
    QLabel* text_ = nullptr;
    QLabel* hint_ = nullptr;
};

NoticeBar* bar = nullptr;

} // namespace

QWidget* NOTICEBAR_Create(QWidget* parent) {
    bar = new NoticeBar(parent);
    return bar;
}

void NOTICEBAR_Detach() {
    bar = nullptr;
}

void NOTICEBAR_Refresh() {
    if (bar != nullptr) {
        bar->tell(notice());
    }
}
