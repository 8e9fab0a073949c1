// One run of a sweep: a program that has just started, a virtual chip, a command of the Target
// menu, a fault; and the judge of what came of it.
#pragma once

#include "sim/sim_port.h"
#include "sweep/faults.h"

#include <functional>
#include <map>
#include <memory>
#include <vector>

class SweepWorld;

struct SweepDevice {
    const char* name;
    std::string text; // a device description
};
const std::vector<SweepDevice>& SWEEP_Devices();

struct SweepCommand {
    const char* name;
    std::vector<int> ids; // of the menu, run one after the other until one fails
    const char* flash;    // what it holds before: "blank", "old", "program", "half"
    // Whether chip and program stand as a success would have it.
    std::function<bool(SweepWorld&)> asAsked;
};
const std::vector<SweepCommand>& SWEEP_Commands();

// What a byte that passes belongs to: the code of a frame command, or one of these.
inline constexpr uint8_t kStageAgain = 0xFF; // identify exchanges but the first
inline constexpr uint8_t kStageBoot = 0xFE;
using Stages = std::vector<uint8_t>[2]; // sent and received

struct Outcome {
    bool success = false; // as the user is told
    std::vector<std::string> errors;
    int64_t us = 0;           // it took
    int64_t usAfterStop = -1; // of it, after Cancel or Ctrl-C; -1: none was pressed in time
};

class SweepWorld {
public:
    explicit SweepWorld(const SweepCase& sweepCase, bool virtualTime = true);
    ~SweepWorld();
    SweepWorld(const SweepWorld&) = delete;
    SweepWorld& operator=(const SweepWorld&) = delete;

    Outcome run();
    // The fault is gone, everything has settled, and flash and image are as before the first run.
    void mend();

    std::vector<uint8_t> flash(uint32_t address, uint32_t count) const;
    std::vector<uint8_t> contents(const std::string& name) const; // what the whole flash may hold
    bool chip(const std::function<bool(Chip&)>& look) const;
    std::string violations() const;
    bool hasLogged(const std::string& text) const;

    const SweepCommand& command;
    uint32_t start = 0; // of the flash
    uint32_t size = 0;  // bytes
    Stages stages;

private:
    struct Inside;
    std::unique_ptr<Inside> inside_;
};

// What is known of a command from its run without a fault.
struct CleanRun {
    std::string wrong;     // empty: it came to what it was asked for
    bool isOffered = true; // in the menu, for the device
    Outcome outcome;
    Stages stages;
};
CleanRun JUDGE_Clean(const std::string& device, const std::string& command);

struct Verdict {
    std::string wrong;     // empty when nothing is
    std::string blindSpot; // what the protocol could not show; docs/sweeps.md lists them
    Outcome told;          // what the user was told of the spoilt run
};
// Runs the case, and the command once more on a good line.
Verdict JUDGE_Case(const SweepCase& sweepCase, const CleanRun& clean, bool virtualTime = true);
