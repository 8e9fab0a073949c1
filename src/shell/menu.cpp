#include "shell/menu.h"

#include "data/hexdata.h"
#include "device/device.h"
#include "device/devprops.h"
#include "shell/command_ids.h"
#include "shell/front_end.h"
#include "shell/session.h"

namespace {

constexpr MenuItem kSeparator{MenuKind::separator};

constexpr MenuItem item(const char* text, int id, const char* key = nullptr) {
    return {MenuKind::command, text, id, key};
}

constexpr MenuItem kFile[] = {
    item("&Open...\tCtrl+O", CMD_FILE_OPEN, "Ctrl+O"),
    item("&Merge...", CMD_FILE_MERGE),
    item("&Save\tCtrl+S", CMD_FILE_SAVE, "Ctrl+S"),
    item("Save &As...", CMD_FILE_SAVE_AS),
    item("&Close", CMD_FILE_CLOSE),
    kSeparator,
    {MenuKind::recentPrograms, nullptr, CMD_RECENT_PROGRAM_FIRST},
    kSeparator,
    item("E&xit\tALT-F4", CMD_EXIT),
};
constexpr MenuItem kProject[] = {
    item("New...", CMD_PROJECT_NEW),
    item("Open Project...", CMD_PROJECT_OPEN),
    item("Save Project", CMD_PROJECT_SAVE),
    item("Save Project as...", CMD_PROJECT_SAVE_AS),
    kSeparator,
    {MenuKind::recentProjects, nullptr, CMD_RECENT_PROJECT_FIRST},
};
constexpr MenuItem kEdit[] = {
    item("&Delete Range...", CMD_EDIT_DELETE_RANGE),
    item("&Relocate...", CMD_EDIT_RELOCATE),
};
constexpr MenuItem kView[] = {
    item("Hex &List", CMD_VIEW_HEX_LIST), item("Hex &Dump", CMD_VIEW_HEX_DUMP),
    item("L&og", CMD_VIEW_LOG),           item("&Device", CMD_VIEW_DEVICE),
    item("&Terminal", CMD_VIEW_TERMINAL), item("&Interrupt vectors", CMD_VIEW_INTERRUPT_VECTORS),
};
constexpr MenuItem kTarget[] = {
    item("&Download RAM-Image...", CMD_TARGET_DOWNLOAD_RAM_IMAGE),
    item("&Start Application\tF2", CMD_TARGET_START_APPLICATION, "F2"),
    item("Erase &Chip\tF3", CMD_TARGET_ERASE_CHIP, "F3"),
    item("Erase &Blocks", CMD_TARGET_ERASE_BLOCKS),
    item("&Program\tF4", CMD_TARGET_PROGRAM, "F4"),
    item("&Read Back...\tF5", CMD_TARGET_READ_BACK, "F5"),
    item("&Get CRC/SUM...\tF6", CMD_TARGET_GET_CRC, "F6"),
    item("&Auto\tF7", CMD_TARGET_AUTO, "F7"),
    item("&Verify loaded Program\tF8", CMD_TARGET_VERIFY, "F8"),
    item("Blankcheck C&hip\tF9", CMD_TARGET_BLANK_CHECK_CHIP, "F9"),
    item("Blankcheck B&locks", CMD_TARGET_BLANK_CHECK_BLOCKS),
    item("Protect C&hip", CMD_TARGET_PROTECT_CHIP),
    item("Protect B&locks", CMD_TARGET_PROTECT_BLOCKS),
    item("R&ead Protect Chip", CMD_TARGET_READ_PROTECT),
    item("F&lash Memory Status", CMD_TARGET_FLASH_STATUS),
};
constexpr MenuItem kOptions[] = {item("&Options", CMD_OPTIONS)};
constexpr MenuItem kWindow[] = {
    item("&Cascade", CMD_WINDOW_CASCADE),
    item("Tile &Horizontal", CMD_WINDOW_TILE_HORIZONTALLY),
    item("Tile &Vertical", CMD_WINDOW_TILE_VERTICALLY),
    item("&Restore Default", CMD_WINDOW_RESTORE_DEFAULT),
};
constexpr MenuItem kHelp[] = {
    item("&Contents...", CMD_HELP_CONTENTS),
    item("&How To Use Help...", CMD_HELP_ON_HELP),
    item("&About ...", CMD_HELP_ABOUT),
};

constexpr MenuPopup kPopups[] = {
    {"&File", kFile},     {"&Project", kProject},       {"&Edit", kEdit},     {"&View", kView},
    {"&Target", kTarget}, {"&Options", kOptions, true}, {"&Window", kWindow}, {"&Help", kHelp},
};

bool isFileOrProjectCommand(int id) {
    return id == CMD_FILE_OPEN || id == CMD_EXIT ||
           (id >= CMD_RECENT_PROGRAM_FIRST && id <= CMD_RECENT_PROJECT_LAST);
}

bool needsData(int id) {
    switch (id) {
    case CMD_FILE_MERGE:
    case CMD_FILE_SAVE:
    case CMD_FILE_SAVE_AS:
    case CMD_FILE_CLOSE:
    case CMD_EDIT_DELETE_RANGE:
    case CMD_EDIT_RELOCATE:
    case CMD_TARGET_PROGRAM:
    case CMD_TARGET_AUTO:
    case CMD_TARGET_VERIFY:
        return true;
    default:
        return false;
    }
}

bool isTargetCommand(int id) {
    return id >= CMD_TARGET_DOWNLOAD_RAM_IMAGE && id <= CMD_TARGET_FLASH_STATUS;
}

// What a target command needs beyond an idle program.
bool targetAllows(int id) {
    switch (id) {
    case CMD_TARGET_START_APPLICATION:
        return DEVPROPS_GetResetByPC();
    case CMD_TARGET_PROTECT_CHIP:
        return DEVICE_GetSprtProtectBlock() != 0 || DEVICE_GetSprtProtectChip() != 0;
    case CMD_TARGET_PROTECT_BLOCKS:
        return DEVICE_GetSprtProtectBlock() != 0;
    case CMD_TARGET_READ_PROTECT:
        return DEVICE_GetSprtReadProtect() != 0;
    case CMD_TARGET_FLASH_STATUS:
        return DEVICE_GetSprtFlashMemStatus() != 0;
    default:
        return true;
    }
}

} // namespace

std::span<const MenuPopup> MENU_Popups() {
    return kPopups;
}

bool MENU_IsEnabled(int id) {
    const bool busy = SESSION_Get().targetBusy;
    const bool loaded = !HEXDATA_IsEmpty();
    if (id == CMD_VIEW_HEX_LIST || id == CMD_VIEW_HEX_DUMP || id == CMD_VIEW_INTERRUPT_VECTORS) {
        return loaded;
    }
    if (needsData(id)) {
        return !busy && loaded;
    }
    if (isFileOrProjectCommand(id)) {
        return !busy;
    }
    return !isTargetCommand(id) || (!busy && targetAllows(id));
}

bool MENU_IsChecked(int id) {
    const FrontEnd& frontEnd = FRONTEND_Get();
    switch (id) {
    case CMD_VIEW_HEX_LIST:
        return frontEnd.isViewOpen(View::hexList);
    case CMD_VIEW_HEX_DUMP:
        return frontEnd.isViewOpen(View::hexDump);
    case CMD_VIEW_LOG:
        return frontEnd.isViewOpen(View::log);
    case CMD_VIEW_DEVICE:
        return frontEnd.isViewOpen(View::device);
    case CMD_VIEW_TERMINAL:
        return frontEnd.isViewOpen(View::terminal);
    default:
        return false;
    }
}
