#include "shell/cmdline_line.h"

#include "device/device.h"
#include "notice/error.h"
#include "notice/run.h"
#include "platform/files.h"
#include "platform/format.h"
#include "shell/cmdline_hint.h"
#include "shell/cmdline_options.h"
#include "shell/cmdline_words.h"
#include "shell/command_ids.h"

#include <algorithm>
#include <utility>

namespace {

// Paths of this platform begin with the character that also begins an option: such an argument is
// the program file when no option has that name and the file is there.
bool isProgramFile(const std::string& argument) {
    if (!LINE_IsOption(argument)) {
        return true;
    }
    return argument.starts_with('/') && LINE_EntryOf(argument) == nullptr && FILES_Exists(argument);
}

bool isWord(const std::string& argument) {
    const CmdlineWord* word = WORDS_Find(argument);
    return word != nullptr && word->isForRun();
}

void readFile(LineItem& item, CommandLine& line) {
    if (item.argument.empty() && RUN_IsUnattended()) {
        item.faults.emplace_back("An empty argument names no file");
        return;
    }
    if (!line.programFile) {
        line.programFile = item.argument;
        return;
    }
    item.isKnown = false;
    if (RUN_IsUnattended()) {
        item.faults.push_back("Only one file can be named, the first is \"" + *line.programFile +
                              "\"");
    }
}

ArgumentValue readValue(const LineItem& item) {
    const CmdlineEntry& entry = *item.entry;
    if (entry.setting != nullptr) {
        return OPTION_Read(*entry.setting);
    }
    if (entry.command != nullptr && entry.command->line.read != nullptr) {
        return entry.command->line.read();
    }
    if (!item.text.empty()) {
        CMDLINE_Doubt(formatText("%s takes no argument", entry.name));
    }
    return {};
}

void readEntry(LineItem& item) {
    item.text = item.argument.substr(1 + std::string_view(item.entry->name).size());
    if (item.text.size() > kMaxArgument) {
        item.faults.push_back(
            formatText("The argument of \"%s\" is too long: at most %d characters",
                       item.entry->name, static_cast<int>(kMaxArgument)));
        return;
    }
    if (item.isCommand() && !RUN_IsUnattended()) {
        return; // it says itself what is wrong, when it runs
    }
    CMDLINE_SetArgument(item.text);
    ArgumentValue value = readValue(item);
    if (item.isCommand()) { // reads it again when its turn comes
        item.value.misfit = std::move(value.misfit);
    } else {
        item.value = std::move(value);
    }
    CMDLINE_DoubtRest();
    item.faults = CMDLINE_Faults(RUN_IsUnattended());
}

std::string hintFor(const std::string& argument) {
    if (const CmdlineWord* word = WORDS_Find(argument)) {
        return std::string(word->name) + " stands alone";
    }
    const std::string nearest = HINT_NearestName(argument);
    return nearest.empty() ? nearest : "did you mean " + nearest + "?";
}

void readUnknown(LineItem& item) {
    const std::string text = "\"" + item.argument.substr(1) + "\" is not a valid command !";
    const std::string hint = hintFor(item.argument);
    item.faults.push_back(RUN_IsUnattended() ? text : ERROR_WithReason(text, hint));
    item.remark = hint.empty() ? "" : ", " + hint;
    item.remark += item.argument.starts_with('/') ? ", and there is no such file" : "";
    item.isKnown = false;
}

// What is wrong with where a command stands.
void checkPlace(LineItem& item, const CommandLine& line) {
    const auto before = std::ranges::count_if(line.items, [](const LineItem& earlier) {
        return earlier.isCommand() && earlier.faults.empty();
    });
    if (before >= static_cast<ptrdiff_t>(kMaxQueuedCommands)) {
        item.faults.push_back(
            formatText("Too many commands, \"%s\" is not run: at most %d can be queued",
                       item.entry->name, static_cast<int>(kMaxQueuedCommands)));
    } else if (RUN_IsUnattended() && !item.isExit() &&
               std::ranges::any_of(line.items, &LineItem::isExit)) {
        item.faults.push_back(
            formatText("\"%s\" stands behind Exit and would not run", item.entry->name));
    }
}

void readItem(LineItem& item, CommandLine& line) {
    if (isWord(item.argument)) {
        return;
    }
    item.entry = LINE_EntryOf(item.argument);
    if (item.entry != nullptr) {
        readEntry(item);
    } else if (isProgramFile(item.argument)) {
        readFile(item, line);
    } else {
        readUnknown(item);
    }
    if (item.isCommand()) {
        checkPlace(item, line);
    }
}

// A word of which the value is an argument of its own.
void readWordValue(LineItem& item, const CmdlineWord& word, const std::string* value) {
    if (!RUN_IsUnattended()) {
        item.faults.push_back(formatText("%s is for a run with -Exit", word.name));
    } else if (value == nullptr) {
        item.faults.push_back(formatText("%s needs %s behind it", word.name, word.argument));
    } else if (!word.setValue(*value)) {
        item.faults.push_back(
            formatText("%s cannot be %s of %s", value->c_str(), word.argument, word.name));
    }
}

bool savesTo(const LineItem& item, const std::string& file) {
    std::error_code none;
    return item.isCommand() && item.entry->command->id == CMD_FILE_SAVE_AS &&
           (item.text == file || std::filesystem::equivalent(item.text, file, none));
}

// A state that cannot come another time is not watched, nor one that each round makes anew.
void checkWatch(LineItem& item, const CommandLine& line) {
    if (!line.programFile) {
        item.faults.emplace_back("--watch needs a FILE to watch");
    } else if (FILES_IsStream(*line.programFile)) {
        item.faults.push_back("--watch needs a file that can change, " + *line.programFile +
                              " is a pipe or a device");
    } else if (std::ranges::any_of(line.items, [&line](const LineItem& other) {
                   return savesTo(other, *line.programFile);
               })) {
        item.faults.push_back("--watch would never rest: " + *line.programFile +
                              " is saved by the line itself");
    }
}

bool selectsDevice(const LineItem& item) {
    return item.value.device.has_value();
}

} // namespace

