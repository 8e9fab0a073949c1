#include "device/devprops_store.h"
#include "link/password.h"
#include "link/target_link.h"
#include "persist/mru.h"
#include "platform/format.h"
#include "serial/sio.h"
#include "shell/front_end.h"
#include "shell/image_origin.h"
#include "shell/program_files.h"
#include "shell/project.h"
#include "shell/session.h"
#include "shell/settings.h"
#include "shell/summary.h"

namespace {

constexpr uint32_t kDefaultBaudrate = 38400;
constexpr uint32_t kDefaultPort = 1;

const FileFilter kProjectFilter{"Calvorin project files (*.tpu)", "*.tpu"};

bool writeProject(const std::string& path) {
    return PROJECT_Save(path, ORIGIN_ProgramFile());
}

void setProject(const std::string& path) {
    SESSION_Get().projectPath = path;
    ORIGIN_ShowTitle();
}

} // namespace

bool PROJECT_IsProjectFile(const std::string& path) {
    return endsWithIgnoringCase(path, ".tpu");
}

void PROJECT_FillDefaults() {
    if (SIO_GetBaudrate() == 0) {
        SIO_SetBaudrate(kDefaultBaudrate);
    }
    if (SIO_PortName().empty()) {
        SIO_SetPort(kDefaultPort);
    }
}

void PROJECT_UseDefaults() {
    DEVPROPS_SelectAllBlocks();
    PROJECT_FillDefaults();
}

void PROJECT_FirstStart() {
    DEVPROPS_SelectAllBlocks();
    FrontEnd& frontEnd = FRONTEND_Get();
    if (frontEnd.targetDialog() == kDialogOk && frontEnd.settingsDialog() == kDialogOk &&
        frontEnd.communicationDialog() == kDialogOk) {
        SETTINGS_Save();
        SESSION_Get().showDevice = 1;
        SESSION_Get().showLog = 1;
        frontEnd.openView(View::log);
        return;
    }
    PROJECT_FillDefaults();
}

void PROJECT_New() {
    if (!PROGRAM_MayLoseChanges()) {
        return;
    }
    TARGET_Disconnect();
    SIO_CloseAll();
    PASSWORD_Reset();
    PROGRAM_Close();
    setProject({});
    PROJECT_FirstStart();
    CONFIGURATION_Changed();
    SIO_Restart();
}

void PROJECT_OpenDialog() {
    const auto choice = FRONTEND_Get().chooseFile(
        {false, "Open file", {kProjectFilter}, SESSION_Get().projectPath});
    if (choice) {
        PROJECT_Open(choice->path);
    }
}

void PROJECT_Open(const std::string& path) {
    if (!PROGRAM_MayLoseChanges()) {
        return;
    }
    TARGET_Disconnect();
    const ProjectRead read = PROJECT_Load(path); // which reports; what was read before holds
    if (read != ProjectRead::failed) {
        setProject(path);
    }
    if (read == ProjectRead::whole) {
        MRU_Add(MRU_PROJECTS, path);
    }
    CONFIGURATION_Changed();
    SIO_Restart();
}

void PROJECT_SaveCurrent() {
    if (SESSION_Get().projectPath.empty()) {
        PROJECT_SaveAsDialog();
    } else {
        writeProject(SESSION_Get().projectPath);
    }
}

void PROJECT_SaveAsDialog() {
    const auto choice = FRONTEND_Get().chooseFile(
        {true, "Save project", {kProjectFilter}, SESSION_Get().projectPath});
    if (choice && writeProject(choice->path)) {
        MRU_Add(MRU_PROJECTS, choice->path);
        setProject(choice->path);
    }
}
