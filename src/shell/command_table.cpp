#include "shell/command_table.h"

#include "bootrom/connect.h"
#include "data/hexdata.h"
#include "device/device.h"
#include "device/devprops.h"
#include "persist/mru.h"
#include "shell/checks.h"
#include "shell/cmdline_commands.h"
#include "shell/cmdline_patch.h"
#include "shell/command_handler.h"
#include "shell/command_ids.h"
#include "shell/comparison.h"
#include "shell/edit_bytes.h"
#include "shell/edit_history.h"
#include "shell/edit_operations.h"
#include "shell/edit_place.h"
#include "shell/program_files.h"
#include "shell/program_on_change.h"
#include "shell/project.h"
#include "shell/session.h"
#include "target/commands.h"

#include <algorithm>

namespace {

// When the menu offers a command.
bool always() {
    return true;
}

bool idle() {
    return !SESSION_Get().targetBusy;
}

bool loaded() {
    return !HEXDATA_IsEmpty();
}

bool idleAndLoaded() {
    return idle() && loaded();
}

bool isCompared() {
    return idle() && COMPARISON_IsOpen();
}

bool canUndo() {
    return idle() && HISTORY_CanUndo();
}

bool canRedo() {
    return idle() && HISTORY_CanRedo();
}

bool onOrMayBegin() {
    return ONCHANGE_IsOn() || ONCHANGE_MayBegin();
}

bool hasCaret() {
    return idleAndLoaded() && EDITPLACE_Get();
}

bool hasSelection() {
    return hasCaret() && !EDITPLACE_Get()->selected.empty();
}

bool canReset() {
    return idle() && DEVPROPS_GetResetByPC();
}

bool canProtectChip() {
    return idle() && (DEVICE_GetSprtProtectBlock() != 0 || DEVICE_GetSprtProtectChip() != 0);
}

template <auto supported>
bool deviceOffers() {
    return idle() && supported() != 0;
}

// What a command does, where that is not one function of its module.
template <auto operation>
void busy() {
    const TargetBusy marked;
    operation();
}

template <std::function<void()> FrontEnd::*slot>
void ask() {
    (FRONTEND_Get().*slot)();
}

void eraseChip() {
    TARGET_EraseChip(true);
}

template <CopyFormat format>
void copyAs() {
    EDIT_CopyAs(format);
}

void quit() {
    if (FRONTEND_Get().closeFrame()) {
        SESSION_Get().quit = true;
    }
}

constexpr Command kSeparator;

constexpr Command program(int id, const char* text, const char* key, bool (*isOffered)(),
                          void (*run)(), CommandLineForm line = {}) {
    return {id, text, key, WorksOn::program, isOffered, std::nullopt, run, line};
}

constexpr Command target(int id, const char* text, const char* key, bool (*isOffered)(),
                         void (*run)(), CommandLineForm line = {}) {
    return {id, text, key, WorksOn::target, isOffered, std::nullopt, run, line};
}

constexpr Command changing(Command row) {
    row.changesChip = true;
    return row;
}

constexpr Command toggle(int id, const char* text, const char* key, bool (*isOffered)(),
                         void (*run)(), bool (*isOn)()) {
    Command row{id, text, key, WorksOn::nothing, isOffered, std::nullopt, run};
    row.isOn = isOn;
    return row;
}

constexpr Command copying(int id, const char* text, void (*run)()) {
    Command row = program(id, text, "", hasSelection, run);
    row.under = "Cop&y As";
    return row;
}

constexpr Command window(int id, const char* text, bool (*isOffered)(), void (*run)()) {
    return {id, text, "", WorksOn::nothing, isOffered, std::nullopt, run};
}

constexpr Command view(int id, const char* text, bool (*isOffered)(), View view) {
    return {id, text, "", WorksOn::nothing, isOffered, view};
}

constexpr Command recent(int id, RecentFiles files) {
    return {.id = id, .isOffered = idle, .recent = files};
}

constexpr Command kFile[] = {
    program(CMD_FILE_OPEN, "&Open...", "Ctrl+O", idle, PROGRAM_OpenDialog),
    program(CMD_FILE_MERGE, "&Merge...", "", idleAndLoaded, PROGRAM_MergeDialog,
            {"FileMerge", "\t\t<FILE.EXT> Merges specified file", "adds it to what is loaded",
             CMDLINE_MergeFile, "No file currently loaded"}),
    program(CMD_FILE_COMPARE, "Compare &With File...", "", idleAndLoaded,
            COMPARISON_WithFileDialog),
    program(CMD_FILE_SAVE, "&Save", "Ctrl+S", idleAndLoaded, PROGRAM_SaveCurrent),
    program(CMD_FILE_SAVE_AS, "Save &As...", "", idleAndLoaded, PROGRAM_SaveAsDialog,
            {"FileSaveAs", "\t\t<FILE.EXT> Saves data to MOT- or HEX-file",
             "`.hex` Intel HEX, `.mot` S-record; pipes and devices too, see [files.md](files.md)",
             CMDLINE_SaveAs, "Nothing to save"}),
    program(CMD_FILE_CLOSE, "&Close", "", idleAndLoaded, PROGRAM_CloseCurrent),
    kSeparator,
    recent(CMD_RECENT_PROGRAM_FIRST, {CMD_RECENT_PROGRAM_LAST, MRU_PROGRAMS, PROGRAM_OpenRecent}),
    kSeparator,
    program(CMD_EXIT, "E&xit\tALT-F4", "", idle, quit, // the key is the window manager's
            {"Exit", "\t\t\tTerminates PC-programm automatically"}),
};
constexpr Command kProject[] = {
    program(CMD_PROJECT_NEW, "New...", "", idle, PROJECT_New),
    program(CMD_PROJECT_OPEN, "Open Project...", "", idle, PROJECT_OpenDialog),
    program(CMD_PROJECT_SAVE, "Save Project", "", idle, PROJECT_SaveCurrent),
    program(CMD_PROJECT_SAVE_AS, "Save Project as...", "", idle, PROJECT_SaveAsDialog),
    kSeparator,
    recent(CMD_RECENT_PROJECT_FIRST, {CMD_RECENT_PROJECT_LAST, MRU_PROJECTS, PROJECT_Open}),
};
constexpr Command kEdit[] = {
    program(CMD_EDIT_DELETE_RANGE, "&Delete Range...", "", idleAndLoaded, EDIT_DeleteRangeDialog,
            {"EditDeleteRange", "\t\t<FROM-TO> Deletes the specified range of data",
             "hex, both inclusive", CMDLINE_DeleteRange, "Nothing to delete"}),
    program(CMD_EDIT_RELOCATE, "&Relocate...", "", idleAndLoaded, EDIT_RelocateDialog,
            {"EditRelocate", "\t\t<VALUE> Relocates loaded data", "hex offset, may be negative",
             CMDLINE_Relocate, "Nothing to relocate"}),
    kSeparator,
    program(CMD_EDIT_FILL, "Fi&ll...", "", idleAndLoaded, EDIT_FillDialog),
    program(CMD_EDIT_PASTE_HEX, "&Paste Hex\tCtrl+V", "", hasCaret,
            EDIT_PasteHex), // a key of the dump alone
    program(CMD_EDIT_INSERT_FILE, "&Insert File...", "", idle, EDIT_InsertFileDialog),
    copying(CMD_EDIT_COPY_HEX, "&Hex", copyAs<CopyFormat::hex>),
    copying(CMD_EDIT_COPY_C_ARRAY, "&C Array", copyAs<CopyFormat::cArray>),
    copying(CMD_EDIT_COPY_INTEL_HEX, "&Intel HEX", copyAs<CopyFormat::intelHex>),
    copying(CMD_EDIT_COPY_TEXT, "&Text", copyAs<CopyFormat::text>),
    kSeparator,
    program(CMD_EDIT_UNDO, "&Undo", "Ctrl+Z", canUndo, HISTORY_Undo),
    program(CMD_EDIT_REDO, "Red&o", "Ctrl+Y", canRedo, HISTORY_Redo),
    kSeparator,
    program(CMD_COMPARISON_NEXT, "&Next Difference", "F11", isCompared, COMPARISON_Next),
    program(CMD_COMPARISON_PREVIOUS, "&Previous Difference", "Shift+F11", isCompared,
            COMPARISON_Previous),
    program(CMD_COMPARISON_SAVE, "&Save Comparison...", "", isCompared, COMPARISON_SaveDialog),
    program(CMD_COMPARISON_END, "&End Comparison", "", isCompared, COMPARISON_End),
};
constexpr Command kView[] = {
    view(CMD_VIEW_HEX_LIST, "Hex &List", loaded, View::hexList),
    view(CMD_VIEW_HEX_DUMP, "Hex &Dump", loaded, View::hexDump),
    view(CMD_VIEW_LOG, "L&og", always, View::log),
    view(CMD_VIEW_DEVICE, "&Device", always, View::device),
    view(CMD_VIEW_TERMINAL, "&Terminal", always, View::terminal),
    view(CMD_VIEW_MEMORY_MAP, "&Memory Map", always, View::memoryMap),
    window(CMD_VIEW_INTERRUPT_VECTORS, "&Interrupt vectors", loaded,
           ask<&FrontEnd::interruptVectors>),
};
constexpr Command kTarget[] = {
    target(CMD_TARGET_DOWNLOAD_RAM_IMAGE, "&Download RAM-Image...", "", idle,
           COMMAND_DownloadRamImage),
    target(CMD_TARGET_START_APPLICATION, "&Start Application", "F2", canReset,
           TARGET_StartApplication,
           {"TargetStartApplication", "\tStarts target application", "by a reset"}),
    changing(target(CMD_TARGET_ERASE_CHIP, "Erase &Chip", "F3", idle, busy<eraseChip>,
                    {"TargetEraseChip", "\t\tErases complete chip"})),
    changing(target(CMD_TARGET_ERASE_BLOCKS, "Erase &Blocks", "", idle, busy<TARGET_EraseBlocks>,
                    {"TargetEraseBlocks", "\t\tErases selected blocks"})),
    changing(target(CMD_TARGET_PROGRAM, "&Program", "F4", idleAndLoaded, CHECKS_Program,
                    {"TargetProgram", "\t\tPrograms loaded data into target",
                     "and compares the chip's checksum"})),
    target(CMD_TARGET_READ_BACK, "&Read Back...", "F5", idle, EDIT_ReadBackDialog,
           {"TargetReadBack", "\t\t<StartAdr,EndAdr> Read back target data",
            "hex, both inclusive; replaces what is loaded", CMDLINE_ReadBack}),
    target(CMD_TARGET_GET_CRC, "&Get CRC/SUM...", "F6", idle, COMMAND_GetCrc,
           {"TargetGetCRC", "\t\tGets CRC of target", "of the selected blocks"}),
    changing(
        target(CMD_TARGET_AUTO, "&Auto", "F7", idleAndLoaded, CHECKS_Auto,
               {"TargetAuto", "\t\tErases complete chip and programs loaded data into target"})),
    target(CMD_TARGET_VERIFY, "&Verify loaded Program", "F8", idleAndLoaded, CHECKS_Verify,
           {"TargetVerify", "\t\tVerifys loaded data with target", "byte by byte"}),
    target(CMD_TARGET_COMPARE, "Co&mpare With Chip", "", idleAndLoaded, COMPARISON_WithChip,
           {"TargetCompare", "\t\tCompares loaded data with target, all differences",
            "of the selected blocks; a difference is a failure", nullptr, "Nothing to compare"}),
    target(CMD_TARGET_BLANK_CHECK_CHIP, "Blankcheck C&hip", "F9", idle, busy<TARGET_BlankCheckChip>,
           {"TargetCheckBlankChip", "\tChecks if chip is blank"}),
    target(CMD_TARGET_BLANK_CHECK_BLOCKS, "Blankcheck B&locks", "", idle,
           busy<TARGET_BlankCheckBlocks>,
           {"TargetCheckBlankBlocks", "\tChecks if selected blocks are blank"}),
    changing(target(
        CMD_TARGET_PROTECT_CHIP, "Protect C&hip", "", canProtectChip, busy<TARGET_ProtectChip>,
        {"TargetProtectChip", "\tProtects the chip", "only with `--yes`", CMDLINE_ProtectChip})),
    changing(target(CMD_TARGET_PROTECT_BLOCKS, "Protect B&locks", "",
                    deviceOffers<DEVICE_GetSprtProtectBlock>, busy<TARGET_ProtectBlocks>,
                    {"TargetProtectBlocks", "\tProtects selected blocks", "only with `--yes`",
                     CMDLINE_ProtectBlocks})),
    changing(target(CMD_TARGET_READ_PROTECT, "R&ead Protect Chip", "",
                    deviceOffers<DEVICE_GetSprtReadProtect>, busy<TARGET_ReadProtect>,
                    {"TargetReadProtect", "\tProtects the chip against reading",
                     "only with `--yes`", CMDLINE_ReadProtect})),
    target(CMD_TARGET_FLASH_STATUS, "F&lash Memory Status", "",
           deviceOffers<DEVICE_GetSprtFlashMemStatus>, busy<TARGET_FlashStatus>,
           {"TargetFlashStatus", "\tShows the status of the flash", nullptr, CMDLINE_FlashStatus}),
    kSeparator,
    toggle(CMD_TARGET_PROGRAM_ON_CHANGE, "Program &When The File Changes", "Ctrl+F7", onOrMayBegin,
           ONCHANGE_Toggle, ONCHANGE_IsOn),
};
constexpr Command kOptions[] = {
    program(CMD_OPTIONS, "&Options", "", always, COMMAND_Options),
};
constexpr Command kWindow[] = {
    window(CMD_WINDOW_CASCADE, "&Cascade", always, ask<&FrontEnd::cascade>),
    window(CMD_WINDOW_TILE_HORIZONTALLY, "Tile &Horizontal", always,
           ask<&FrontEnd::tileHorizontally>),
    window(CMD_WINDOW_TILE_VERTICALLY, "Tile &Vertical", always, ask<&FrontEnd::tileVertically>),
    window(CMD_WINDOW_RESTORE_DEFAULT, "&Restore Default", always,
           ask<&FrontEnd::restoreDefaultPlacement>),
};
constexpr Command kHelp[] = {
    window(CMD_HELP_CONTENTS, "&Contents...", always, ask<&FrontEnd::helpContents>),
    window(CMD_HELP_ON_HELP, "&How To Use Help...", always, ask<&FrontEnd::helpOnHelp>),
    window(CMD_HELP_ABOUT, "&About ...", always, ask<&FrontEnd::aboutDialog>),
};

// Without a menu item.
constexpr Command kLineOnly[] = {
    program(CMD_FILE_PATCH, "", "", always, nullptr,
            {"FilePatch", "\t\t<ADDRESS=HEXBYTES> Puts bytes, or those of @FILE, into the image",
             "hexadecimal address; see [bench.md](bench.md)", CMDLINE_Patch}),
};

constexpr CommandPopup kPopups[] = {
    {"&File", kFile},     {"&Project", kProject},       {"&Edit", kEdit},     {"&View", kView},
    {"&Target", kTarget}, {"&Options", kOptions, true}, {"&Window", kWindow}, {"&Help", kHelp},
};

} // namespace

