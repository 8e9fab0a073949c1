#include "shell/cmdline.h"

#include "notice/error.h"
#include "notice/run.h"
#include "platform/format.h"
#include "platform/process.h"
#include "shell/cmdline_line.h"
#include "shell/cmdline_values.h"
#include "shell/cmdline_words.h"
#include "shell/front_end.h"

#include <algorithm>

namespace {

constexpr char kRunNotes[] = R"(
An argument stands directly behind its option: -OptionsCOMPort2, -FileSaveAsout.mot.
One FILE may stand anywhere; it may begin with "/" when no option begins that way and it exists.
Options take effect before the file is loaded, commands then run in their order, the first failure
skips the rest.
With -Exit nothing is shown or asked: errors, questions that were not asked and log lines go to
standard error, and the exit code is 0 or 1. Of a line that is not understood to its last character
nothing is done. A run that queues no -Target command leaves the port alone; another ends with a line
"Passed: ..." or "Failed: ...". Ctrl-C, SIGTERM and SIGHUP end a run with 1.
What a run leaves in Calvorin.tpu (--paths tells where), the next one starts with; a Calvorin.tpu
that cannot be read to its end ends a run with -Exit.
)";

struct QueuedCommand {
    const CmdlineEntry* entry = nullptr;
    std::string argument;
};

CommandLine commandLine;
std::vector<QueuedCommand> queue;
size_t nextIndex = 0;
bool exitQueued = false;
CommandDispatcher dispatcher;

// The words that a run takes, or those that stand alone.
std::string wordLines(const char* title, bool forRun) {
    std::string lines = title;
    for (const CmdlineWord& word : WORDS_Table()) {
        if (word.isForRun() == forRun) {
            const std::string left = std::string(word.name) + " " + word.argument;
            lines += formatText("%-20s  %s\n", left.c_str(), word.help);
        }
    }
    return lines;
}

void showHelp() {
    if (FRONTEND_Get().hasWindows) {
        ERROR_Ask(nullptr, CMDLINE_HelpText(), "Commandline", BOX_OK | BOX_ICON_INFORMATION);
    }
}

void enqueue(const LineItem& item) {
    queue.push_back({item.entry, item.text});
    exitQueued |= item.isExit();
}

void applyItem(const LineItem& item) {
    if (item.value.apply) {
        item.value.apply();
    }
    LINE_Report(item);
    if (item.entry == nullptr || !item.faults.empty() || item.entry->setting != nullptr) {
        return;
    }
    if (item.entry->command != nullptr) {
        enqueue(item);
    } else if (FRONTEND_Get().hasWindows) {
        showHelp();
    } else {
        CMDLINE_PrintHelp();
    }
}

// The device is checked as soon as it is known: the one of the line, else the one that start-up
// leaves selected.
bool isRefused(bool deviceIsKnown) {
    if (!RUN_IsUnattended()) {
        return false;
    }
    if (deviceIsKnown) {
        LINE_CheckDevice(commandLine);
    }
    return !LINE_IsAccepted(commandLine);
}

} // namespace

void CMDLINE_SetDispatcher(CommandDispatcher newDispatcher) {
    dispatcher = std::move(newDispatcher);
}

bool CMDLINE_Read(const std::vector<std::string>& arguments) {
    commandLine = LINE_Read(arguments);
    return !isRefused(LINE_NamesDevice(commandLine));
}

bool CMDLINE_Apply() {
    if (!LINE_NamesDevice(commandLine) && isRefused(true)) {
        return false;
    }
    if (RUN_IsUnattended()) {
        // Blocks and password are those of the device, wherever on the line it is named.
        std::stable_partition(commandLine.items.begin(), commandLine.items.end(),
                              [](const LineItem& item) { return item.value.device.has_value(); });
    }
    std::ranges::for_each(commandLine.items, applyItem);
    if (!exitQueued && !std::ranges::all_of(commandLine.items, &LineItem::isKnown)) {
        showHelp();
    }
    return true;
}

std::optional<std::string> CMDLINE_ProgramFile() {
    return commandLine.programFile;
}

bool CMDLINE_Contains(const std::vector<std::string>& arguments, int id) {
    return std::ranges::any_of(WORDS_WithoutValues(arguments), [id](const std::string& argument) {
        const CmdlineEntry* entry = LINE_EntryOf(argument);
        return entry != nullptr && entry->command != nullptr && entry->command->id == id;
    });
}

bool CMDLINE_ContainsTarget(const std::vector<std::string>& arguments) {
    return std::ranges::any_of(WORDS_WithoutValues(arguments), [](const std::string& argument) {
        const CmdlineEntry* entry = LINE_EntryOf(argument);
        return entry != nullptr && entry->command != nullptr &&
               entry->command->worksOn == WorksOn::target;
    });
}

std::vector<std::string> CMDLINE_CommandNames() {
    std::vector<std::string> names;
    for (const LineItem& item : commandLine.items) {
        if (item.isCommand() && !item.isExit()) {
            names.emplace_back(item.entry->name);
        }
    }
    return names;
}

void CMDLINE_Poll() {
    if (!CMDLINE_IsRunning()) {
        return;
    }
    const QueuedCommand& command = queue[nextIndex];
    CMDLINE_SetArgument(command.argument);
    dispatcher(command.entry->command->id);
}

void CMDLINE_Next() {
    ++nextIndex;
}

void CMDLINE_Rewind() {
    nextIndex = 0;
}

bool CMDLINE_IsRunning() {
    return nextIndex < queue.size();
}

bool CMDLINE_IsExitQueued() {
    return exitQueued;
}

bool CMDLINE_NeedsTarget() {
    return std::ranges::any_of(queue, [](const QueuedCommand& command) {
        return command.entry->command->worksOn == WorksOn::target;
    });
}

std::string CMDLINE_HelpText() {
    std::string text = "Valid command line options:\r\n\r\n";
    for (const CmdlineEntry& entry : CMDLINE_Table()) {
        text += std::string("-") + entry.name + entry.help + "\r\n";
    }
    return text;
}

void CMDLINE_PrintHelp() {
    std::string text = CMDLINE_HelpText();
    std::erase(text, '\r');
    PROCESS_WriteOut("Usage: calvorin [FILE] [-OPTION...] [-COMMAND...] [-Exit]\n\n" + text +
                     kRunNotes + wordLines("\nBeside options and commands:\n", true) +
                     wordLines("\nAlone on the line (-? prints this text where there is no "
                               "desktop):\n",
                               false));
}

void CMDLINE_Reset() {
    commandLine = {};
    queue.clear();
    nextIndex = 0;
    exitQueued = false;
}
