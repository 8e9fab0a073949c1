#include "shell/cmdline_words.h"

#include "notice/run.h"
#include "platform/process.h"
#include "shell/cmdline.h"
#include "shell/command_ids.h"
#include "shell/identity.h"
#include "shell/inquiries.h"
#include "shell/run_words.h"

#include <algorithm>
#include <charconv>

namespace {

constexpr int kMostRetries = 100;

template <std::string RunWords::*path>
bool setPath(const std::string& value) {
    RUNWORDS_Get().*path = value;
    return !value.empty();
}

void setPatchAdds(bool on) {
    RUNWORDS_Get().patchAdds = on;
}

void setWatch(bool on) {
    RUNWORDS_Get().watch = on;
}

bool setRetries(const std::string& value) {
    int& retries = RUNWORDS_Get().retries;
    const auto [end, error] = std::from_chars(value.data(), value.data() + value.size(), retries);
    return error == std::errc() && end == value.data() + value.size() && retries >= 0 &&
           retries <= kMostRetries;
}

constexpr CmdlineWord kWords[] = {
    {"--isolated", "",
     "neither settings nor projects are read or written, the run is its command line alone",
     RUN_SetIsolated},
    {"--accept-damaged", "", "a damaged record of a program file does not fail a run with -Exit",
     RUN_SetAcceptDamaged},
    {"--result", "FILE",
     "writes what became of a run with -Exit as one JSON object; - for "
     "standard output",
     nullptr, setPath<&RunWords::resultPath>},
    {"--log", "FILE", "writes the log of this run there", nullptr, setPath<&RunWords::logPath>},
    {"--transcript", "FILE", "writes there what passes on the line in this run", nullptr,
     setPath<&RunWords::transcriptPath>},
    {"--retries", "N", "walks through the commands up to N times more when the board fails",
     nullptr, setRetries},
    {kWatchWord, "",
     "runs the commands anew whenever FILE has changed, with -Exit as if it stood there; Ctrl-C "
     "ends",
     setWatch},
    {"--patch-adds", "", "lets -FilePatch add what the image does not hold", setPatchAdds},
    {"--yes", "",
     "lets a run with -Exit protect the chip or its blocks, which cannot be taken back",
     RUN_SetConfirmed},
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

bool WORDS_IsValue(std::string_view value) {
    return value == "-" || !value.starts_with('-');
}

std::vector<std::string> WORDS_WithoutValues(const std::vector<std::string>& arguments) {
    std::vector<std::string> others;
    bool isValue = false;
    for (const std::string& argument : arguments) {
        if (!isValue || !WORDS_IsValue(argument)) {
            others.push_back(argument);
        }
        const CmdlineWord* word = WORDS_Find(argument);
        isValue = !isValue && word != nullptr && word->setValue != nullptr;
    }
    return others;
}

std::vector<std::string> WORDS_Complete(std::vector<std::string> arguments) {
    const bool watches = std::ranges::find(arguments, kWatchWord) != arguments.end();
    if (watches && !CMDLINE_Contains(arguments, CMD_EXIT)) {
        arguments.emplace_back("-Exit");
    }
    return arguments;
}

void WORDS_SetForRun(const std::vector<std::string>& arguments) {
    RUNWORDS_Get() = {};
    for (const CmdlineWord& word : kWords) {
        const auto found = std::ranges::find(arguments, word.name);
        if (word.setForRun != nullptr) {
            word.setForRun(found != arguments.end());
        } else if (word.setValue != nullptr && RUN_IsUnattended() && found != arguments.end() &&
                   found + 1 != arguments.end() && WORDS_IsValue(found[1])) {
            word.setValue(found[1]);
        }
    }
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
