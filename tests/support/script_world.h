// A conversation written down beforehand: what the program must send, byte for byte and line call
// by line call, and what the other side answers. Around it a virtual clock, one device from a
// description, a program folder and what the user would have been told.
#pragma once

#include "device/device.h"
#include "device/devprops.h"
#include "persist/ini.h"
#include "platform/event_queue.h"
#include "platform/files.h"
#include "serial/sio.h"
#include "sim/virtual_clock.h"
#include "support/fresh_process.h"
#include "support/hex_bytes.h"
#include "support/reports.h"
#include "support/seed.h"
#include "support/temp_folder.h"
#include "support/test_line.h"

// `host`: hex digits of what must be sent, or a line call ("rate 9600", "DTR on"). `chip`: hex
// digits of the answer, or "lost" when the port is from then on.
struct ScriptStep {
    std::string host;
    std::string chip;
};
using Script = std::vector<ScriptStep>;

class ScriptWorld {
    FreshStart freshStart_;

public:
    ScriptWorld(const std::string& deviceText, Script script)
        : clock_(testSeed()), script_(std::move(script)) {
        EVENTS_Open();
        EXPECT_EQ(_ParseDeviceFile("Version = 100\nManufacturer = \"M\"\nDevice = \"D\"\n" +
                                       deviceText + "\n",
                                   "d.dev"),
                  0);
        DEVPROPS_SetResetByPC(true);
        for (const DeviceBlock& block : DEVICE_Blocks()) {
            DEVPROPS_SelectBlock(block.index, true);
        }
        FILES_SetProgramPath(folder_ / "calvorin");
        writeFile(folder_ / "calvorin.ini", "[Settings PORTS]\r\nCOM1 = \"test://script\"\r\n");
        INI_Load();
        SIO_SetConfig({1, 38400, 0});
        log();
        lines_["script"].heard = [this](const std::string& what, bool isData) {
            happened(isData ? HEXTEXT_FromBytes(std::vector<uint8_t>(what.begin(), what.end()))
                            : what,
                     isData);
        };
    }
    ~ScriptWorld() {
        EXPECT_EQ(deviation(), "");
        lines_["script"].heard = {};
        freshProcess();
    }
    ScriptWorld(const ScriptWorld&) = delete;
    ScriptWorld& operator=(const ScriptWorld&) = delete;

    // What has been said since the last call.
    std::string errors() { return screen.take(screen.errors, '|'); }
    std::string questions() { return screen.take(screen.questions, '|'); }
    std::string log() { return screen.take(screen.log, '|'); }
    std::string addFile(const std::string& name, const std::string& text) {
        std::filesystem::create_directories((folder_ / name).parent_path());
        writeFile(folder_ / name, text);
        return (folder_ / name).string();
    }
    const std::filesystem::path& folder() const { return folder_.path(); }

    Reports screen{ANSWER_OK};
    // The answer to an identify frame, which is no part of the script; empty: none.
    std::string identifyReply;

private:
    // What of the script has not happened, or happened otherwise; empty when all is well.
    std::string deviation() const {
        const std::lock_guard lock(mutex_);
        if (!wrong_.empty() || next_ == script_.size()) {
            return wrong_;
        }
        return "not reached: " + script_[next_].host + " (after " + pending_ + ")";
    }

    void happened(const std::string& what, bool isData) {
        std::string answer;
        {
            const std::lock_guard lock(mutex_);
            const bool isIdentify = what == "EBED01000001EC" && !identifyReply.empty();
            answer = isIdentify ? identifyReply : follow(what, isData);
        }
        if (answer == "lost") {
            lines_["script"].lose("the device has gone");
            return;
        }
        const auto bytes = bytesOfHex(answer);
        lines_["script"].send({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
    }

    // The answer to what has happened, as far as one is due.
    std::string follow(const std::string& what, bool isData) {
        if (!wrong_.empty()) {
            return "";
        }
        std::string wanted = next_ < script_.size() ? script_[next_].host : "";
        if (isData) {
            std::erase(wanted, ' ');
        }
        pending_ += what;
        if (wanted.compare(0, pending_.size(), pending_) != 0) {
            wrong_ = "step " + std::to_string(next_) + ": " + pending_ + " instead of " + wanted;
        } else if (pending_ == wanted) {
            pending_.clear();
            return script_[next_++].chip;
        }
        return "";
    }

    SeedTrace seedTrace_;
    TempFolder folder_;
    VirtualClock clock_;
    TestLines lines_{{"script"}};
    Script script_;
    mutable std::mutex mutex_; // of all below
    size_t next_ = 0;
    std::string pending_; // of the next step
    std::string wrong_;
};
