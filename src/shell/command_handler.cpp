#include "shell/command_handler.h"

#include "link/target_link.h"
#include "persist/mru.h"
#include "shell/command_table.h"
#include "shell/command_verdict.h"
#include "shell/session.h"
#include "shell/settings.h"
#include "shell/summary.h"
#include "target/commands.h"

void COMMAND_DownloadRamImage() {
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

void COMMAND_GetCrc() {
    const TargetBusy marked;
    SESSION_Get().targetChecksum = TARGET_GetCrc(true);
}

void COMMAND_Options() {
    if (SESSION_Get().targetBusy) {
        return;
    }
    if (FRONTEND_Get().optionsSheet() == kDialogOk) {
        TARGET_Disconnect();
        SETTINGS_Save();
        CONFIGURATION_Changed();
    }
}

int MAINFRAME_Command(int id) {
    const Command* row = COMMAND_Find(id);
    if (row == nullptr) {
        return 0;
    }
    if (row->recent.open != nullptr) {
        row->recent.open(MRU_GetEntry(row->recent.list, id - row->id));
    } else if (row->view) {
        FRONTEND_Get().openView(*row->view);
    } else {
        const CommandVerdict verdict(*row);
        row->run();
    }
    return 1;
}
