#include "shell/identity.h"

#include "platform/files.h"
#include "platform/format.h"
#include "platform/version.h"

std::string IDENTITY_Version() {
    return kProductVersion;
}

std::string IDENTITY_Title() {
    return formatText("%s V%s", kProductName, IDENTITY_Version().c_str());
}

std::string IDENTITY_HelpFile() {
    return FILES_ProgramFolder() + "Calvorin.hlp";
}

std::string IDENTITY_DefaultProject() {
    return FILES_KeptFolder(Kept::state) + "Calvorin.tpu";
}
