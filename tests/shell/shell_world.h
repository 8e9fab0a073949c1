// A program folder, a device in the table and the shell's own state as in a fresh process, with a
// record of everything that is reported.
#pragma once

#include "data/hexdata.h"
#include "device/device_world.h"
#include "device/devprops_store.h"
#include "link/password.h"
#include "notice/run.h"
#include "persist/hex_text.h"
#include "platform/format.h"
#include "serial/sio.h"
#include "shell/cmdline.h"
#include "shell/front_end.h"
#include "shell/session.h"
#include "shell/summary.h"

// Four bytes at 0, one at 0x20, and what ends within its record.
constexpr char kAppHex[] = ":0400000001020304F2\n:00000001FF\n";
constexpr char kBootHex[] = ":0100200034AB\n:00000001FF\n";
constexpr char kCutHex[] = ":0100300034";

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
    // Every area of the image: its address, and its bytes in hex.
    static std::string image() {
        std::string text;
        for (const AddressRange& area : HEXDATA_GetAreas()) {
            auto address = static_cast<uint32_t>(area.start);
            const uint8_t* data = nullptr;
            const uint32_t count = HEXDATA_GetData(address, data);
            text += formatText("%X:", address) + HEXTEXT_FromBytes({data, count}) + " ";
        }
        return text;
    }
    // Writes a file of the folder; its path.
    std::string file(const std::string& name, const std::string& text) const {
        writeFile(folder / name, text);
        return folder / name;
    }
};
