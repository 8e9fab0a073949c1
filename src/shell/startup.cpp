#include "shell/startup.h"

#include "device/device.h"
#include "device/devprops_store.h"
#include "link/password.h"
#include "notice/error.h"
#include "notice/log.h"
#include "notice/run.h"
#include "notice/status.h"
#include "persist/ini.h"
#include "persist/mru.h"
#include "platform/event_queue.h"
#include "platform/files.h"
#include "platform/format.h"
#include "serial/sio.h"
#include "serial/sio_log.h"
#include "serial/terminal_buffer.h"
#include "shell/account.h"
#include "shell/cmdline.h"
#include "shell/cmdline_commands.h"
#include "shell/cmdline_line.h"
#include "shell/front_end.h"
#include "shell/identity.h"
#include "shell/image_origin.h"
#include "shell/notifiers.h"
#include "shell/program_files.h"
#include "shell/project.h"
#include "shell/run_words.h"
#include "shell/session.h"
#include "shell/settings.h"
#include "shell/summary.h"
#include "shell/terminal_log.h"
#include "shell/watch.h"
#include "target/worker.h"

namespace {

constexpr char kSection[] = "Settings MAINFRAME";
constexpr int kRecentEntries = 8;
constexpr int32_t kDefaultRight = 800;
constexpr int32_t kDefaultBottom = 600;

void readFrameSettings() {
    Session& session = SESSION_Get();
    INI_ReadRect(kSection, "Rect", session.frameRect);
    INI_ReadInt(kSection, "ShowTerminal", session.showTerminal);
    INI_ReadInt(kSection, "ShowLog", session.showLog);
    INI_ReadInt(kSection, "ShowHexListView", session.showHexListView);
    INI_ReadInt(kSection, "ShowDevice", session.showDevice);
    INI_ReadInt(kSection, "ShowToolBar", session.showToolBar);
    int32_t& right = session.frameRect[2];
    int32_t& bottom = session.frameRect[3];
    right = right == 0 ? kDefaultRight : right;
    bottom = bottom == 0 ? kDefaultBottom : bottom;
}

FileResult logOpened;

void openLog() {
    const std::string& path = RUNWORDS_Get().logPath;
    if (!RUN_IsIsolated()) {
        FILES_MakeKeptFolders();
    }
    if (!RUN_IsIsolated() || !path.empty()) {
        logOpened = LOG_Init(path);
    }
}

// Whether what the line wants the run to be recorded in could be created, else reported.
bool isRecorded() {
    const auto isKept = [](const char* what, const std::string& path, const FileResult& created) {
        if (!path.empty() && !created.ok()) {
            ERROR_Out(nullptr,
                      formatText("The %s cannot be written (%s: %s)", what, path.c_str(),
                                 created.reason.c_str()),
                      1);
            return false;
        }
        return true;
    };
    const RunWords& words = RUNWORDS_Get();
    if (!isKept("log", words.logPath, logOpened)) {
        return false;
    }
    return words.transcriptPath.empty() ||
           isKept("transcript", words.transcriptPath, SIO_StartTranscript(words.transcriptPath));
}

void prepareModules() {
    openLog();
    STATUS_Init();
    STATUS_SetText("Disconnected", STATUS_CONNECTION);
    STATUS_SetText("Target CRC: ----", STATUS_CHECKSUM);
    NOTIFIERS_Register();
    FRONTEND_Get().start();
    INI_Load();
    readFrameSettings();
    if (SESSION_Get().showLog != 0) {
        FRONTEND_Get().openView(View::log); // before there is anything to log
    }
    PASSWORD_SetDialog(FRONTEND_Get().passwordDialog);
    MRU_Init(MRU_PROGRAMS, kRecentEntries);
    MRU_Init(MRU_PROJECTS, kRecentEntries);
    SIO_Init(0, 0, 0, 8, 0, 0);
    DEVPROPS_Load();
}

// What the run before has left. False when an unattended run must not go on without the rest of it.
bool loadRemembered() {
    const std::string project = IDENTITY_DefaultProject();
    ProjectRead read = ProjectRead::whole;
    if (RUN_IsIsolated()) {
        PROJECT_UseDefaults();
    } else if (FILES_Exists(project)) {
        read = PROJECT_Load(project, !CMDLINE_ProgramFile());
        PROJECT_FillDefaults(); // of a file that ends early, or that a run without a port has saved
    } else {
        PROJECT_FirstStart();
    }
    if (RUN_IsUnattended() && read == ProjectRead::partly) {
        ERROR_Out(nullptr, "The default project cannot be read to its end (" + project + ")", 1);
    }
    return !RUN_IsUnattended() || RUN_GetExitCode() == 0;
}

// Where nothing needs it yet, the desktop shows a failure as long as it lasts.
void openPort() {
    const bool needless = !CMDLINE_NeedsTarget();
    SIO_TolerateOpenFailure(needless);
    if (!SIO_Restart() && needless) {
        LOG_Add(SIO_GetOpenFailure());
    }
    SIO_TolerateOpenFailure(false);
}

void openRememberedViews() {
    const Session& session = SESSION_Get();
    if (session.showDevice != 0) {
        FRONTEND_Get().openView(View::device);
    }
    if (session.showTerminal != 0) {
        FRONTEND_Get().openView(View::terminal);
    }
}

void writeOpenViews() {
    const FrontEnd& frontEnd = FRONTEND_Get();
    INI_WriteInt(kSection, "ShowTerminal", frontEnd.isViewOpen(View::terminal) ? 1 : 0);
    INI_WriteInt(kSection, "ShowLog", frontEnd.isViewOpen(View::log) ? 1 : 0);
    INI_WriteInt(kSection, "ShowHexListView", frontEnd.isViewOpen(View::hexList) ? 1 : 0);
    INI_WriteInt(kSection, "ShowDevice", frontEnd.isViewOpen(View::device) ? 1 : 0);
    INI_WriteInt(kSection, "ShowToolBar", SESSION_Get().showToolBar);
}

// It has done nothing, so there is nothing to start the next one with.
bool failedBeforeItsFirstCommand() {
    return RUN_IsUnattended() && RUN_GetExitCode() != 0 && !SESSION_Get().commandBegun;
}

} // namespace

