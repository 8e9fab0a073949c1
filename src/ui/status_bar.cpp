#include "ui/status_bar.h"

#include "notice/status.h"
#include "platform/event_queue.h"
#include "serial/sio.h"
#include "shell/link_indicator.h"
#include "ui/look.h"
#include "ui/port_text.h"

#include <QHelpEvent>
#include <QLabel>
#include <QToolTip>
#include <algorithm>
#include <array>
#include <optional>

namespace {

constexpr int kPartMargin = 4; // pixels beside a text

class StatusBar : public QStatusBar {
public:
    explicit StatusBar(QWidget* parent) : QStatusBar(parent) {
        setObjectName("500");
        for (int part = 0; part < kStatusParts; ++part) {
            auto* label = new QLabel(this);
            label->setObjectName(QString("500.%1").arg(part));
            label->setTextFormat(Qt::PlainText);
            label->setFrameStyle(QFrame::Panel | QFrame::Sunken);
            label->setMargin(1);
            label->setAttribute(Qt::WA_TransparentForMouseEvents); // the bar answers for them
            label->setText(QString::fromStdString(STATUS_GetText(part)));
            labels_[static_cast<size_t>(part)] = label;
        }
        general_ = labels_[STATUS_GENERAL]->text();
        link_ = new QLabel(labels_[0]);
        link_->setObjectName("link");
        link_->setTextFormat(Qt::PlainText);
        link_->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
        setMinimumHeight(labels_[0]->sizeHint().height() + kPartMargin);
    }

    void setPart(int part, const QString& text) {
        if (part == STATUS_GENERAL) {
            general_ = text;
        } else {
            labels_[static_cast<size_t>(part)]->setText(text);
        }
        layOut();
    }

    void showLink(LinkIndicator state) {
        if (shown_ == state) {
            return;
        }
        shown_ = state;
        const QPalette colours = palette();
        const bool isBad = state == LinkIndicator::lost || state == LinkIndicator::noPort;
        const bool isGood = state == LinkIndicator::loaderRuns || state == LinkIndicator::inBootRom;
        QPalette own = colours;
        own.setColor(QPalette::WindowText, isBad    ? LOOK_BadColour(colours)
                                           : isGood ? LOOK_GoodColour(colours)
                                                    : colours.color(QPalette::WindowText));
        link_->setPalette(own);
        link_->setText(LINKINDICATOR_Text(state));
        link_->setAccessibleName(QString("Link: ") + LINKINDICATOR_Text(state));
        layOut();
    }

protected:
    void resizeEvent(QResizeEvent* event) override {
        QStatusBar::resizeEvent(event);
        layOut();
    }

    void changeEvent(QEvent* event) override {
        QStatusBar::changeEvent(event);
        if (event->type() == QEvent::PaletteChange) {
            shown_.reset();
        }
    }

    bool event(QEvent* event) override {
        if (event->type() != QEvent::ToolTip) {
            return QStatusBar::event(event);
        }
        const auto* help = static_cast<QHelpEvent*>(event);
        const auto isOver = [&](StatusPart part) {
            return labels_[part]->geometry().contains(help->pos());
        };
        const QString text = isOver(STATUS_SERIAL) ? QString::fromStdString(STATUSBAR_PortText())
                             : isOver(STATUS_GENERAL) && labels_[STATUS_GENERAL]->text() != general_
                                 ? general_
                                 : QString();
        QToolTip::showText(help->globalPos(), text, this);
        return true;
    }

    void paintEvent(QPaintEvent*) override {} // the parts paint themselves

private:
    // A part that is too narrow for its text grows at the expense of the first.
    void layOut() {
        int edges[kStatusParts];
        STATUS_Layout(width(), edges);
        int right = edges[kStatusParts - 1];
        for (int part = kStatusParts - 1; part >= 0; --part) {
            QLabel* label = labels_[static_cast<size_t>(part)];
            const int given = part > 0 ? edges[part] - edges[part - 1] : std::max(0, right);
            const int wanted = part > 0 ? label->sizeHint().width() + kPartMargin : 0;
            const int widthOfPart = std::max(given, wanted);
            label->setGeometry(right - widthOfPart, 1, widthOfPart - 1, height() - 2);
            right -= widthOfPart;
        }
        const int width = link_->sizeHint().width() + 2 * kPartMargin;
        link_->setGeometry(labels_[0]->width() - width, 0, width - kPartMargin,
                           labels_[0]->height());
        showGeneral(labels_[STATUS_GENERAL]->width() - width);
    }

    // As many of its parts, which are two blanks apart, as there is room for.
    void showGeneral(int room) {
        QLabel* label = labels_[STATUS_GENERAL];
        const QFontMetrics metrics = label->fontMetrics();
        room -= 2 * kPartMargin;
        QString text = general_;
        while (metrics.horizontalAdvance(text) > room && text.contains("  ")) {
            text.truncate(text.lastIndexOf("  "));
        }
        label->setText(metrics.elidedText(text, Qt::ElideRight, room));
        label->setAccessibleName(general_);
    }

    std::array<QLabel*, kStatusParts> labels_{};
    QString general_;        // all of the first part's text
    QLabel* link_ = nullptr; // at the end of the first part
    std::optional<LinkIndicator> shown_;
};

StatusBar* bar = nullptr;

} // namespace

QStatusBar* STATUSBAR_Create(QWidget* parent) {
    bar = new StatusBar(parent);
    STATUS_SetObserver([](int part, const std::string& text) {
        EVENTS_Post([part, text] {
            if (bar != nullptr) {
                bar->setPart(part, QString::fromStdString(text));
            }
        });
    });
    return bar;
}

void STATUSBAR_ShowLink() {
    if (bar != nullptr) {
        bar->showLink(LINKINDICATOR_Of(LINKINDICATOR_Facts()));
    }
}

void STATUSBAR_Detach() {
    STATUS_SetObserver({});
    bar = nullptr;
}

std::string STATUSBAR_PortText() {
    const std::string name = SIO_PortName();
    if (name.empty()) {
        return "No port is selected";
    }
    const std::string device = SIO_GetDevice();
    return name + " is " +
           (device.empty() ? PORTTEXT_DeviceOf(SIO_GetPort()) : PORTTEXT_State(device));
}
