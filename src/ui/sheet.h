// The Options sheet and what its pages share with the dialogs that show one page alone: change
// tracking for the Apply button, and centring. User-interface thread.
#pragma once

#include <QWidget>
#include <functional>

// A page of settings. It edits a working copy that it fills when it is made. The sheet checks every
// page that was touched before it applies any.
struct SheetPage {
    QString title; // with the mnemonic of its tab
    QWidget* widget = nullptr;
    // Whether the user changed something. What he did not change he is not to be blamed for.
    std::function<bool()> isTouched = [] { return true; };
    // Whether the working copy can be committed; false has been reported.
    std::function<bool()> check = [] { return true; };
    // Commits the working copy, which was checked or not touched.
    std::function<void()> apply = [] {};
    // The page comes to the front.
    std::function<void()> activated = [] {};
};

// Runs the sheet "Options"; 1 when settings were applied, 2 when none were, and at once while
// another sheet is open.
int SHEET_Options(QWidget* parent);

// A dialog with OK and Cancel around one page, which `make` creates in it; 1 for OK, 2 for Cancel.
int SHEET_RunPage(QWidget* parent, const QString& objectName, const QString& caption,
                  const std::function<SheetPage(QWidget* parent)>& make);

// Registers a pair of working and committed copy with the open sheet; `differs` compares them.
// Without a sheet, or beyond one pair a page, nothing happens.
void SHEET_TrackPair(std::function<bool()> differs);
// Turns the open sheet's Apply on when any pair differs, else off. Called after every change of a
// control; without a sheet nothing happens.
void SHEET_NotifyChange();

// Brings a page to the front of the open sheet; without a sheet nothing happens.
void SHEET_ShowPage(QWidget* page);

// Moves a dialog so that its centre lies over the centre of its parent window.
void SHEET_CenterDialog(QWidget* dialog);
