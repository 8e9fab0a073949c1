#include "shell/frame_rules.h"

#include "notice/error.h"
#include "notice/run.h"
#include "platform/event_queue.h"
#include "shell/cmdline.h"
#include "shell/command_handler.h"
#include "shell/command_ids.h"
#include "shell/command_table.h"
#include "shell/front_end.h"
#include "shell/program_files.h"
#include "shell/program_on_change.h"
#include "shell/project.h"
#include "shell/session.h"

namespace {

int commandsRunning = 0;
int chipChanges = 0; // of those
bool unloadWanted = false;
bool checkWanted = false;

bool isBlocked() {
    return SESSION_Get().quit || FRONTEND_Get().isDialogOpen();
}

bool isBusy() {
    return commandsRunning > 0 || SESSION_Get().targetBusy || CMDLINE_IsRunning();
}

template <class Command>
void runAsCommand(const Command& command) {
    ++commandsRunning;
    command();
    --commandsRunning;
    FRONTEND_Get().updateMenu();
}

// The user does something while a round of the program's own runs.
class AskedAllTheSame {
public:
    AskedAllTheSame() : wasQuiet_(RUN_IsQuiet() && !RUN_IsUnattended()) { RUN_SetQuiet(false); }
    ~AskedAllTheSame() { RUN_SetQuiet(wasQuiet_); }
    AskedAllTheSame(const AskedAllTheSame&) = delete;
    AskedAllTheSame& operator=(const AskedAllTheSame&) = delete;

private:
    bool wasQuiet_;
};

} // namespace

bool FRAMERULES_MayRun(int id) {
    return !isBlocked() && (commandsRunning == 0 || COMMAND_IsHarmless(id));
}

void FRAMERULES_Run(int id) {
    if (!FRAMERULES_MayRun(id)) {
        return;
    }
    const int changes = COMMAND_ChangesChip(id) ? 1 : 0;
    chipChanges += changes;
    runAsCommand([id] { MAINFRAME_Command(id); });
    chipChanges -= changes;
}

void FRAMERULES_RunRound(const std::function<void()>& round) {
    ++chipChanges;
    runAsCommand(round);
    --chipChanges;
}

bool FRAMERULES_MayClose() {
    const AskedAllTheSame asked;
    const bool mayLeaveChip =
        chipChanges == 0 ||
        ERROR_Ask(nullptr,
                  "The chip is being changed and would be left half done.\nEnd all the same?",
                  "Exit", BOX_OK_CANCEL | BOX_DEFAULT_SECOND) != ANSWER_CANCEL;
    return mayLeaveChip && PROGRAM_MayLoseChanges();
}

bool FRAMERULES_IsFree() {
    return !isBusy() && !isBlocked();
}

void FRAMERULES_OpenFile(const std::string& path) {
    if (!FRAMERULES_IsFree()) {
        return;
    }
    runAsCommand([&path] {
        if (PROJECT_IsProjectFile(path)) {
            PROJECT_Open(path);
        } else {
            PROGRAM_OpenRecent(path);
        }
    });
}

void FRAMERULES_DataViewsClosed() {
    unloadWanted = isBusy();
    if (!unloadWanted) {
        PROGRAM_Unload();
    }
}

void FRAMERULES_Activated() {
    if (isBlocked()) {
        return;
    }
    checkWanted = isBusy();
    if (!checkWanted && !ONCHANGE_IsOn()) {
        PROGRAM_CheckChanged();
    }
}

void FRAMERULES_CatchUp() {
    if (isBusy() || SESSION_Get().quit) {
        return;
    }
    if (unloadWanted) {
        unloadWanted = false;
        const FrontEnd& frontEnd = FRONTEND_Get();
        if (!frontEnd.isViewOpen(View::hexList) && !frontEnd.isViewOpen(View::hexDump)) {
            PROGRAM_Unload();
        }
    }
    if (checkWanted) {
        EVENTS_Post(FRAMERULES_Activated);
    }
}

void FRAMERULES_Reset() {
    commandsRunning = 0;
    chipChanges = 0;
    unloadWanted = false;
    checkWanted = false;
}
