#include "sim/sim_options.h"

#include "persist/hex_text.h"
#include "platform/format.h"

#include <charconv>
#include <functional>

namespace {

constexpr uint64_t kMaxMicroseconds = 600'000'000;
constexpr size_t kMaxPasswordBytes = 255;

using Setter = std::function<bool(SimOptions&, const std::string& value)>;

struct OptionRow {
    const char* name;
    const char* value; // what stands behind it; null: nothing
    const char* help;
    Setter set;
};

template <typename Number>
bool readLimited(const std::string& text, uint64_t maximum, Number& to) {
    uint64_t value = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    if (error != std::errc{} || stop != end || value > maximum) {
        return false;
    }
    to = static_cast<Number>(value);
    return true;
}

Setter text(std::string SimOptions::*member) {
    return [member](SimOptions& options, const std::string& value) {
        options.*member = value;
        return !value.empty();
    };
}

Setter microseconds(uint32_t ChipOptions::*member) {
    return [member](SimOptions& options, const std::string& value) {
        return readLimited(value, kMaxMicroseconds, options.chip.*member);
    };
}

bool setPassword(SimOptions& options, const std::string& value) {
    std::string error;
    options.chip.password = HEXTEXT_ToBytes(value, kMaxPasswordBytes, error);
    return error.empty() && !options.chip.password.empty();
}

// The chip, the line, and the files.
std::vector<OptionRow> generalRows() {
    return {
        {"--device", "NAME", "the chip, by the name in its description (needed)",
         text(&SimOptions::device)},
        {"--devices", "DIR", "folder of the descriptions; without it Device beside the program",
         text(&SimOptions::devicesFolder)},
        {"--list", nullptr, "list the devices and end",
         [](SimOptions& options, const std::string&) { return options.listDevices = true; }},
        {"--link", "NAME", "also make NAME a symbolic link to the pseudo-terminal",
         text(&SimOptions::link)},
        {"--tcp", "PORT", "be an RFC 2217 port on loopback instead; 0 takes any free port",
         [](SimOptions& options, const std::string& value) {
             return readLimited(value, 65535, options.tcpPort);
         }},
        {"--pace", nullptr, "bytes take their time on the line, at the rate that the host sets",
         [](SimOptions& options, const std::string&) { return options.chip.pacing = true; }},
        {"--rate", "BAUD", "pace at this rate, whatever the host sets (implies --pace)",
         [](SimOptions& options, const std::string& value) {
             options.chip.pacing = true;
             return readLimited(value, 10'000'000, options.rate) && options.rate != 0;
         }},
        {"--flash-in", "FILE", "contents at the start: Intel HEX, S-record, or .bin from the start",
         text(&SimOptions::flashIn)},
        {"--flash-out", "FILE", "write the contents there at the end and on SIGUSR1, binary",
         text(&SimOptions::flashOut)},
        {"--transcript", "FILE", "write down what passes on the line",
         text(&SimOptions::transcript)},
        {"--replay", "FILE", "play the chip's side of a communication log instead of being a chip",
         text(&SimOptions::replay)},
    };
}

// What the chip is like.
std::vector<OptionRow> chipRows() {
    return {
        {"--fault", "FAULT", "misbehave, see below; may be repeated", nullptr},
        {"--seed", "N", "of what is random in a fault",
         [](SimOptions& options, const std::string& value) {
             return readLimited(value, UINT32_MAX, options.chip.seed);
         }},
        {"--password", "HEX", "password to ask for, instead of what the flash holds", setPassword},
        {"--packet-size", "N", "bytes, as the loader reports it (128)",
         [](SimOptions& options, const std::string& value) {
             return readLimited(value, UINT16_MAX, options.chip.packetSize);
         }},
        {"--erase-us", "N", "microseconds that the erase of a block takes (20000)",
         microseconds(&ChipOptions::eraseBlockUs)},
        {"--erase-chip-us", "N", "microseconds that the erase of the chip takes (100000)",
         microseconds(&ChipOptions::eraseChipUs)},
        {"--program-us", "N", "microseconds that a program command takes (1000)",
         microseconds(&ChipOptions::programUs)},
        {"--app-text", "TEXT", "what the application sends when it starts",
         [](SimOptions& options, const std::string& value) {
             options.chip.applicationText = value;
             return true;
         }},
        {"--app-every", "MS", "how often the application sends its text (\"running\" without one)",
         [](SimOptions& options, const std::string& value) {
             if (options.chip.applicationText.empty()) {
                 options.chip.applicationText = "running\r\n";
             }
             return readLimited(value, kMaxMicroseconds / 1000, options.chip.applicationEveryMs);
         }},
        {"--app-echo", nullptr, "the application sends back what it receives",
         [](SimOptions& options, const std::string&) {
             return options.chip.applicationEcho = true;
         }},
        {"--start-app", nullptr, "power up into the application, not into the boot ROM",
         [](SimOptions& options, const std::string&) {
             options.chip.startInBootRom = false;
             return true;
         }},
        {"--lenient", nullptr, "no violations for short pauses and odd records",
         [](SimOptions& options, const std::string&) {
             options.chip.strict = false;
             return true;
         }},
        {"--no-resync", nullptr, "no return to the boot ROM by a matching byte (pseudo-terminal)",
         [](SimOptions& options, const std::string&) {
             options.chip.resyncByMatch = false;
             return true;
         }},
        {"--version", nullptr, "the version, which is that of the program",
         [](SimOptions& options, const std::string&) { return options.version = true; }},
        {"--help", nullptr, "this text",
         [](SimOptions& options, const std::string&) { return options.help = true; }},
    };
}

const std::vector<OptionRow>& optionRows() {
    static const std::vector<OptionRow> rows = [] {
        std::vector<OptionRow> all = generalRows();
        for (const OptionRow& row : chipRows()) {
            all.push_back(row);
        }
        return all;
    }();
    return rows;
}

const OptionRow* findRow(const std::string& name) {
    for (const OptionRow& row : optionRows()) {
        if (name == row.name) {
            return &row;
        }
    }
    return nullptr;
}

bool addFault(SimOptions& options, const std::string& value, std::string& error) {
    ChipFault fault;
    if (!CHIP_ParseFault(value, fault, error)) {
        error = "--fault: " + error;
        return false;
    }
    options.chip.faults.push_back(fault);
    return true;
}

bool apply(const OptionRow& row, const std::string& value, SimOptions& options,
           std::string& error) {
    if (!row.set) {
        return addFault(options, value, error);
    }
    if (row.set(options, value)) {
        return true;
    }
    error = formatText("%s: '%s' is not allowed", row.name, value.c_str());
    return false;
}

} // namespace

