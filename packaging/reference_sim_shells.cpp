// The completions for the virtual chip. Its values are arguments of their own, so that each shell's
// usual form serves.
#include "packaging/reference.h"
#include "sim/chip_options.h"

#include <string_view>

namespace {

enum class SimValue { none, free, device, folder, file, fault };

SimValue simValueOf(const ReferenceRow& row) {
    return row.argument.empty()                             ? SimValue::none
           : row.name == "--device"                         ? SimValue::device
           : row.argument == "DIR"                          ? SimValue::folder
           : row.argument == "FILE" || row.name == "--link" ? SimValue::file
           : row.argument == "FAULT"                        ? SimValue::fault
                                                            : SimValue::free;
}

// A text for a shell: quotes and what ends a description are kept as characters.
std::string simEscaped(const std::string& text, std::string_view special, const char* by) {
    std::string out;
    for (const char c : text) {
        out +=
            special.find(c) == std::string_view::npos ? std::string(1, c) : by + std::string(1, c);
    }
    return out;
}

std::string bashValue(SimValue value) {
    switch (value) {
    case SimValue::device:
        return R"x(mapfile -t COMPREPLY < <(compgen -W "$("$1" --list 2>/dev/null)" -- "$cur"))x";
    case SimValue::folder:
        return "mapfile -t COMPREPLY < <(compgen -d -- \"$cur\")";
    case SimValue::file:
        return "mapfile -t COMPREPLY < <(compgen -f -- \"$cur\")";
    case SimValue::fault:
        return "mapfile -t COMPREPLY < <(compgen -W '" + CHIP_FaultKindNames() + "' -- \"$cur\")";
    default:
        return ":";
    }
}

std::string zshValue(SimValue value) {
    switch (value) {
    case SimValue::device:
        return R"x({compadd -- ${(f)"$($words[1] --list 2>/dev/null)"}})x";
    case SimValue::folder:
        return "_files -/";
    case SimValue::file:
        return "_files";
    case SimValue::fault:
        return "(" + CHIP_FaultKindNames() + ")";
    default:
        return " ";
    }
}

std::string fishValue(SimValue value) {
    switch (value) {
    case SimValue::none:
        return "";
    case SimValue::device:
        return " -x -a '(__calvorin_sim_devices)'";
    case SimValue::folder:
        return " -x -a '(__fish_complete_directories)'";
    case SimValue::file:
        return " -r -F";
    case SimValue::fault:
        return " -x -a '" + CHIP_FaultKindNames() + "'";
    default:
        return " -x";
    }
}

constexpr char kSimTitle[] =
    " completion for calvorin-sim, made from the program's table of options\n";

} // namespace

std::string REFERENCE_SimBash() {
    std::string branches;
    std::string all;
    for (const ReferenceRow& row : REFERENCE_SimOptions()) {
        all += (all.empty() ? "" : " ") + row.name;
        if (!row.argument.empty()) {
            branches += "        " + row.name + ") " + bashValue(simValueOf(row)) + " ;;\n";
        }
    }
    return std::string("# bash") + kSimTitle +
           "_calvorin_sim() {\n"
           "    local cur=${COMP_WORDS[COMP_CWORD]}\n"
           "    COMPREPLY=()\n"
           "    case ${COMP_WORDS[COMP_CWORD-1]} in\n" +
           branches + "        *) mapfile -t COMPREPLY < <(compgen -W '" + all +
           "' -- \"$cur\") ;;\n"
           "    esac\n"
           "}\n"
           "complete -o filenames -F _calvorin_sim calvorin-sim\n";
}

std::string REFERENCE_SimZsh() {
    std::string text = std::string("#compdef calvorin-sim\n# zsh") + kSimTitle + "_arguments";
    for (const ReferenceRow& row : REFERENCE_SimOptions()) {
        const char* repeated = simValueOf(row) == SimValue::fault ? "*" : "";
        const std::string value =
            row.argument.empty() ? "" : ":" + row.argument + ":" + zshValue(simValueOf(row));
        text += " \\\n    '" + (repeated + row.name) + "[" +
                simEscaped(simEscaped(row.effect, "[]:", "\\"), "'", "'\\'") + "]" + value + "'";
    }
    return text + "\n";
}

std::string REFERENCE_SimFish() {
    std::string text = std::string("# fish") + kSimTitle +
                       "function __calvorin_sim_devices\n"
                       "    set -l program (commandline -opc)[1]\n"
                       "    $program --list 2>/dev/null\n"
                       "end\n"
                       "complete -c calvorin-sim -f\n";
    for (const ReferenceRow& row : REFERENCE_SimOptions()) {
        text += "complete -c calvorin-sim -l " + row.name.substr(2) + fishValue(simValueOf(row)) +
                " -d '" + simEscaped(row.effect, "'\\", "\\") + "'\n";
    }
    return text;
}
