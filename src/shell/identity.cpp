#include "shell/identity.h"

#include "platform/files.h"
#include "platform/format.h"

std::string IDENTITY_Version() {
    return formatText("%01d.%01d%01d", 1, 2, 6) + formatText("%c", 'c');
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