bool STARTUP_Run(const std::vector<std::string>& arguments) {
    LINE_SetKindOfRun(arguments);
    prepareModules();
    if (DEVICE_Init() != 0) {
        RUN_SetExitCode(1);
        return false;
    }
    CMDLINE_SetDispatcher(CMDLINE_RunCommand);
    ACCOUNT_Stage("command line");
    if (!CMDLINE_Read(arguments) || !isRecorded()) {
        return false;
    }
    ACCOUNT_Stage("project");
    // A run that only converts leaves the port alone: opening it would move the lines that reset a
    // board and take the port from a run that needs it.
    const bool usesPort = !RUN_IsUnattended() || CMDLINE_ContainsTarget(arguments);
    if (usesPort) {
        TARGET_Init(nullptr, TERMINAL_ReceiveByte);
    }
    const bool isComplete = loadRemembered();
    CONFIGURATION_Changed(); // an option may fill the password before it names a device
    if (!isComplete) {
        return false;
    }
    ACCOUNT_Stage("command line");
    if (!CMDLINE_Apply()) {
        return false;
    }
    ACCOUNT_Stage("file");
    if (const auto programFile = CMDLINE_ProgramFile()) {
        if (RUNWORDS_Get().watch) {
            WATCH_AwaitFirst(*programFile);
        }
        PROGRAM_Open(*programFile);
    }
    openRememberedViews();
    CONFIGURATION_Changed();
    ACCOUNT_Stage("port");
    if (usesPort) {
        openPort();
    }
    ACCOUNT_Stage("end");
    return true;
}

void STARTUP_FrameClosed() {
    writeOpenViews();
    EVENTS_Close(); // a worker that waits for the user interface goes on
    TARGET_Exit();
    SIO_Exit();
    SESSION_Get().quit = true;
}

void STARTUP_Finish() {
    if (RUN_IsIsolated() || failedBeforeItsFirstCommand()) {
        return;
    }
    INI_WriteRect(kSection, "Rect", SESSION_Get().frameRect);
    SETTINGS_Save();
    PROJECT_Save(IDENTITY_DefaultProject(), ORIGIN_ProgramFile());
}

void STARTUP_Close() {
    EVENTS_Close();
    TARGET_Stop();
    TERMLOG_Stop();
    SIO_CloseAll();
    SIO_TellLostEntries();
    FRONTEND_Get().stop();
    LOG_Exit();
    ERROR_Exit();
}
