// The words of the command line that begin with two dashes: those that a run takes beside its
// options and commands, and those that ask for something and end.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

struct CmdlineWord {
    const char* name;     // "--check-device"
    const char* argument; // that follows as an argument of its own, "FILE"; none: empty
    const char* help;     // one line
    void (*setForRun)(bool on) = nullptr; // of a word that a run takes
    // Of one that a run takes with its argument: false for an argument that it cannot have.
    bool (*setValue)(const std::string& value) = nullptr;

    bool isForRun() const { return setForRun != nullptr || setValue != nullptr; } // else alone
};

inline constexpr char kWatchWord[] = "--watch";

std::span<const CmdlineWord> WORDS_Table();
// The word that an argument is; none for others.
const CmdlineWord* WORDS_Find(std::string_view argument);

// Whether `value` may stand behind a word that takes one; another option may not.
bool WORDS_IsValue(std::string_view value);
// The arguments without those that are the values of words in front of them.
std::vector<std::string> WORDS_WithoutValues(const std::vector<std::string>& arguments);
// The arguments with the command that a word among them implies: watching is without windows.
std::vector<std::string> WORDS_Complete(std::vector<std::string> arguments);
// Sets what the words ask for, values in an unattended run alone: those of notice/run.h, and
// shell/run_words.h.
void WORDS_SetForRun(const std::vector<std::string>& arguments);

// Whether an argument asks for the help, wherever it stands.
bool WORDS_AsksForHelp(const std::vector<std::string>& arguments);
// Answers a line that only asks for something; the exit code, none for any other line. Before
// anything has started.
std::optional<int> WORDS_Answer(const std::vector<std::string>& arguments);
