#include "shell/command_handler.h"

#include "bootrom/connect.h"
#include "link/target_link.h"
#include "persist/mru.h"
#include "shell/checks.h"
#include "shell/command_ids.h"
#include "shell/edit_operations.h"
#include "shell/front_end.h"
#include "shell/program_files.h"
#include "shell/project.h"
#include "shell/session.h"
#include "shell/summary.h"
#include "target/commands.h"

#include <functional>
#include <unordered_map>

namespace {

using Handler = std::function<void()>;

// Runs a target command with the session marked as busy.
Handler busy(Handler command) {
    return [command = std::move(command)] {
        const TargetBusy marked;
        command();
    };
}

Handler show(View view) {
    return [view] { FRONTEND_Get().openView(view); };
}

// A slot of the front end, looked up when the command runs.
Handler slot(std::function<void()> FrontEnd::*member) {
    return [member] { (FRONTEND_Get().*member)(); };
}

void downloadRamImage() {
    const auto choice =
        FRONTEND_Get().chooseFile({false,
                                   "Open HEX file",
                                   {{"Intel Hex file (*.h*)", "*.h*"}, {"All files (*.*)", "*.*"}},
                                   SESSION_Get().programPath});
    if (choice) {
        FRONTEND_Get().openView(View::terminal);
        const TargetBusy marked;
        TARGET_DownloadRamImage(choice->path);
    }
}

void getCrc() {
    const TargetBusy marked;
    SESSION_Get().targetChecksum = TARGET_GetCrc(true);
}

void options() {
    if (SESSION_Get().targetBusy) {
        return;
    }
    if (FRONTEND_Get().optionsSheet() == kDialogOk) {
        TARGET_Disconnect();
        CONFIGURATION_Changed();
    }
}

const std::unordered_map<int, Handler>& handlers() {
    static const std::unordered_map<int, Handler> table = {
        {CMD_FILE_OPEN, PROGRAM_OpenDialog},
        {CMD_FILE_MERGE, PROGRAM_MergeDialog},
        {CMD_FILE_SAVE, PROGRAM_SaveCurrent},
        {CMD_FILE_SAVE_AS, PROGRAM_SaveAsDialog},
        {CMD_FILE_CLOSE, PROGRAM_Close},
        {CMD_EXIT, [] { SESSION_Get().quit = true; }},
        {CMD_PROJECT_NEW, PROJECT_New},
        {CMD_PROJECT_OPEN, PROJECT_OpenDialog},
        {CMD_PROJECT_SAVE, PROJECT_SaveCurrent},
        {CMD_PROJECT_SAVE_AS, PROJECT_SaveAsDialog},
        {CMD_EDIT_DELETE_RANGE, EDIT_DeleteRangeDialog},
        {CMD_EDIT_RELOCATE, EDIT_RelocateDialog},
        {CMD_VIEW_HEX_LIST, show(View::hexList)},
        {CMD_VIEW_HEX_DUMP, show(View::hexDump)},
        {CMD_VIEW_LOG, show(View::log)},
        {CMD_VIEW_DEVICE, show(View::device)},
        {CMD_VIEW_TERMINAL, show(View::terminal)},
        {CMD_VIEW_INTERRUPT_VECTORS, slot(&FrontEnd::interruptVectors)},
        {CMD_TARGET_DOWNLOAD_RAM_IMAGE, downloadRamImage},
        {CMD_TARGET_ERASE_CHIP, busy([] { TARGET_EraseChip(true); })},
        {CMD_TARGET_ERASE_BLOCKS, busy(TARGET_EraseBlocks)},
        {CMD_TARGET_PROGRAM, CHECKS_Program},
        {CMD_TARGET_READ_BACK, EDIT_ReadBackDialog},
        {CMD_TARGET_GET_CRC, getCrc},
        {CMD_TARGET_AUTO, CHECKS_Auto},
        {CMD_TARGET_VERIFY, CHECKS_Verify},
        {CMD_TARGET_BLANK_CHECK_CHIP, busy(TARGET_BlankCheckChip)},
        {CMD_TARGET_BLANK_CHECK_BLOCKS, busy(TARGET_BlankCheckBlocks)},
        {CMD_TARGET_START_APPLICATION, TARGET_StartApplication},
        {CMD_TARGET_PROTECT_CHIP, busy(TARGET_ProtectChip)},
        {CMD_TARGET_PROTECT_BLOCKS, busy(TARGET_ProtectBlocks)},
        {CMD_TARGET_READ_PROTECT, busy([] { TARGET_ReadProtect(); })},
        {CMD_TARGET_FLASH_STATUS, busy([] { TARGET_FlashStatus(); })},
        {CMD_WINDOW_CASCADE, slot(&FrontEnd::cascade)},
        {CMD_WINDOW_TILE_HORIZONTALLY, slot(&FrontEnd::tileHorizontally)},
        {CMD_WINDOW_TILE_VERTICALLY, slot(&FrontEnd::tileVertically)},
        {CMD_WINDOW_RESTORE_DEFAULT, slot(&FrontEnd::restoreDefaultPlacement)},
        {CMD_OPTIONS, options},
        {CMD_HELP_CONTENTS, slot(&FrontEnd::helpContents)},
        {CMD_HELP_ON_HELP, slot(&FrontEnd::helpOnHelp)},
        {CMD_HELP_ABOUT, slot(&FrontEnd::aboutDialog)},
    };
    return table;
}

// Opens the entry of a recent-file list that the identifier stands for.
bool openRecent(int id) {
    if (id >= CMD_RECENT_PROGRAM_FIRST && id <= CMD_RECENT_PROGRAM_LAST) {
        PROGRAM_Open(MRU_GetEntry(MRU_PROGRAMS, id - CMD_RECENT_PROGRAM_FIRST));
        return true;
    }
    if (id >= CMD_RECENT_PROJECT_FIRST && id <= CMD_RECENT_PROJECT_LAST) {
        PROJECT_Open(MRU_GetEntry(MRU_PROJECTS, id - CMD_RECENT_PROJECT_FIRST));
        return true;
    }
    return false;
}

} // namespace

int MAINFRAME_Command(int id) {
    const auto found = handlers().find(id);
    if (found == handlers().end()) {
        return openRecent(id) ? 1 : 0;
    }
    found->second();
    return 1;
}
