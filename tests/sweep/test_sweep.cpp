// The sweeps: faults at every byte of the line, Cancel and Ctrl-C at every byte and moment, chips
// that misbehave, commands begun at every point of an identify exchange. docs/sweeps.md tells more.

#include "platform/format.h"
#include "sweep/sweep.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <sched.h>
#include <thread>

namespace {

#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
constexpr uint64_t kShortStride = 4001;
#else
constexpr uint64_t kShortStride = 401;
#endif

// In real time and with real threads, where virtual time would put everything in a row.
constexpr const char* kRealCases[] = {
    "A1 auto-verify rx 40 dropped",  "B1 download at 3000 slow@identify,value=2D",
    "B1 auto-verify ms 1800 cancel", "A2 verify tx 30 unplugged",
    "AE read-back ms 1400 ctrlc",    "BE erase-connected at 1000 slow@identify,value=0"};

struct Sweep {
    uint64_t stride = kShortStride;
    unsigned shard = 0;
    unsigned shards = 1;
    std::string only;   // the beginning of the cases to run
    bool tells = false; // what every run came to
    bool virtualTime = true;

    std::map<std::string, CleanRun> clean;
    std::map<std::string, unsigned> blindSpots;
    uint64_t cases = 0;
    unsigned runs = 0;
    unsigned failures = 0;
};

void fail(Sweep& sweep, const SweepCase& sweepCase, const std::string& wrong) {
    ++sweep.failures;
    std::printf("FAILED: test_sweep %s \"%s\": %s\n", sweep.virtualTime ? "--replay" : "--real",
                sweepCase.text().c_str(), wrong.c_str());
}

const CleanRun& cleanRun(Sweep& sweep, const std::string& device, const std::string& command) {
    const auto [found, isNew] = sweep.clean.try_emplace(device + command);
    if (isNew) {
        found->second = JUDGE_Clean(device, command);
    }
    if (isNew && !found->second.wrong.empty()) {
        fail(sweep, {device, command, "chip", 0, "slow"}, found->second.wrong);
    }
    return found->second;
}

void judge(Sweep& sweep, const SweepCase& sweepCase) {
    ++sweep.runs;
    const CleanRun& clean = cleanRun(sweep, sweepCase.device, sweepCase.command);
    const Verdict verdict = JUDGE_Case(sweepCase, clean, sweep.virtualTime);
    if (sweep.tells) {
        std::printf("%s: %s after %d ms\n", sweepCase.text().c_str(),
                    verdict.told.success ? "success" : "failure",
                    static_cast<int>(verdict.told.us / 1000));
        for (const std::string& error : verdict.told.errors) {
            std::printf("    Error: %s\n", error.c_str());
        }
    }
    if (!verdict.blindSpot.empty()) {
        ++sweep.blindSpots[verdict.blindSpot];
    }
    if (!verdict.wrong.empty()) {
        fail(sweep, sweepCase, verdict.wrong);
    }
}

// Runs the case when it is one of this stride and shard.
void offer(Sweep& sweep, const SweepCase& sweepCase) {
    if (!sweepCase.text().starts_with(sweep.only)) {
        return;
    }
    const uint64_t number = sweep.cases++;
    if (number % sweep.stride == 0 && number / sweep.stride % sweep.shards == sweep.shard) {
        judge(sweep, sweepCase);
    }
}

void sweepLine(Sweep& sweep, const std::string& device, const std::string& command) {
    const CleanRun& clean = cleanRun(sweep, device, command);
    for (const std::string direction : {"tx", "rx"}) {
        const std::vector<uint8_t>& stages = clean.stages[direction == "rx" ? 1 : 0];
        for (size_t at = 0; at < stages.size(); ++at) {
            for (const LineFault& fault : kLineFaults) {
                if (stages[at] != kStageAgain && (direction == "tx" || !fault.onlyTx)) {
                    offer(sweep, {device, command, direction, at, fault.name});
                }
            }
        }
    }
}

void sweepMoments(Sweep& sweep, const std::string& device, const std::string& command) {
    const int64_t end = cleanRun(sweep, device, command).outcome.us / 1000;
    for (int64_t ms = 0; ms < end; ms += 20) {
        for (const char* what : {"cancel", "ctrlc", "unplugged"}) {
            offer(sweep, {device, command, "ms", static_cast<uint64_t>(ms), what});
        }
    }
    for (const unsigned slow : {0U, 20U, 45U}) { // ms
        for (unsigned us = 0; us < 12'000 + slow * 1000; us += 200) {
            offer(sweep, {device, command, "at", us, formatText("slow@identify,value=%X", slow)});
        }
    }
}

void sweepChip(Sweep& sweep, const std::string& device, const std::string& command) {
    const auto chip = [&](uint64_t where, const std::string& what) {
        offer(sweep, {device, command, "chip", where, what});
    };
    for (unsigned i = 0; i < 0x100; ++i) {
        const unsigned address = i + (device[0] == 'A' ? 0x8000 : 0);
        for (const char* kind : {"stuck", "dead"}) {
            chip(i, formatText("%s-bits,address=%X,value=%X", kind, address, 1U << i * 5 % 8));
        }
    }
    for (unsigned n = 0; n <= 8; ++n) { // 0: every time
        for (const char* kind : {"lost-write", "power-cut", "short-erase"}) {
            chip(n, formatText("%s#%u", kind, n));
        }
        chip(n, formatText("short-erase#%u,value=80", n));
        for (const unsigned mask : {4U, 0x40U, 0x80U}) {
            chip(n, formatText("misplaced-write#%u,address=%X", n, mask));
        }
        for (const unsigned places : {1U, 4U, 32U}) {
            chip(n, formatText("shifted-write#%u,value=%X", n, places));
        }
    }
    const std::vector<uint8_t>& sent = cleanRun(sweep, device, command).stages[0];
    for (unsigned at = 0; at < sent.size(); ++at) {
        for (const char* kind : {"die", "reset"}) {
            if (sent[at] != kStageAgain) {
                chip(at, formatText("%s-at-byte#%u", kind, at + 1));
            }
        }
    }
}

void sweepAll(Sweep& sweep) {
    for (const SweepDevice& device : SWEEP_Devices()) {
        for (const SweepCommand& row : SWEEP_Commands()) {
            const std::string command = row.name;
            if (!cleanRun(sweep, device.name, command).isOffered) {
                continue;
            }
            if (command != "auto") { // which is how "auto-verify" begins
                sweepLine(sweep, device.name, command);
            }
            sweepMoments(sweep, device.name, command);
            if (command.starts_with("auto")) {
                sweepChip(sweep, device.name, command);
            }
        }
    }
}

void sweepReal(Sweep& sweep, const std::string& only) {
    sweep.virtualTime = false;
    for (const std::string line : kRealCases) {
        if (only.empty() || only == line) {
            judge(sweep, SweepCase::parse(line));
        }
    }
}

// Virtual time runs one thread at a time: on one processor they hand over without delay.
void stayOnOneProcessor(const Sweep& sweep) {
    const unsigned count = std::max(1U, std::thread::hardware_concurrency());
    cpu_set_t processors;
    CPU_ZERO(&processors);
    CPU_SET(sweep.shards > 1 ? sweep.shard % count : static_cast<unsigned>(sched_getcpu()),
            &processors);
    sched_setaffinity(0, sizeof processors, &processors);
}

void run(Sweep& sweep, const std::string& mode, const std::string& line) {
    if (mode == "--replay") {
        judge(sweep, SweepCase::parse(line));
    } else if (mode == "--real") {
        sweepReal(sweep, line);
    } else {
        stayOnOneProcessor(sweep);
        sweepAll(sweep);
    }
}

} // namespace

// test_sweep [--stride N] [--shard I/N] [--only BEGINNING] | --replay CASE | --real
// [CASE]
int main(int argc, char** argv) {
    std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);
    Sweep sweep;
    std::string mode;
    std::string line;
    for (int i = 1; i < argc; ++i) {
        const std::string name = argv[i];
        const char* value = i + 1 < argc ? argv[i + 1] : "";
        if (name == "--replay" || name == "--real") {
            mode = name;
            line = value;
            sweep.tells = true;
        } else if (name == "--stride") {
            sweep.stride = std::strtoull(value, nullptr, 10);
        } else if (name == "--shard") {
            std::sscanf(value, "%u/%u", &sweep.shard, &sweep.shards);
        } else if (name == "--only") {
            sweep.only = value;
        }
    }
    const auto begin = std::chrono::steady_clock::now();
    run(sweep, mode, line);
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - begin;
    for (const auto& [name, count] : sweep.blindSpots) {
        std::printf("not shown: %u %s\n", count, name.c_str());
    }
    std::printf("%u runs, %u failed, %.1f s, %.0f runs a second\n", sweep.runs, sweep.failures,
                took.count(), sweep.runs / took.count());
    return sweep.failures == 0 && sweep.runs > 0 ? 0 : 1;
}
