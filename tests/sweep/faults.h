// What a sweep does to a run, as one line of text that says it all: "DEVICE COMMAND KIND WHERE
// WHAT".
//
//   rx, tx  WHERE a byte that the program receives or sends, from 0; WHAT a fault of kLineFaults
//   ms      WHERE milliseconds; WHAT "cancel", "ctrlc" or "unplugged"
//   at      WHERE microseconds after the chip was connected; WHAT a fault of the loader's answers
//   chip    WHERE a number to tell cases apart; WHAT a fault as the virtual chip's --fault takes it
#pragma once

#include <algorithm>
#include <cstdint>
#include <sstream>
#include <string>

// A fault at one byte, put there by a port of the kind faulty://.
struct LineFault {
    const char* name;
    const char* port;   // the port's name of it
    const char* behind; // and what stands behind the byte's number
    int lateMs = 0;
    bool onlyTx = false;
};

inline constexpr LineFault kLineFaults[] = {{"bit0", "flip", ".0"},
                                            {"bit1", "flip", ".1"},
                                            {"bit2", "flip", ".2"},
                                            {"bit3", "flip", ".3"},
                                            {"bit4", "flip", ".4"},
                                            {"bit5", "flip", ".5"},
                                            {"bit6", "flip", ".6"},
                                            {"bit7", "flip", ".7"},
                                            {"plus1", "add", ":1"},
                                            {"to00", "set", ":00"},
                                            {"toFF", "set", ":FF"},
                                            {"dropped", "lose", ""},
                                            {"doubled", "double", ""},
                                            {"stray00", "insert", ":00"},
                                            {"strayEB", "insert", ":EB"}, // as a frame begins
                                            {"late30", "late", ":30ms", 30},
                                            {"late300", "late", ":300ms", 300},
                                            {"late3000", "late", ":3000ms", 3000},
                                            {"cut", "cut", ""},
                                            {"unplugged", "hangup", ""},
                                            {"writefails", "fail", "", 0, true},
                                            {"cancel", "", ""},
                                            {"ctrlc", "", ""}};

struct SweepCase {
    std::string device;
    std::string command;
    std::string kind;
    uint64_t where = 0;
    std::string what;

    std::string text() const {
        return device + " " + command + " " + kind + " " + std::to_string(where) + " " + what;
    }
    static SweepCase parse(const std::string& line) {
        SweepCase read;
        std::istringstream(line) >> read.device >> read.command >> read.kind >> read.where >>
            read.what;
        return read;
    }
    // The order in which threads run: another for every case, for one case always the same.
    uint64_t seed() const {
        uint64_t hash = 14695981039346656037U;
        for (const char character : text()) {
            hash = (hash ^ static_cast<uint8_t>(character)) * 1099511628211U;
        }
        return hash;
    }
    bool isOnLine() const { return kind == "rx" || kind == "tx"; }
    bool isStop() const { return what == "cancel" || what == "ctrlc"; }
    bool comesFromBeside() const { return isStop() || kind == "ms"; } // not from the line itself
    LineFault lineFault() const {
        const auto* found =
            std::ranges::find(kLineFaults, what, [](auto& row) { return std::string(row.name); });
        return isOnLine() && found != std::end(kLineFaults) ? *found : LineFault{};
    }
};