bool SIM_ParseOptions(const std::vector<std::string>& arguments, SimOptions& options,
                      std::string& error) {
    options.chip.startInBootRom = true;
    options.chip.resyncByMatch = true;
    for (size_t i = 0; i < arguments.size(); i++) {
        const OptionRow* row = findRow(arguments[i]);
        if (row == nullptr) {
            error = formatText("unknown option '%s'; --help lists them", arguments[i].c_str());
            return false;
        }
        if (row->value != nullptr && i + 1 == arguments.size()) {
            error = formatText("%s needs %s", row->name, row->value);
            return false;
        }
        const std::string value = row->value != nullptr ? arguments[++i] : std::string();
        if (!apply(*row, value, options, error)) {
            return false;
        }
    }
    const bool needsDevice =
        !options.help && !options.version && !options.listDevices && options.replay.empty();
    if (options.device.empty() && needsDevice) {
        error = "--device is needed; --list lists the devices, --help the options";
        return false;
    }
    return true;
}

std::string SIM_HelpText() {
    std::string help = "calvorin-sim --device NAME [options]\n\n"
                       "A virtual microcontroller with a serial boot ROM on a pseudo-terminal,\n"
                       "whose path is the first line that is printed, or on a TCP port.\n\n";
    for (const OptionRow& row : optionRows()) {
        const std::string left =
            std::string(row.name) + (row.value != nullptr ? " " + std::string(row.value) : "");
        help += formatText("  %-20s %s\n", left.c_str(), row.help);
    }
    help += "\nFAULT is KIND[@STEP][#N][,address=HEX][,value=HEX]: N is the time at which it\n"
            "strikes (each time without it), e.g. no-reply@program#3.\n\n"
            "Kinds: " +
            CHIP_FaultKindNames() + "\n\nSteps: " + CHIP_StepNames() +
            "\n\nThe end (SIGTERM, SIGINT) prints a summary; exit code 0, or 3 when the host\n"
            "did what no chip should have to put up with, or differed from the log that is\n"
            "played, 1 when the start failed.\n";
    return help;
}

std::vector<SimOptionText> SIM_OptionTexts() {
    std::vector<SimOptionText> texts;
    for (const OptionRow& row : optionRows()) {
        texts.push_back({row.name, row.value != nullptr ? row.value : "", row.help});
    }
    return texts;
}
