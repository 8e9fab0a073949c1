#include "ui/terminal_pane.h"

#include "target/worker.h"
#include "ui/look.h"

#include <QKeyEvent>
#include <QScrollBar>
#include <QTextBlock>
#include <algorithm>
#include <utility>

namespace {

constexpr int kFollowMs = 50;
// More than the history has bytes: control bytes and times take several characters. While
// something is selected twice as many stay, for what is selected must not go.
constexpr int kMostShown = 1'500'000;

uint64_t clearedAt = 0; // in the history

// Whether some font of the system has the pictures of control bytes.
bool hasPictures(const QFont& font) {
    constexpr uint kPictureOfCr = 0x240D;
    return QFontMetrics(font).inFontUcs4(kPictureOfCr);
}

} // namespace

TerminalPane::TerminalPane(QWidget* parent, std::function<void()> leave)
    : TypingPane(parent), leave_(std::move(leave)) {
    setObjectName("Terminal");
    setAccessibleName("Received and sent");
    setTextInteractionFlags(Qt::TextSelectableByMouse);
    setAttribute(Qt::WA_InputMethodEnabled); // which a pane that cannot be edited lacks
    setContextMenuPolicy(Qt::CustomContextMenu);
    connect(&timer_, &QTimer::timeout, this, [this] { refresh(); });
}

void TerminalPane::setSettings(const TerminalSettings& settings) {
    settings_ = settings;
    if (settings.controls == TerminalControls::glyphs && !hasPictures(font())) {
        settings_.controls = TerminalControls::hex;
    }
    if (settings.onePane) {
        showAnew();
    }
}

void TerminalPane::setShown(bool shown) {
    if (shown) {
        refresh();
        timer_.start(kFollowMs);
    } else {
        timer_.stop();
    }
}

void TerminalPane::refresh() {
    TerminalNews news = TERMHISTORY_Since(taken_);
    if (news.missing != 0 && !document()->isEmpty()) {
        showAnew(); // what is shown does not join what is left
        return;
    }
    taken_ = news.end;
    const std::vector<TerminalRun> runs = text_.take(news.pieces);
    if (!runs.empty()) {
        append(runs);
    }
}

void TerminalPane::clearShown() {
    clearedAt = TERMHISTORY_Since(UINT64_MAX).end;
    showAnew();
}

void TerminalPane::showAnew() {
    text_ = TerminalText(settings_);
    taken_ = clearedAt;
    QTextCursor all(document());
    all.select(QTextCursor::Document);
    all.removeSelectedText();
    refresh();
    goToEnd();
}

QTextCharFormat TerminalPane::formatOf(TerminalSource source) const {
    QTextCharFormat format;
    if (source == TerminalSource::sent) {
        format.setForeground(LOOK_PlainColour(palette()));
        format.setFontUnderline(true); // told apart also without the colour
    }
    return format;
}

bool TerminalPane::isAtEnd() const {
    return verticalScrollBar()->value() == verticalScrollBar()->maximum();
}

void TerminalPane::goToEnd() {
    verticalScrollBar()->setValue(verticalScrollBar()->maximum());
}

void TerminalPane::append(const std::vector<TerminalRun>& runs) {
    QScrollBar& bar = *verticalScrollBar();
    const bool followsEnd = isAtEnd();
    const int top = bar.value();
    const QTextCursor before = textCursor();
    const int anchor = before.anchor();
    const int position = before.position();
    QTextCursor end(document());
    end.movePosition(QTextCursor::End);
    end.beginEditBlock();
    for (const TerminalRun& run : runs) {
        for (size_t i = 0; i < run.erased; ++i) {
            end.deletePreviousChar();
        }
        end.insertText(QString::fromStdString(run.text), formatOf(run.source));
    }
    end.endEditBlock();
    if (anchor != position) { // one that ends where the new text came has grown
        select(std::min(anchor, end.position()), std::min(position, end.position()));
    }
    bar.setValue(top);
    trim();
    if (followsEnd) {
        goToEnd();
    }
}

void TerminalPane::select(int anchor, int position) {
    QTextCursor cursor = textCursor();
    if (cursor.anchor() != anchor || cursor.position() != position) {
        cursor.setPosition(anchor);
        cursor.setPosition(position, QTextCursor::KeepAnchor);
        setTextCursor(cursor);
    }
}

// Takes the oldest eighth away; the line at the top stays there.
void TerminalPane::trim() {
    const int most = textCursor().hasSelection() ? 2 * kMostShown : kMostShown;
    if (document()->characterCount() <= most) {
        return;
    }
    QScrollBar& bar = *verticalScrollBar();
    const QTextBlock top = firstVisibleBlock();
    const int within = bar.value() - top.firstLineNumber();
    QTextCursor oldest(document());
    oldest.setPosition(document()->characterCount() - kMostShown / 8 * 7);
    oldest.movePosition(QTextCursor::StartOfBlock);
    oldest.movePosition(QTextCursor::Start, QTextCursor::KeepAnchor);
    oldest.removeSelectedText();
    bar.setValue(top.isValid() ? top.firstLineNumber() + within : 0);
}

QString TerminalPane::find(const std::vector<uint8_t>& pattern, bool forward) {
    refresh();
    std::string shown;
    for (const uint8_t byte : pattern) {
        shown += TERMTEXT_Byte(settings_.controls, byte);
    }
    QTextDocument::FindFlags flags = QTextDocument::FindCaseSensitively;
    flags.setFlag(QTextDocument::FindBackward, !forward);
    const QString wanted = QString::fromStdString(shown);
    QTextCursor found = document()->find(wanted, textCursor(), flags);
    QString message;
    if (found.isNull()) {
        QTextCursor start(document());
        start.movePosition(forward ? QTextCursor::Start : QTextCursor::End);
        found = document()->find(wanted, start, flags);
        message = forward ? "Continued from the start" : "Continued from the end";
    }
    if (found.isNull()) {
        return "Not found";
    }
    setTextCursor(found);
    ensureCursorVisible();
    return message;
}

void TerminalPane::type(const TerminalKey& key) {
    const char byte = static_cast<char>(key.value);
    send({&byte, 1});
}

void TerminalPane::send(std::string_view bytes) {
    TARGET_TerminalWrite({reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size()});
    goToEnd(); // who types looks at the answer
    refresh();
}

void TerminalPane::keyPressEvent(QKeyEvent* event) {
    const bool enter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (enter && (event->modifiers() & (Qt::ControlModifier | Qt::AltModifier)) == 0) {
        send(TERMSETTINGS_Bytes(settings_.lineEnd));
    } else if (event->key() == Qt::Key_Backtab) {
        leave_();
    } else if (event->key() == Qt::Key_F10 && event->modifiers() == Qt::ShiftModifier) {
        emit customContextMenuRequested(rect().topLeft());
    } else {
        TypingPane::keyPressEvent(event);
    }
}

void TerminalPane::changeEvent(QEvent* event) {
    TypingPane::changeEvent(event);
    if (event->type() == QEvent::PaletteChange && taken_ != 0) {
        showAnew(); // in colours that suit it
    }
}

void TerminalPane::resizeEvent(QResizeEvent* event) {
    const bool followsEnd = isAtEnd();
    TypingPane::resizeEvent(event);
    if (followsEnd) {
        goToEnd();
    }
}
