#include "shell/cmdline.h"

#include "notice/error.h"
#include "notice/run.h"
#include "platform/files.h"
#include "platform/format.h"
#include "platform/process.h"
#include "shell/cmdline_options.h"
#include "shell/cmdline_table.h"
#include "shell/cmdline_values.h"
#include "shell/console.h"
#include "shell/front_end.h"

#include <algorithm>
#include <string_view>

namespace {

constexpr char kRunNotes[] = R"(
An argument stands directly behind its option: -OptionsCOMPort2, -FileSaveAsout.mot.
Options take effect at once, commands run in their order, the first failure skips the rest.
With -Exit nothing is shown or asked: errors, questions that were not asked and log lines go to
standard error, and the exit code is 0 or 1. A run that queues no -Target command needs no port.
Ctrl-C, SIGTERM and SIGHUP end a run with 1.
A FILE may begin with "/" when no option begins that way and the file exists.
What a run leaves in Calvorin.tpu beside the program, the next one starts with; a Calvorin.tpu that
cannot be read to its end is kept as Calvorin.tpu.bad.
Alone: --help prints this text, -? too where there is no desktop, --version prints the version.
)";

struct QueuedCommand {
    const CmdlineEntry* entry = nullptr;
    std::string argument;
};

std::vector<QueuedCommand> queue;
size_t nextIndex = 0;
bool exitQueued = false;
int exitCommand = 0;
CommandDispatcher dispatcher;

void refuse(const std::string& text) {
    ERROR_Out(nullptr, text, 1);
}

bool isOption(std::string_view argument) {
    return argument.starts_with('-') || argument.starts_with('/');
}

// Paths of this platform begin with the character that also begins an option: such a first argument
// is the program file when no option has that name and the file is there.
bool isProgramFile(const std::string& argument) {
    if (!isOption(argument)) {
        return true;
    }
    return argument.starts_with('/') && CMDLINE_Find(argument.substr(1)) == nullptr &&
           FILES_Exists(argument);
}

void showHelp() {
    if (FRONTEND_Get().hasWindows) {
        ERROR_Ask(nullptr, CMDLINE_HelpText(), "Commandline", BOX_OK | BOX_ICON_INFORMATION);
    }
}

void enqueue(const CmdlineEntry& entry, const std::string& argument) {
    if (queue.size() == kMaxQueuedCommands) {
        refuse(formatText("Too many commands, \"%s\" is not run: at most %d can be queued",
                          entry.name, static_cast<int>(kMaxQueuedCommands)));
        return;
    }
    queue.push_back({&entry, argument});
    if (entry.command->id == exitCommand) {
        exitQueued = true;
        RUN_SetUnattended(true);
    }
}

void runEntry(const CmdlineEntry& entry, const std::string& argument) {
    if (argument.size() > kMaxArgument) {
        refuse(formatText("The argument of \"%s\" is too long: at most %d characters", entry.name,
                          static_cast<int>(kMaxArgument)));
    } else if (entry.setting != nullptr) {
        CMDLINE_SetArgument(argument);
        OPTION_Apply(*entry.setting);
    } else if (entry.command != nullptr) {
        enqueue(entry, argument);
    } else if (FRONTEND_Get().hasWindows) {
        showHelp();
    } else {
        CMDLINE_PrintHelp();
    }
}

// Where no help box will tell, the user hears of an argument that has no effect.
void noteStray(const std::string& argument) {
    if (!FRONTEND_Get().hasWindows) {
        CONSOLE_PrintLine("Note: \"" + argument + "\" is not an option and is left out");
    }
}

// False when the argument is not an option of the table.
bool processOption(const std::string& argument) {
    const std::string text = argument.substr(1);
    const CmdlineEntry* entry = CMDLINE_Find(text);
    if (entry == nullptr) {
        refuse("\"" + text + "\" is not a valid command !");
        return false;
    }
    runEntry(*entry, text.substr(std::string_view(entry->name).size()));
    return true;
}

} // namespace

void CMDLINE_SetDispatcher(int exitId, CommandDispatcher newDispatcher) {
    exitCommand = exitId;
    dispatcher = std::move(newDispatcher);
}

std::optional<std::string> CMDLINE_Process(const std::vector<std::string>& arguments) {
    std::optional<std::string> programFile;
    bool allRecognised = true;
    for (size_t index = 0; index < arguments.size(); ++index) {
        const std::string& argument = arguments[index];
        if (index == 0 && isProgramFile(argument)) {
            programFile = argument;
        } else if (isOption(argument)) {
            allRecognised &= processOption(argument);
        } else {
            noteStray(argument);
            allRecognised = false;
        }
    }
    if (!allRecognised && !exitQueued) {
        showHelp();
    }
    return programFile;
}

bool CMDLINE_Contains(const std::vector<std::string>& arguments, int id) {
    return std::any_of(arguments.begin(), arguments.end(), [id](const std::string& argument) {
        const CmdlineEntry* entry = isOption(argument) ? CMDLINE_Find(argument.substr(1)) : nullptr;
        return entry != nullptr && entry->command != nullptr && entry->command->id == id;
    });
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
                     kRunNotes);
}

void CMDLINE_Reset() {
    queue.clear();
    nextIndex = 0;
    exitQueued = false;
}
