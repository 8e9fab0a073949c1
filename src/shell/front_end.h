// What the logic needs of whoever shows it to the user. Two front ends fill in this record: the
// console and the desktop. A slot that a front end does not fill in does nothing; a dialog without
// a front end counts as cancelled. All slots are called on the user-interface thread, but for
// showError and ask, which any thread may call and which return when the user has answered.
#pragma once

#include "data/address_range.h"
#include "notice/error.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

enum class View { hexList, hexDump, log, device, terminal, memoryMap };

struct FileFilter {
    std::string text;    // "Intel Hex file (*.hex)"
    std::string pattern; // "*.hex"
};

// What a file dialog is to ask for.
struct FileRequest {
    bool save = false;
    std::string title;
    std::vector<FileFilter> filters;
    std::string startPath;
};

struct FileChoice {
    std::string path;
    size_t filter = 0; // the chosen one of the request
};

// One or two hex numbers, and perhaps bytes, under a hint. A value is none when its field is to be,
// or was left, empty.
struct ValueRequest {
    int mode = 1; // 1: hexadecimal, the only one
    int32_t minimum = 0;
    int32_t maximum = 0;
    int32_t sign = 0; // negative: the first value is shown as "-" and its negation
    std::string title;
    std::string hint;
    std::string label0;
    std::string label1; // empty: one field
    std::optional<int32_t> value0;
    std::optional<int32_t> value1;
    std::string bytesLabel; // empty: no field for bytes
    std::string bytes;      // as they were entered
};

inline constexpr int kDialogOk = 1;
inline constexpr int kDialogCancel = 2;

struct FrontEnd {
    bool hasWindows = false;

    // The box "Error", with the hint as a smaller text, and a question or information box; the
    // answer is a BoxAnswer.
    std::function<void(WindowHandle, const std::string& text, const std::string& hint)> showError =
        [](WindowHandle, const std::string&, const std::string&) {};
    std::function<int(WindowHandle, const std::string& text, const std::string& caption,
                      unsigned boxType)>
        ask = [](WindowHandle, const std::string&, const std::string&, unsigned) { return 0; };

    // The frame. `showFrame` is called with the wanted state before every turn of the main loop.
    std::function<void(bool visible)> showFrame = [](bool) {};
    // As the user closes it, keeping what is open and where; false when it stays open.
    std::function<bool()> closeFrame = [] { return true; };
    std::function<void(const std::string& title)> setTitle = [](const std::string&) {};
    std::function<void()> updateMenu = [] {};
    std::function<bool()> isDialogOpen = [] { return false; }; // or a box that blocks the frame

    std::function<void(View)> openView = [](View) {};
    std::function<void(View)> closeView = [](View) {};
    std::function<bool(View)> isViewOpen = [](View) { return false; };
    std::function<void(View)> refreshView = [](View) {};
    // Brings bytes of the image into view: selected in the dump, or with its caret at the start of
    // an empty range. Nothing where no dump is open.
    std::function<void(const AddressRange&)> showBytes = [](const AddressRange&) {};
    // The same, and opens the dump where it is closed.
    std::function<void(const AddressRange&)> revealData = [](const AddressRange&) {};

    std::function<std::string()> clipboardText = [] { return std::string(); }; // UTF-8
    std::function<void(const std::string& text)> setClipboard = [](const std::string&) {};

    std::function<std::optional<FileChoice>(const FileRequest&)> chooseFile =
        [](const FileRequest&) { return std::optional<FileChoice>(); };
    std::function<int(ValueRequest&)> editValue = [](ValueRequest&) { return kDialogCancel; };
    std::function<int()> targetDialog = [] { return kDialogCancel; };
    std::function<int()> settingsDialog = [] { return kDialogCancel; };
    std::function<int()> communicationDialog = [] { return kDialogCancel; };
    std::function<int()> passwordDialog = [] { return kDialogCancel; };
    std::function<int()> optionsSheet = [] { return kDialogCancel; };
    std::function<void()> interruptVectors = [] {};
    std::function<void()> aboutDialog = [] {};
    std::function<void()> helpContents = [] {};
    std::function<void()> helpOnHelp = [] {};

    std::function<void()> cascade = [] {};
    std::function<void()> tileHorizontally = [] {};
    std::function<void()> tileVertically = [] {};
    std::function<void()> restoreDefaultPlacement = [] {};

    // Called once when the modules stand and before the program is used, and once at the end.
    std::function<void()> start = [] {};
    std::function<void()> stop = [] {};
};

FrontEnd& FRONTEND_Get();
void FRONTEND_Set(FrontEnd frontEnd);

// What a desktop module exports, under this name: fills in the record; false, with the reason in
// `error`, when there is no display.
using FrontEndFactory = bool (*)(int argc, char** argv, FrontEnd& frontEnd, std::string& error);
inline constexpr char kFrontEndFactoryName[] = "calvorinDesktop";
inline constexpr char kDesktopModule[] = "calvorin-desktop.so";
