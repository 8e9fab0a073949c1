// A conversation written down beforehand: what the program must send, byte for byte and line call
// by line call, and what the other side answers. Around it a virtual clock, one device from a
// description, a program folder and what the user would have been told.
#pragma once

#include "device/device.h"
#include "device/devprops.h"
#include "notice/error.h"
#include "notice/log.h"
#include "notice/run.h"
#include "persist/hex_text.h"
#include "persist/ini.h"
#include "platform/event_queue.h"
#include "platform/files.h"
#include "platform/serial_port.h"
#include "serial/sio.h"
#include "sim/virtual_clock.h"
#include "support/temp_folder.h"

#include <algorithm>
#include <deque>
#include <gtest/gtest.h>
#include <mutex>
#include <string>
#include <vector>

// `host`: hex digits of what must be sent, or a line call ("rate 9600", "DTR on"). `chip`: hex
// digits of the answer.
struct ScriptStep {
    std::string host;
    std::string chip;
};
using Script = std::vector<ScriptStep>;

inline std::vector<uint8_t> bytesOfHex(const std::string& digits) {
    std::string error;
    std::string packed = digits;
    std::erase(packed, ' ');
    auto bytes = HEXTEXT_ToBytes(packed, 5000, error);
    EXPECT_EQ(error, "") << digits;
    return bytes;
}

class ScriptWorld {
public:
    ScriptWorld(const std::string& deviceText, Script script, uint32_t baudrate = 38400)
        : clock_(1), script_(std::move(script)) {
        EVENTS_Open();
        RUN_Reset();
        ERROR_SetHandlers(
            [this](WindowHandle, const std::string& text, int) { note(errors_, text); },
            [this](WindowHandle, const std::string& text, const std::string& caption, unsigned) {
                note(questions_, caption + ": " + text);
                return answer;
            },
            RUN_SetExitCode);
        DEVICE_Clear();
        EXPECT_EQ(_ParseDeviceFile("Version = 100\nManufacturer = \"M\"\nDevice = \"D\"\n" +
                                       deviceText + "\n",
                                   "d.dev"),
                  0);
        DEVPROPS_Set(DevProps{});
        DEVPROPS_SetResetByPC(true);
        for (int i = 0; i < DEVICE_GetNumBlocks(-1); ++i)
            DEVPROPS_SelectBlock(i, true);
        FILES_SetProgramPath(folder_ / "calvorin");
        writeFile(folder_ / "calvorin.ini", "[Settings PORTS]\r\nCOM1 = \"script://\"\r\n");
        INI_Load();
        SERIALPORT_AddKind("script://",
                           [this](const std::string&, std::string&) { return open(); });
        SIO_Init(0, 0, 0, 8, 0, 0);
        SIO_SetConfig({1, baudrate, 0});
        LOG_SetObserver([this](const std::string&, const std::string& text) { note(log_, text); });
        listening_ = true;
    }
    ~ScriptWorld() {
        EVENTS_Close();
        listening_ = false;
        SIO_Exit();
        LOG_SetObserver({});
        ERROR_Exit();
        DEVICE_Clear();
        RUN_Reset();
        FILES_SetProgramPath({});
    }
    ScriptWorld(const ScriptWorld&) = delete;
    ScriptWorld& operator=(const ScriptWorld&) = delete;

    // What of the script has not happened, or happened otherwise; empty when all is well.
    std::string deviation() const {
        const std::lock_guard lock(mutex_);
        if (!wrong_.empty() || next_ == script_.size())
            return wrong_;
        return "not reached: " + script_[next_].host + " (after " + pending_ + ")";
    }
    // What has been said since the last call, one text a line.
    std::string errors() { return take(errors_); }
    std::string questions() { return take(questions_); }
    std::string log() { return take(log_); }
    std::string addFile(const std::string& name, const std::string& text) {
        writeFile(folder_ / name, text);
        return (folder_ / name).string();
    }
    const std::filesystem::path& folder() const { return folder_.path(); }

    int answer = ANSWER_OK;
    // The answer to an identify frame, which is no part of the script; empty: none.
    std::string identifyReply;

private:
    SerialPortPtr open() {
        auto port = std::make_shared<SerialPort>();
        port->read = [this](std::span<uint8_t> buffer, Moment deadline, const Condition& stop) {
            await(buffer.size(), deadline, stop);
            const std::lock_guard lock(mutex_);
            size_t count = 0;
            for (; count < buffer.size() && !toProgram_.empty(); toProgram_.pop_front())
                buffer[count++] = toProgram_.front();
            return count;
        };
        port->waitReadable = [this](Moment deadline, const Condition& stop) {
            return await(1, deadline, stop);
        };
        port->write = [this](std::span<const uint8_t> bytes) {
            happened(HEXTEXT_FromBytes(bytes), true);
            return true;
        };
        port->configure = [this](const LineSettings& settings) {
            happened("rate " + std::to_string(settings.baudrate), false);
            return std::optional(std::exchange(rate_, settings.baudrate));
        };
        port->setDtr = [this](bool on) { return happened(on ? "DTR on" : "DTR off", false); };
        port->setRts = [this](bool on) { return happened(on ? "RTS on" : "RTS off", false); };
        port->lostReason = [] { return std::string(); };
        port->refusal = [] { return std::string(); };
        return port;
    }

    bool await(size_t count, Moment deadline, const Condition& stop) {
        return CLOCK_Wait(deadline, [this, count, &stop] {
            const std::lock_guard lock(mutex_);
            return toProgram_.size() >= count || (stop && stop());
        });
    }

    bool happened(const std::string& what, bool isData) {
        {
            const std::lock_guard lock(mutex_);
            if (!listening_ || !wrong_.empty())
                return true;
            if (what == "EBED01000001EC" && !identifyReply.empty()) {
                reply(identifyReply);
            } else {
                follow(what, isData);
            }
        }
        CLOCK_Notify();
        return true;
    }

    void follow(const std::string& what, bool isData) {
        std::string wanted = next_ < script_.size() ? script_[next_].host : "";
        if (isData)
            std::erase(wanted, ' ');
        pending_ += what;
        if (pending_.empty() || wanted.compare(0, pending_.size(), pending_) != 0) {
            wrong_ = "step " + std::to_string(next_) + ": " + pending_ + " instead of " + wanted;
        } else if (pending_ == wanted) {
            reply(script_[next_++].chip);
            pending_.clear();
        }
    }

    void reply(const std::string& hex) {
        for (const uint8_t byte : bytesOfHex(hex))
            toProgram_.push_back(byte);
    }

    void note(std::string& list, const std::string& text) {
        const std::lock_guard lock(mutex_);
        list += list.empty() ? text : "|" + text;
    }
    std::string take(std::string& list) {
        const std::lock_guard lock(mutex_);
        return std::exchange(list, {});
    }

    TempFolder folder_;
    VirtualClock clock_;
    Script script_;
    mutable std::mutex mutex_; // of all below
    size_t next_ = 0;
    std::string pending_; // of the next step
    std::string wrong_;
    std::deque<uint8_t> toProgram_;
    uint32_t rate_ = 0;
    bool listening_ = false;
    std::string errors_;
    std::string questions_;
    std::string log_;
};
