// The terminal's items: a row of buttons above the one pane and the same items as a menu. They show
// and change the choices; what else they do is told to the view.
#pragma once

#include "shell/terminal_settings.h"

#include <QMenu>
#include <QToolButton>
#include <QWidget>
#include <functional>

struct TerminalDeeds {
    std::function<void(const TerminalSettings&)> choose; // a choice was changed
    std::function<void()> copy;
    std::function<void()> selectAll;
    std::function<void()> clear;
    std::function<void()> find;
    std::function<void()> sendFile;
    std::function<void()> sendHex;
    std::function<void()> log; // begins or ends it
};

class TerminalTools : public QWidget {
public:
    TerminalTools(QWidget* parent, const TerminalSettings& settings, TerminalDeeds deeds);
    QMenu& menu() { return *menu_; }
    QAction* formItem() { return form_; } // the switch between the two forms
    void tellLog(const QString& path);    // that is written; empty: none
    void focusFirst();

private:
    QAction* addItem(const char* text, const char* name, std::function<void()> run);
    QAction* addCheck(const char* text, const char* name, bool& choice);
    template <class Choice>
    QMenu* addChoices(const char* text, const char* name,
                      std::initializer_list<const char*> entries, Choice& choice);
    QMenu* addRates();
    void fillMenu();
    void fillRow();

    TerminalSettings settings_;
    TerminalDeeds deeds_;
    QAction* form_ = nullptr;
    QAction* log_ = nullptr;
    QMenu* menu_ = nullptr;
    QMenu* send_ = nullptr;
    QMenu* choices_ = nullptr;
};

// A button for an item, with the item's text up to its dots.
QToolButton* TERMINALTOOLS_CreateButton(QAction* item, QWidget* parent);
