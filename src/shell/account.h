// What happened in a run, for the result that machines read (shell/result.h): its commands, what
// was reported, the files that were read, each try. User-interface thread but for the two that say
// so.
#pragma once

#include "shell/command_table.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

enum class Outcome { passed, failed, skipped };

struct AccountedCommand {
    std::string name;
    Outcome outcome = Outcome::skipped;
    double seconds = 0;
};

// One walk through the commands of the line.
struct AccountedTry {
    std::vector<AccountedCommand> commands;
    std::string stage; // where it failed; empty as long as nothing has
    std::vector<std::string> errors;
    std::vector<std::string> hints;
    double seconds = 0;
};

struct AccountedFile {
    std::string path;
    std::optional<uint64_t> bytes; // none: of a pipe or a device, as is the next one
    std::optional<std::string> sha256;
};

struct AccountedPatch {
    uint32_t address = 0;
    std::string path; // of the file that held the bytes; empty: the line held them
    std::vector<uint8_t> bytes;
};

struct Account {
    std::vector<AccountedTry> tries; // the last is the present one
    std::vector<std::string> notes;
    std::vector<AccountedFile> files;
    std::vector<AccountedPatch> patches;
    double seconds = 0; // of the run
};

// Begins the account of a run.
void ACCOUNT_Begin();
// The account as it is now.
Account ACCOUNT_Get();

// What the run does from here on, unless it is a command: "command line", "file", "port".
void ACCOUNT_Stage(const std::string& stage);
void ACCOUNT_CommandStarts(const Command& command);
// A queued command was run, or left out because something had failed before.
void ACCOUNT_CommandEnds(const Command& command);
// The commands are walked through again: of the image as it was before them.
void ACCOUNT_NextTry();
// A program file was read.
void ACCOUNT_File(const std::string& path);
void ACCOUNT_Patch(AccountedPatch patch);

// Any thread.
void ACCOUNT_Error(const std::string& text, const std::string& hint);
void ACCOUNT_Note(const std::string& text);
