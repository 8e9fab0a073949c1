#include "ui/boxes.h"

#include "platform/event_queue.h"
#include "ui/modal.h"

#include <QGridLayout>
#include <QMessageBox>
#include <QSpacerItem>

namespace {

constexpr unsigned kButtonsMask = 0xF;
constexpr char kErrorCaption[] = "Error";
constexpr int kFrameButtons = 8; // width of icon and buttons beside a caption, in text heights

BoxResponder boxResponder;

QMessageBox::StandardButtons buttonsOf(unsigned boxType) {
    switch (boxType & kButtonsMask) {
    case BOX_OK_CANCEL:
        return QMessageBox::Ok | QMessageBox::Cancel;
    case BOX_YES_NO:
        return QMessageBox::Yes | QMessageBox::No;
    default:
        return QMessageBox::Ok;
    }
}

QMessageBox::StandardButton defaultOf(unsigned boxType) {
    const bool second = (boxType & BOX_DEFAULT_SECOND) != 0;
    switch (boxType & kButtonsMask) {
    case BOX_OK_CANCEL:
        return second ? QMessageBox::Cancel : QMessageBox::Ok;
    case BOX_YES_NO:
        return second ? QMessageBox::No : QMessageBox::Yes;
    default:
        return QMessageBox::Ok;
    }
}

QMessageBox::Icon iconOf(const BoxRequest& request) {
    if (request.caption == kErrorCaption) {
        return QMessageBox::Critical;
    }
    const bool question = (request.boxType & kButtonsMask) != BOX_OK;
    return question ? QMessageBox::Question : QMessageBox::Information;
}

int answerOf(int button) {
    switch (button) {
    case QMessageBox::Ok:
        return ANSWER_OK;
    case QMessageBox::Cancel:
        return ANSWER_CANCEL;
    case QMessageBox::Yes:
        return ANSWER_YES;
    case QMessageBox::No:
        return ANSWER_NO;
    default:
        return ANSWER_NONE; // ended by the program
    }
}

// A box that is only as wide as its short text would have its caption cut by the window's frame.
void makeRoomForCaption(QMessageBox& box) {
    const QFontMetrics metrics = box.fontMetrics();
    const int caption = metrics.horizontalAdvance(box.windowTitle()) * 5 / 4; // often bold
    auto* grid = qobject_cast<QGridLayout*>(box.layout());
    if (grid != nullptr) {
        auto* space = new QSpacerItem(caption + kFrameButtons * metrics.height(), 0);
        grid->addItem(space, grid->rowCount(), 0, 1, grid->columnCount());
    }
}

int show(const BoxRequest& request, QWidget* owner) {
    QString text = QString::fromStdString(request.text);
    text.replace("\r\n", "\n");
    QMessageBox box(owner);
    box.setWindowTitle(QString::fromStdString(request.caption));
    box.setTextFormat(Qt::PlainText);
    box.setText(text);
    box.setInformativeText(QString::fromStdString(request.hint)); // which it shows smaller
    box.setIcon(iconOf(request));
    box.setStandardButtons(buttonsOf(request.boxType));
    box.setDefaultButton(defaultOf(request.boxType));
    box.setTextInteractionFlags(Qt::TextSelectableByMouse);
    makeRoomForCaption(box);
    const int button = box.exec();
    return box.clickedButton() != nullptr ? answerOf(button) : int{ANSWER_NONE};
}

int answer(WindowHandle owner, const BoxRequest& request) {
    const ModalScope modal;
    if (modal.isRefused()) {
        return ANSWER_NONE;
    }
    if (boxResponder) {
        if (const auto given = boxResponder(request)) {
            return *given;
        }
    }
    return show(request, modal.owner(static_cast<QWidget*>(owner)));
}

int askOnItsThread(WindowHandle owner, const BoxRequest& request) {
    int given = ANSWER_NONE;
    EVENTS_PostAndWait([&] { given = answer(owner, request); });
    return given;
}

} // namespace

void BOX_ShowError(WindowHandle owner, const std::string& text, const std::string& hint) {
    askOnItsThread(owner, {text, kErrorCaption, BOX_OK, hint});
}

int BOX_Ask(WindowHandle owner, const std::string& text, const std::string& caption,
            unsigned boxType) {
    return askOnItsThread(owner, {text, caption, boxType});
}

void BOX_SetResponder(BoxResponder newResponder) {
    boxResponder = std::move(newResponder);
}
