// The command line of calvorin-sim.
#pragma once

#include "sim/chip_options.h"

#include <cstdint>
#include <string>
#include <vector>

struct SimOptions {
    std::string device;
    std::string devicesFolder; // holds the .dev files; empty: Device beside the program
    std::string link;          // symbolic link to the pseudo-terminal
    int tcpPort = -1;          // RFC 2217 on loopback instead; 0: any free port
    uint32_t rate = 0;         // bits per second to pace at; 0: what the host sets
    std::string flashIn;       // hex, S-record or binary file
    std::string flashOut;      // binary file
    std::string transcript;    // file
    std::string replay;        // communication log to play in a chip's place
    bool help = false;
    bool version = false;
    bool listDevices = false;
    ChipOptions chip;
};

// Reads the arguments behind the program's name. False with a message in `error`.
bool SIM_ParseOptions(const std::vector<std::string>& arguments, SimOptions& options,
                      std::string& error);
std::string SIM_HelpText();

// The options as documents list them.
struct SimOptionText {
    std::string name;
    std::string value; // empty: takes none
    std::string help;
};
std::vector<SimOptionText> SIM_OptionTexts();
