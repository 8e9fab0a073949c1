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
        select(device);
        DEVPROPS_SelectAllBlocks();
        SUMMARY_Refresh();
    }

    static void load(uint32_t address, const std::vector<uint8_t>& bytes) {
        HEXDATA_AddData(address, bytes);
        SUMMARY_Refresh();
    }
};
