// What the main frame remembers while it works: the loaded image, the project, what runs.
// User-interface thread only.
#pragma once

#include "shell/image_origin.h"

#include <cstdint>
#include <string>

struct Session {
    bool targetBusy = false; // a target operation started from the frame runs
    bool loaded = false;     // result of the last load or merge of a program file
    ImageOrigin image;
    std::string programPath; // where file dialogs begin: what was last opened, merged or saved
    std::string projectPath;
    bool commandBegun = false;   // one of the command line, but for Exit
    uint16_t targetChecksum = 0; // the last that was asked for
    bool quit = false;           // the main loop is to end

    int32_t frameRect[4] = {0, 0, 0, 0}; // left, top, right, bottom in screen coordinates
    int32_t showTerminal = 0;
    int32_t showLog = 0;
    int32_t showHexListView = 0;
    int32_t showDevice = 0;
    int32_t showToolBar = 1;
};

Session& SESSION_Get();

// Marks the session as busy with a target operation while it lives.
class TargetBusy {
public:
    TargetBusy();
    ~TargetBusy();
    TargetBusy(const TargetBusy&) = delete;
    TargetBusy& operator=(const TargetBusy&) = delete;
};
