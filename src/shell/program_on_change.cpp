#include "shell/program_on_change.h"

#include "notice/log.h"
#include "notice/run.h"
#include "notice/status.h"
#include "platform/event_queue.h"
#include "platform/files.h"
#include "platform/format.h"
#include "shell/account.h"
#include "shell/command_handler.h"
#include "shell/command_ids.h"
#include "shell/command_table.h"
#include "shell/frame_rules.h"
#include "shell/front_end.h"
#include "shell/program_files.h"
#include "shell/session.h"
#include "shell/verdict.h"
#include "shell/watched_file.h"

#include <utility>

namespace {

std::optional<WatchedFile> watchedProgram; // while it is on
std::optional<FileLook> dueLook;           // what the next round begins with
Notice roundFailure;

// As an unattended run, while it lasts.
class QuietRound {
public:
    QuietRound() {
        RUN_SetQuiet(true);
        RUN_ForgetFailure();
        ACCOUNT_Begin();
        VERDICT_Begin();
    }
    ~QuietRound() { RUN_SetQuiet(false); }
    QuietRound(const QuietRound&) = delete;
    QuietRound& operator=(const QuietRound&) = delete;
};

// In the status bar as long as it is on, with what became of the last round.
void showState(const char* outcome = "") {
    const std::string file = std::filesystem::path(watchedProgram->path()).filename().string();
    const CivilTime now = CLOCK_LocalTime();
    const std::string when = formatText("%02d:%02d:%02d", now.hour, now.minute, now.second);
    STATUS_SetText("Programming when " + file + " changes" +
                       (*outcome == '\0' ? "" : std::string(", ") + outcome + " at " + when),
                   STATUS_GENERAL);
}

void turnOff(const std::string& why) {
    watchedProgram.reset();
    dueLook.reset();
    roundFailure = {};
    LOG_Add("Programming on change ended" + why);
    STATUS_SetText("Ready", STATUS_GENERAL);
    FRONTEND_Get().updateMenu();
}

void runStep(int id) {
    const Command& row = *COMMAND_Find(id);
    if (RUN_GetExitCode() == 0 && !SESSION_Get().quit) {
        if (!row.isOffered()) {
            return; // by this device, or this way of resetting it
        }
        VERDICT_CommandStarts(row);
        MAINFRAME_Command(id);
    }
    VERDICT_CommandEnds(id);
}

// The failures of a round are those that were reported in it.
void tellFailure() {
    const AccountedTry told = ACCOUNT_Get().tries.back();
    roundFailure.text = "Programming on change failed: " +
                        (told.errors.empty() ? VERDICT_Line(false) : told.errors.front());
    roundFailure.hint = told.hints.empty() ? "" : told.hints.front();
}

void runRound(FileLook look) {
    const std::string path = watchedProgram->path();
    if (!PROGRAM_MayLoseChanges()) {
        return;
    }
    roundFailure = {};
    const QuietRound quiet;
    LOG_Add("Programming on change: " + path);
    const bool loaded = PROGRAM_Reload(path, look);
    if (watchedProgram && !watchedProgram->isAsTold()) {
        return; // it has changed while it was read: the next look tells it again
    }
    RUN_SetExitCode(loaded ? 0 : 1);
    for (const int id : {CMD_TARGET_AUTO, CMD_TARGET_VERIFY, CMD_TARGET_START_APPLICATION}) {
        runStep(id);
    }
    LOG_Add(VERDICT_Line(false));
    if (!watchedProgram) {
        return; // turned off meanwhile
    }
    const bool passed = RUN_GetExitCode() == 0;
    showState(passed ? "passed" : "failed");
    if (passed) {
        FRONTEND_Get().openView(View::terminal);
    } else {
        tellFailure();
    }
}

void beginDueRound() {
    if (!dueLook || !watchedProgram || !FRAMERULES_IsFree()) {
        return;
    }
    const FileLook look = *std::exchange(dueLook, std::nullopt);
    FRAMERULES_RunRound([look] { runRound(look); });
}

} // namespace

bool ONCHANGE_MayBegin() {
    return !PROGRAM_CurrentFile().empty();
}

bool ONCHANGE_IsOn() {
    return watchedProgram.has_value();
}

void ONCHANGE_Toggle() {
    if (watchedProgram) {
        turnOff("");
        return;
    }
    const std::string path = PROGRAM_CurrentFile();
    if (path.empty()) {
        return;
    }
    watchedProgram.emplace(path);
    if (FILES_WriteTime(path) == SESSION_Get().image.time) {
        watchedProgram->take(); // else it has changed before
    }
    LOG_Add("Programming when " + path + " changes");
    showState();
    FRONTEND_Get().updateMenu();
}

void ONCHANGE_Glance() {
    if (!watchedProgram || !FRAMERULES_IsFree()) {
        return;
    }
    if (PROGRAM_CurrentFile() != watchedProgram->path()) {
        turnOff(": " + watchedProgram->path() + " is no longer what is loaded");
        return;
    }
    const FileLook look = watchedProgram->look();
    if (look == FileLook::changing) {
        dueLook.reset();
    } else if (look != FileLook::same) {
        dueLook = look;
    }
    if (dueLook) {
        EVENTS_Post(beginDueRound); // not in the loop of whoever glances
    }
}

Notice ONCHANGE_Notice() {
    return roundFailure;
}

void ONCHANGE_TryAgain() {
    dueLook = FileLook::whole;
}

void ONCHANGE_Reset() {
    watchedProgram.reset();
    dueLook.reset();
    roundFailure = {};
}
