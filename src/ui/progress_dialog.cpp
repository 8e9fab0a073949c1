#include "ui/progress_dialog.h"

#include "notice/progress.h"
#include "platform/event_queue.h"
#include "shell/progress_line.h"
#include "ui/sheet.h"

#include <QApplication>
#include <QCoreApplication>
#include <QDialog>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>
#include <QWindow>
#include <memory>

namespace {

constexpr int kTickMs = 100;
constexpr int kCancelId = 2;
constexpr int kWidth = 340; // pixels
const QColor kFilled(10, 36, 106);
const QColor kEmpty(212, 208, 200);

// A bar with its percentage, or a short text, inside: dark on the empty part, light on the filled.
class Bar : public QWidget {
public:
    explicit Bar(QWidget* parent) : QWidget(parent) { setObjectName("904"); }

    void show(const ProgressView& view) {
        view_ = view;
        const QString text = textOf(view);
        setAccessibleName(text);
        update();
    }

    QSize sizeHint() const override { return {kWidth, fontMetrics().height() + 6}; }

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.fillRect(rect(), kEmpty);
        const int split = view_.barTextMode ? 0 : PROGRESS_Share(view_, width());
        const QRect filled(0, 0, split, height());
        painter.fillRect(filled, kFilled);
        drawText(painter, QRect(split, 0, width() - split, height()), Qt::black);
        drawText(painter, filled, Qt::white);
    }

private:
    static QString textOf(const ProgressView& view) {
        return view.barTextMode ? QString::fromStdString(view.barText)
                                : QString("%1%").arg(PROGRESS_Percent(view));
    }

    void drawText(QPainter& painter, const QRect& part, const QColor& colour) {
        painter.setClipRect(part);
        painter.setPen(colour);
        painter.drawText(rect(), Qt::AlignCenter, textOf(view_));
    }

    ProgressView view_;
};

class ProgressDialog : public QDialog {
public:
    explicit ProgressDialog(QWidget* parent) : QDialog(parent) {
        setObjectName("900");
        setWindowFlag(Qt::WindowContextHelpButtonHint, false);
        auto* layout = new QVBoxLayout(this);
        for (int line = 0; line < kLines; ++line) {
            lines_[line] = new QLabel(this);
            lines_[line]->setObjectName(QString::number(901 + line));
            lines_[line]->setAlignment(Qt::AlignCenter);
            lines_[line]->setTextFormat(Qt::PlainText);
            layout->addWidget(lines_[line]);
        }
        bar_ = new Bar(this);
        layout->addWidget(bar_);
        details_ = new QLabel(this);
        details_->setObjectName("details");
        details_->setAlignment(Qt::AlignCenter);
        details_->setTextFormat(Qt::PlainText);
        layout->addWidget(details_);
        cancel_ = new QPushButton("Cancel", this);
        cancel_->setObjectName(QString::number(kCancelId));
        layout->addWidget(cancel_, 0, Qt::AlignHCenter);
        QSizePolicy keepsPlace = cancel_->sizePolicy();
        keepsPlace.setRetainSizeWhenHidden(true);
        cancel_->setSizePolicy(keepsPlace);
        connect(cancel_, &QPushButton::clicked, this, [this] { reject(); });
        connect(&timer_, &QTimer::timeout, this, [this] { tick(); });
    }

    void begin() {
        for (QLabel* line : lines_) {
            line->clear();
        }
        bar_->show({});
        details_->clear();
        rate_ = {};
        setWindowTitle(QString::fromStdString(PROGRESS_GetView().caption));
        tick();
        resize(std::max(kWidth, sizeHint().width()), sizeHint().height());
        if (parentWidget() != nullptr && parentWidget()->isVisible()) {
            SHEET_CenterDialog(this);
        }
        timer_.start(kTickMs);
        // What the program began by itself leaves the keyboard to whoever has it.
        const bool isInFront = QApplication::activeWindow() != nullptr;
        setAttribute(Qt::WA_ShowWithoutActivating, !isInFront);
        show();
        if (isInFront) {
            raise();
            activateWindow();
        }
        cancel_->setFocus();
    }

    // Copies the state into the controls.
    void tick() {
        const ProgressView view = PROGRESS_GetView();
        if (view.closeRequest) {
            leave();
            tellEnd(view);
            return;
        }
        setBusyCursor(view.busyCursor);
        cancel_->setVisible(view.showCancel);
        lines_[2]->setText(QString::fromStdString(view.line3));
        if (view.barTextMode || view.hasRange) {
            bar_->show(view);
        }
        details_->setText(
            QString::fromStdString(PROGRESSLINE_Details(view, PROGRESSLINE_Rate(rate_, view))));
        if (view.hasRange) {
            lines_[0]->setText(QString::fromStdString(view.line1));
            lines_[1]->setText(QString::fromStdString(view.line2));
        }
    }

    // Cancel, Escape and the close box.
    void reject() override {
        if (cancel_->isHidden()) {
            return;
        }
        leave();
        PROGRESS_Cancel();
    }

private:
    static constexpr int kLines = 3;

    void leave() {
        timer_.stop();
        setBusyCursor(false);
        hide();
    }

    // A sound, and a mark on the frame where another window is in front.
    void tellEnd(const ProgressView& view) {
        if (PROGRESSLINE_IsLong(view)) {
            QApplication::beep();
            QApplication::alert(parentWidget());
        }
    }

    void setBusyCursor(bool busy) {
        QWidget* frame = parentWidget();
        for (QWidget* widget : {frame, static_cast<QWidget*>(this)}) {
            if (widget != nullptr && busy != (widget->cursor().shape() == Qt::BusyCursor)) {
                busy ? widget->setCursor(Qt::BusyCursor) : widget->unsetCursor();
            }
        }
    }

    QLabel* lines_[kLines] = {};
    Bar* bar_ = nullptr;
    QLabel* details_ = nullptr;
    ProgressRate rate_;
    QPushButton* cancel_ = nullptr;
    QTimer timer_{this};
};

std::unique_ptr<ProgressDialog> dialog;

// What the operation does first may hold this thread up: the window must be seen before.
void paintFirst() {
    QTimer limit;
    limit.setSingleShot(true);
    limit.start(kTickMs);
    while (!dialog->windowHandle()->isExposed() && limit.isActive()) {
        QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents |
                                        QEventLoop::WaitForMoreEvents);
    }
    dialog->repaint();
    QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
}

void opened(void*) {
    dialog->begin();
    paintFirst();
}

// The window closes before the box that tells the result opens, so on this thread at once.
void changed() {
    EVENTS_Post([] {
        if (dialog && dialog->isVisible()) {
            dialog->tick();
        }
    });
}

} // namespace

void PROGRESSDIALOG_Install(QWidget* frame) {
    dialog = std::make_unique<ProgressDialog>(frame);
    PROGRESS_SetObserver({opened, changed});
}

void PROGRESSDIALOG_Remove() {
    PROGRESS_SetObserver({});
    dialog.reset();
}
