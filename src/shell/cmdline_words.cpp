#include "shell/cmdline_words.h"

#include "notice/run.h"
#include "platform/process.h"
#include "shell/cmdline.h"
#include "shell/identity.h"
#include "shell/inquiries.h"

#include <algorithm>

namespace {

constexpr CmdlineWord kWords[] = {
    {"--isolated", "",
     "neither settings nor projects are read or written, the run is its command line alone",
     RUN_SetIsolated},
    {"--accept-damaged", "", "a damaged record of a program file does not fail a run with -Exit",
     RUN_SetAcceptDamaged},
    {"--paths", "", "prints where settings, projects, logs and devices are"},
    {"--list-ports", "", "prints the serial ports that are present"},
    {"--list-devices", "", "prints the devices that can be selected"},
    {"--check-device", "FILE", "checks a device description and prints what is wrong with it"},
    {"--version", "", "prints the version"},
    {"--help", "", "prints this text, anywhere on the line, as do -h and -help"},
};

constexpr struct {
    std::string_view name;
    int (*answer)(const std::string& argument);
} kAnswers[] = {
    {"--paths", INQUIRY_Paths},
    {"--list-ports", INQUIRY_Ports},
    {"--list-devices", INQUIRY_Devices},
    {"--check-device", INQUIRY_CheckDevice},
};

} // namespace

std::span<const CmdlineWord> WORDS_Table() {
    return kWords;
}

const CmdlineWord* WORDS_Find(std::string_view argument) {
    const auto found = std::ranges::find_if(
        kWords, [argument](const CmdlineWord& word) { return argument == word.name; });
    return found == std::end(kWords) ? nullptr : found;
}

bool WORDS_AsksForHelp(const std::vector<std::string>& arguments) {
    return std::ranges::any_of(arguments, [](const std::string& argument) {
        return argument == "-h" || argument == "-help" || argument == "--help";
    });
}

std::optional<int> WORDS_Answer(const std::vector<std::string>& arguments) {
    if (WORDS_AsksForHelp(arguments)) {
        CMDLINE_PrintHelp();
        return 0;
    }
    if (arguments == std::vector<std::string>{"--version"}) {
        PROCESS_WriteOut(IDENTITY_Title() + "\n");
        return 0;
    }
    for (const auto& row : kAnswers) {
        const bool takesArgument = *WORDS_Find(row.name)->argument != '\0';
        if (arguments.size() == (takesArgument ? 2 : 1) && arguments[0] == row.name) {
            return row.answer(arguments.back());
        }
    }
    return std::nullopt;
}
