// A program folder, a device in the table and the shell's own state as in a fresh process, with a
// record of everything that is reported.
#pragma once

#include "data/hexdata.h"
#include "device/device_world.h"
#include "device/devprops_store.h"
#include "link/password.h"
#include "notice/run.h"
#include "serial/sio.h"
#include "shell/cmdline.h"
#include "shell/front_end.h"
#include "shell/session.h"
#include "shell/summary.h"

class ShellWorld : public DeviceWorld {
public:
    explicit ShellWorld(const std::string& device = kHead + "Bank = 100, 100, 200, 100\n") {
        RUN_Reset();
        HEXDATA_Reset();
        PASSWORD_Reset();
        CMDLINE_Reset();
        SESSION_Get() = {};
        FRONTEND_Set({});
        SIO_Init(0, 0, 0, 8, 0, 0);
        select(device);
        DEVPROPS_SelectAllBlocks();
        SUMMARY_Refresh();
    }
    ~ShellWorld() { FRONTEND_Set({}); }

    static void load(uint32_t address, const std::vector<uint8_t>& bytes) {
        HEXDATA_AddData(address, bytes);
        SUMMARY_Refresh();
    }
};