std::span<const CommandPopup> COMMAND_Popups() {
    return kPopups;
}

std::span<const Command> COMMAND_LineOnly() {
    return kLineOnly;
}

const Command* COMMAND_Find(int id) {
    if (id == kLineOnly[0].id) {
        return &kLineOnly[0];
    }
    for (const CommandPopup& popup : kPopups) {
        for (const Command& row : popup.items) {
            if (row.id != 0 && id >= row.id && id <= std::max(row.id, row.recent.lastId)) {
                return &row;
            }
        }
    }
    return nullptr;
}

bool COMMAND_ChangesChip(int id) {
    const Command* row = COMMAND_Find(id);
    return row != nullptr && row->changesChip;
}

bool COMMAND_IsEnabled(int id) {
    const Command* row = COMMAND_Find(id);
    return row != nullptr && row->isOffered();
}

bool COMMAND_IsChecked(int id) {
    const Command* row = COMMAND_Find(id);
    if (row == nullptr) {
        return false;
    }
    return row->view ? FRONTEND_Get().isViewOpen(*row->view) : row->isOn != nullptr && row->isOn();
}

bool COMMAND_IsHarmless(int id) {
    const Command* row = COMMAND_Find(id);
    return row != nullptr && row->worksOn == WorksOn::nothing;
}
