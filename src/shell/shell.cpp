#include "shell/shell.h"

#include "notice/log.h"
#include "notice/progress.h"
#include "notice/run.h"
#include "platform/event_queue.h"
#include "platform/files.h"
#include "platform/format.h"
#include "platform/process.h"
#include "shell/account.h"
#include "shell/cmdline.h"
#include "shell/cmdline_words.h"
#include "shell/command_ids.h"
#include "shell/console.h"
#include "shell/front_end.h"
#include "shell/result.h"
#include "shell/session.h"
#include "shell/startup.h"
#include "shell/verdict.h"
#include "shell/watch.h"

#include <algorithm>

namespace {

bool helpIsAllAsked = false;

// Puts the desktop in place; false, with the reason printed, when it cannot be had.
bool loadDesktop(int argc, char** argv, std::string& reason) {
    if (const std::string module = FILES_ProgramFolder() + kDesktopModule; !FILES_Exists(module)) {
        reason = module + " is not there; the package calvorin-desktop brings it";
        return false;
    }
    auto* create = reinterpret_cast<FrontEndFactory>(
        PROCESS_LoadFunction(kDesktopModule, kFrontEndFactoryName, reason));
    FrontEnd frontEnd;
    if (create == nullptr || !create(argc, argv, frontEnd, reason)) {
        return false;
    }
    FRONTEND_Set(std::move(frontEnd));
    return true;
}

bool chooseFrontEnd(int argc, char** argv, const std::vector<std::string>& arguments) {
    if (CMDLINE_Contains(arguments, CMD_EXIT)) {
        FRONTEND_Set(CONSOLE_FrontEnd());
        return true;
    }
    helpIsAllAsked = arguments == std::vector<std::string>{"-?"};
    std::string reason;
    if (loadDesktop(argc, argv, reason)) {
        return true;
    }
    SHELL_AnswerWithoutDesktop(reason);
    return false;
}

void mainLoop() {
    const Session& session = SESSION_Get();
    while (!session.quit && !RUN_IsInterrupted()) {
        const bool running = CMDLINE_IsRunning();
        FRONTEND_Get().showFrame(!running);
        if (running) {
            EVENTS_Post([] {}); // the queue goes on without the user's doing
        } else if (!FRONTEND_Get().hasWindows) {
            return; // nothing is left that could end the run
        }
        EVENTS_WaitOne();
        CMDLINE_Poll();
    }
}

} // namespace

int SHELL_Run(int argc, char** argv) {
    PROCESS_OpenStandardStreams();
    const std::vector<std::string> arguments =
        WORDS_Complete({argv + std::min(argc, 1), argv + argc});
    if (const std::optional<int> answered = WORDS_Answer(arguments)) {
        return *answered;
    }
    PROCESS_CatchSignals(SHELL_Interrupt);
    EVENTS_Open();
    if (!chooseFrontEnd(argc, argv, arguments)) {
        return RUN_GetExitCode();
    }
    VERDICT_Begin();
    ACCOUNT_Begin();
    const bool started = STARTUP_Run(arguments);
    if (started) {
        mainLoop();
        STARTUP_Finish();
    }
    if (RUN_IsInterrupted()) {
        CONSOLE_PrintLine(WATCH_ExitCode() ? "Watching ended" : "Interrupted");
    }
    STARTUP_Close();
    if (const std::optional<int> told = WATCH_ExitCode()) {
        return *told;
    }
    RESULT_Write();
    if (RUN_IsUnattended() && CMDLINE_ContainsTarget(arguments)) {
        CONSOLE_PrintLine(VERDICT_Line(!started));
    }
    return RUN_GetExitCode();
}

void SHELL_Interrupt() {
    RUN_Interrupt();
    PROGRESS_Cancel();
    CLOCK_Notify();
    EVENTS_Post([] { SESSION_Get().quit = true; });
}

void SHELL_AnswerWithoutDesktop(const std::string& reason) {
    if (helpIsAllAsked) {
        CMDLINE_PrintHelp();
        return;
    }
    RUN_SetExitCode(1);
    PROCESS_WriteError("Error: the desktop is not available (" +
                       formatPrintable(reason, LineEnds::shown) +
                       ").\nA run without it needs -Exit on the command line; --help lists the "
                       "options.\n");
}
