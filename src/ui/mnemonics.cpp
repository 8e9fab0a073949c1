#include "ui/mnemonics.h"

#include <QAbstractButton>
#include <QLabel>
#include <QTabBar>
#include <algorithm>

namespace {

QString textOf(const QWidget& widget) {
    if (const auto* button = qobject_cast<const QAbstractButton*>(&widget)) {
        return button->text();
    }
    const auto* label = qobject_cast<const QLabel*>(&widget);
    return label != nullptr && label->buddy() != nullptr ? label->text() : QString();
}

void setText(QWidget& widget, const QString& text) {
    if (auto* button = qobject_cast<QAbstractButton*>(&widget)) {
        button->setText(text);
    } else if (auto* label = qobject_cast<QLabel*>(&widget)) {
        label->setText(text);
    }
}

// The places of the letters, those at the beginning of a word first.
std::vector<qsizetype> places(const QString& text) {
    std::vector<qsizetype> found;
    for (qsizetype at = 0; at < text.size(); ++at) {
        if (text[at].isLetter()) {
            found.push_back(at);
        }
    }
    std::stable_partition(found.begin(), found.end(),
                          [&text](qsizetype at) { return at == 0 || text[at - 1].isSpace(); });
    return found;
}

QString withFreeLetter(QString text, const Mnemonics& taken) {
    text.remove(text.indexOf('&'), 1);
    for (const qsizetype at : places(text)) {
        QString tried = text;
        tried.insert(at, '&');
        if (!taken.contains(QKeySequence::mnemonic(tried))) {
            return tried;
        }
    }
    return text;
}

} // namespace

Mnemonics MNEMONICS_OfTabs(const QTabBar& tabs) {
    Mnemonics letters;
    for (int index = 0; index < tabs.count(); ++index) {
        letters.insert(QKeySequence::mnemonic(tabs.tabText(index)));
    }
    return letters;
}

Mnemonics MNEMONICS_Settle(QWidget& part, const Mnemonics& taken) {
    Mnemonics used;
    std::vector<QWidget*> clashing;
    for (QWidget* widget : part.findChildren<QWidget*>()) {
        const QKeySequence letter = QKeySequence::mnemonic(textOf(*widget));
        if (!letter.isEmpty() && (taken.contains(letter) || !used.insert(letter).second)) {
            clashing.push_back(widget);
        }
    }
    for (QWidget* widget : clashing) {
        Mnemonics all = taken;
        all.insert(used.begin(), used.end());
        setText(*widget, withFreeLetter(textOf(*widget), all));
        used.insert(QKeySequence::mnemonic(textOf(*widget)));
    }
    return used;
}
