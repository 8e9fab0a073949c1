// A line in memory, "test://NAME" for the program: the test sends and looks at what arrived. It
// notices a line that is closed while it is in use.
#pragma once

#include "platform/serial_port.h"

#include <atomic>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <utility>
#include <vector>

struct TestLine {
    std::mutex mutex; // guards what follows
    std::deque<uint8_t> toProgram;
    std::vector<std::string> fromProgram; // one text a write
    std::string lost;
    std::vector<std::string> calls; // rate and line changes
    uint32_t rate = 0;
    bool refuseCalls = false; // of rate and lines
    bool refuseWrites = false;
    int opened = 0;
    std::atomic<bool> isOpen{false};
    std::atomic<int> inside{0};
    std::atomic<int> closedInUse{0};
    // Told of every write and of every rate and line change, when it has been noted.
    std::function<void(const std::string& what, bool isData)> heard;

    void send(std::string_view text) {
        {
            const std::lock_guard lock(mutex);
            toProgram.insert(toProgram.end(), text.begin(), text.end());
        }
        CLOCK_Notify();
    }
    void lose(const std::string& reason) {
        {
            const std::lock_guard lock(mutex);
            lost = reason;
        }
        CLOCK_Notify();
    }
    bool await(size_t count, Moment deadline, const Condition& stop) {
        ++inside;
        CLOCK_Wait(deadline, [this, count, &stop] {
            const std::lock_guard lock(mutex);
            return toProgram.size() >= count || !lost.empty() || (stop && stop());
        });
        --inside;
        const std::lock_guard lock(mutex);
        return lost.empty() && !toProgram.empty();
    }
    size_t take(std::span<uint8_t> buffer) {
        const std::lock_guard lock(mutex);
        size_t count = 0;
        while (count < buffer.size() && lost.empty() && !toProgram.empty()) {
            buffer[count++] = toProgram.front();
            toProgram.pop_front();
        }
        return count;
    }
    void note(std::vector<std::string>& list, const std::string& what) {
        {
            const std::lock_guard lock(mutex);
            list.push_back(what);
        }
        if (heard) {
            heard(what, &list == &fromProgram);
        }
    }
    bool write(std::span<const uint8_t> bytes) {
        note(fromProgram, {bytes.begin(), bytes.end()});
        const std::lock_guard lock(mutex);
        return lost.empty() && !refuseWrites;
    }
    std::optional<uint32_t> configure(const LineSettings& settings) {
        note(calls, "rate " + std::to_string(settings.baudrate));
        const std::lock_guard lock(mutex);
        const uint32_t rounded = settings.baudrate + settings.baudrate / 500;
        return refuseCalls || !lost.empty() ? std::nullopt
                                            : std::optional(std::exchange(rate, rounded));
    }
    bool call(const std::string& name, bool on) {
        note(calls, name + (on ? " on" : " off"));
        return !refuseCalls;
    }
};

// The lines of a test by name; others do not exist. Lives as long as the port is used.
struct TestLines {
    std::map<std::string, TestLine> lines;

    explicit TestLines(const std::vector<std::string>& names) {
        for (const std::string& name : names) {
            lines["test://" + name];
        }
        SERIALPORT_AddKind("test://", [this](const std::string& device, std::string& error) {
            return open(device, error);
        });
    }
    TestLine& operator[](const std::string& name) { return lines.at("test://" + name); }

    SerialPortPtr open(const std::string& device, std::string& error) {
        const auto found = lines.find(device);
        if (found == lines.end() || found->second.isOpen) {
            error = found == lines.end() ? "No such line" : "in use by another program";
            return nullptr;
        }
        TestLine* line = &found->second;
        line->isOpen = true;
        line->lost.clear();
        ++line->opened;
        SerialPortPtr port(new SerialPort, [line](SerialPort* closing) {
            line->closedInUse += line->inside;
            line->isOpen = false;
            delete closing;
        });
        port->read = [line](std::span<uint8_t> buffer, Moment deadline, const Condition& stop) {
            line->await(buffer.size(), deadline, stop);
            return line->take(buffer);
        };
        port->waitReadable = [line](Moment deadline, const Condition& stop) {
            return line->await(1, deadline, stop);
        };
        port->write = [line](std::span<const uint8_t> bytes) { return line->write(bytes); };
        port->configure = [line](const LineSettings& settings) {
            return line->configure(settings);
        };
        port->setDtr = [line](bool on) { return line->call("DTR", on); };
        port->setRts = [line](bool on) { return line->call("RTS", on); };
        port->lostReason = [line] {
            const std::lock_guard lock(line->mutex);
            return line->lost;
        };
        port->refusal = [] { return std::string("that is refused"); };
        port->description = device;
        return port;
    }
};
