#include "data/hexdata.h"
#include "device/devprops_store.h"
#include "link/password.h"
#include "link/target_link.h"
#include "persist/mru.h"
#include "platform/format.h"
#include "serial/sio.h"
#include "shell/front_end.h"
#include "shell/identity.h"
#include "shell/program_files.h"
#include "shell/project.h"
#include "shell/session.h"
#include "shell/summary.h"

namespace {

constexpr uint32_t kDefaultBaudrate = 38400;
constexpr uint32_t kDefaultPort = 1;

const FileFilter kProjectFilter{"Calvorin project files (*.tpu)", "*.tpu"};

void writeProject(const std::string& path) {
    PROJECT_Save(path, HEXDATA_IsEmpty() ? std::string() : SESSION_Get().programPath);
}

} // namespace

bool PROJECT_IsProjectFile(const std::string& path) {
    return endsWithIgnoringCase(path, ".tpu");
}

void PROJECT_FillDefaults() {
    if (SIO_GetBaudrate() == 0) {
        SIO_SetBaudrate(kDefaultBaudrate);
    }
    if (SIO_GetPort() == 0) {
        SIO_SetPort(kDefaultPort);
    }
}

void PROJECT_FirstStart() {
    DEVPROPS_SelectAllBlocks();
    FrontEnd& frontEnd = FRONTEND_Get();
    if (frontEnd.targetDialog() == kDialogOk && frontEnd.settingsDialog() == kDialogOk &&
        frontEnd.communicationDialog() == kDialogOk) {
        SESSION_Get().showDevice = 1;
        SESSION_Get().showLog = 1;
        frontEnd.openView(View::log);
        return;
    }
    PROJECT_FillDefaults();
}

void PROJECT_New() {
    TARGET_Disconnect();
    SIO_CloseAll();
    PASSWORD_Reset();
    PROGRAM_Close();
    SESSION_Get().projectPath.clear();
    FRONTEND_Get().setTitle(IDENTITY_Title());
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
    SESSION_Get().projectPath = path;
    TARGET_Disconnect();
    MRU_Add(MRU_PROJECTS, path);
    static_cast<void>(PROJECT_Load(path)); // which reports; what was read before holds
    FRONTEND_Get().setTitle(
        formatText("%s V%s: %s", kProductName, IDENTITY_Version().c_str(), path.c_str()));
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
    if (choice) {
        MRU_Add(MRU_PROJECTS, choice->path);
        SESSION_Get().projectPath = choice->path;
        writeProject(choice->path);
    }
}