bool LineItem::isExit() const {
    return isCommand() && entry->command->id == CMD_EXIT;
}

bool LINE_IsOption(const std::string& argument) {
    return argument.starts_with('-') || argument.starts_with('/');
}

const CmdlineEntry* LINE_EntryOf(const std::string& argument) {
    return LINE_IsOption(argument) ? CMDLINE_Find(argument.substr(1)) : nullptr;
}

void LINE_SetKindOfRun(const std::vector<std::string>& arguments) {
    const std::vector<std::string> others = WORDS_WithoutValues(arguments);
    RUN_SetUnattended(std::ranges::any_of(others, [](const std::string& argument) {
        return LineItem{argument, LINE_EntryOf(argument)}.isExit();
    }));
    WORDS_SetForRun(arguments);
}

CommandLine LINE_Read(const std::vector<std::string>& arguments) {
    CommandLine line;
    for (size_t i = 0; i < arguments.size(); ++i) {
        LineItem item{arguments[i]};
        const CmdlineWord* word = WORDS_Find(item.argument);
        if (word != nullptr && word->setValue != nullptr) {
            const bool hasValue = i + 1 < arguments.size() && WORDS_IsValue(arguments[i + 1]);
            readWordValue(item, *word, hasValue ? &arguments[++i] : nullptr);
        } else {
            readItem(item, line);
        }
        line.items.push_back(std::move(item));
    }
    for (LineItem& item : line.items) {
        if (item.argument == kWatchWord) {
            checkWatch(item, line);
        }
    }
    return line;
}

bool LINE_NamesDevice(const CommandLine& line) {
    return std::ranges::any_of(line.items, selectsDevice);
}

void LINE_CheckDevice(CommandLine& line) {
    const auto named = std::find_if(line.items.rbegin(), line.items.rend(), selectsDevice);
    const DeviceRecord& device =
        named == line.items.rend() ? DEVICE_Selected() : DEVICE_At(*named->value.device);
    for (LineItem& item : line.items) {
        std::string misfit = item.value.misfit ? item.value.misfit(device) : "";
        if (!misfit.empty()) {
            item.faults.push_back(std::move(misfit));
        }
    }
}

void LINE_Report(const LineItem& item) {
    for (const std::string& fault : item.faults) {
        const Hint hint = &fault == &item.faults.front() ? item.value.hint : Hint{};
        if (RUN_IsUnattended()) {
            const std::string text = fault.substr(0, fault.find_last_not_of('\n') + 1);
            ERROR_Out(nullptr, text + " (argument \"" + item.argument + "\"" + item.remark + ")", 1,
                      hint);
        } else {
            ERROR_Out(nullptr, fault, 1, hint);
        }
    }
}

bool LINE_IsAccepted(const CommandLine& line) {
    std::ranges::for_each(line.items, LINE_Report);
    return std::ranges::all_of(line.items,
                               [](const LineItem& item) { return item.faults.empty(); });
}
