#include "shell/watch.h"

#include "notice/log.h"
#include "notice/run.h"
#include "platform/event_queue.h"
#include "platform/format.h"
#include "shell/account.h"
#include "shell/cmdline.h"
#include "shell/console.h"
#include "shell/program_files.h"
#include "shell/result.h"
#include "shell/retry.h"
#include "shell/run_words.h"
#include "shell/verdict.h"

namespace {

constexpr int64_t kLookMs = 200;

std::optional<WatchedFile> lineFile;
std::optional<int> exitCodeBetween;
int roundNumber = 1;

// What was found of the next state of the file; none when the user has ended the run.
std::optional<FileLook> awaitState() {
    FileLook look = lineFile->look();
    while (look == FileLook::same || look == FileLook::changing) {
        if (CLOCK_Wait(CLOCK_After(kLookMs), RUN_IsInterrupted)) {
            return std::nullopt;
        }
        while (EVENTS_ProcessOne()) {
        }
        look = lineFile->look();
    }
    return look;
}

void endRound() {
    RESULT_Write();
    exitCodeBetween = RUN_GetExitCode(); // an interruption from here on is one between two
    if (CMDLINE_NeedsTarget()) {
        CONSOLE_PrintLine(VERDICT_Line(false));
    }
}

void beginRound() {
    RUN_ForgetFailure();
    ACCOUNT_Begin();
    VERDICT_Begin();
    RETRY_NextImage();
    RESULT_BeginRound();
    ACCOUNT_Stage("file");
    LOG_Add(formatText("Round %d", ++roundNumber));
}

// Until what was read is of one piece.
bool loadNextState() {
    std::optional<FileLook> look;
    while ((look = awaitState())) {
        beginRound();
        PROGRAM_Reload(lineFile->path(), *look);
        if (lineFile->isAsTold()) {
            ACCOUNT_Stage("end");
            return true;
        }
    }
    return false;
}

} // namespace

void WATCH_AwaitFirst(const std::string& path) {
    lineFile.emplace(path);
    awaitState();
}

bool WATCH_NextRound() {
    if (!lineFile || RUN_IsInterrupted()) {
        return false;
    }
    endRound();
    LOG_Add("Waiting for " + lineFile->path() + " to change, Ctrl-C ends");
    if (!loadNextState()) {
        return false;
    }
    exitCodeBetween.reset();
    return true;
}

std::optional<int> WATCH_ExitCode() {
    return exitCodeBetween;
}

void WATCH_Reset() {
    lineFile.reset();
    exitCodeBetween.reset();
    roundNumber = 1;
}
