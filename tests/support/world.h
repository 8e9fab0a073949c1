// A whole world for a test in one line: a virtual clock, a program folder with the devices, the
// selected device, COM1 leading to a virtual chip, and what the user would have been told.
#pragma once

#include "data/hexdata.h"
#include "device/device.h"
#include "device/devprops.h"
#include "device/devprops_store.h"
#include "link/password.h"
#include "link/target_link.h"
#include "link/target_state.h"
#include "notice/log.h"
#include "notice/run.h"
#include "persist/ini.h"
#include "platform/event_queue.h"
#include "platform/files.h"
#include "serial/sio.h"
#include "sim/chip.h"
#include "sim/sim_port.h"
#include "sim/virtual_clock.h"
#include "support/fresh_process.h"
#include "support/paths.h"
#include "support/reports.h"
#include "support/seed.h"
#include "support/temp_folder.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <string>
#include <vector>

struct WorldOptions {
    std::string device = "VT-B128";
    std::string description = {}; // of a device that is none of the program's own
    ChipOptions chip = {};
    uint64_t seed = testSeed();
    uint32_t baudrate = 38400;
    std::string port = "sim://world"; // what COM1 leads to; "faulty://...@sim://world" spoils it
    bool openPort = true;
};

class World {
    FreshStart freshStart_;

public:
    explicit World(WorldOptions options) : options_(std::move(options)), clock_(options_.seed) {
        EVENTS_Open();
        layOutFolder();
        LOG_Init();
        EXPECT_EQ(DEVICE_Init(), 0);
        if (!options_.description.empty()) {
            EXPECT_EQ(_ParseDeviceFile(options_.description, "own.dev"), 0);
        }
        EXPECT_EQ(DEVICE_FindByName(options_.device), 0) << options_.device;
        DEVPROPS_SelectAllBlocks();
        DEVPROPS_SetResetByPC(true);
        PASSWORD_SetLimitsOfDevice();
        chip = CHIP_Create(DEVICE_Selected(), options_.chip);
        line = SIMPORT_Offer("world", chip);
        if (options_.openPort) {
            SIO_SetConfig({1, options_.baudrate, 0});
        }
    }

    ~World() {
        freshProcess();
        SIMPORT_Withdraw("world");
    }
    World(const World&) = delete;
    World& operator=(const World&) = delete;

    // What has been said so far; any thread may have said it.
    std::vector<std::string> errors() const { return screen.copyOf(screen.errors); }
    std::vector<std::string> questions() const { return screen.copyOf(screen.questions); }
    std::vector<std::string> log() const { return screen.copyOf(screen.log); }
    bool hasLogged(const std::string& text) const {
        const std::vector<std::string> entries = log();
        return std::ranges::find(entries, text) != entries.end();
    }
    // What the chip holds against the program, one text a line; empty when it behaved.
    std::string violations() const {
        std::string text;
        SIMPORT_WithChip(line, [&text](Chip& looked) {
            for (const ChipViolation& violation : CHIP_GetViolations(looked)) {
                text += violation.text + "\n";
            }
        });
        return text;
    }
    const std::filesystem::path& folder() const { return folder_.path(); }

    ChipPtr chip; // while no other thread uses the port
    SimLinePtr line;
    Reports screen{ANSWER_YES};

private:
    void layOutFolder() {
        for (const char* const name : {"Device", "RamImage"}) {
            std::filesystem::create_directory_symlink(builtFolder() / name, folder_ / name);
        }
        FILES_SetProgramPath(folder_ / "calvorin");
        writeFile(folder_ / "calvorin.ini",
                  "[Settings PORTS]\r\nCOM1 = \"" + options_.port + "\"\r\n");
        INI_Load();
    }

    WorldOptions options_;
    SeedTrace seedTrace_;
    TempFolder folder_;
    VirtualClock clock_;
};
