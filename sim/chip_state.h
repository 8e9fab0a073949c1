// The inside of a virtual chip, shared by the sources that make it up.
#pragma once

#include "sim/chip.h"
#include "sim/flash.h"

#include <array>
#include <deque>
#include <random>

struct Chip;

struct PendingByte {
    Moment at;
    uint8_t value = 0;
    uint32_t rate = 0; // at which it was sent; 0 unknown
    Moment handed;     // when the host gave it to its line, at the latest
    Moment earliest;   // and at the earliest
};

// What the boot ROM needs to put away a piece of the loader.
inline constexpr int64_t kPieceUs = 10000;

// A pause that the host has to make.
struct DuePause {
    Moment until;
    Moment from;
    const char* behind = nullptr; // what it follows; null: none is due
};

struct SentByte {
    Moment at;
    uint8_t value = 0;
    uint32_t rate = 0; // 0: may be read at any
};

// The boot ROM waits for a number of bytes and then goes on with a step; `each` also sees every
// single one.
using BootStep = void (*)(Chip& chip, Moment at);

// In what a family of boot ROM differs from the others. A new family is a source beside boot_a.cpp
// and its row in families.cpp.
struct BootFamily {
    uint8_t matchByte = 0;
    uint32_t matchRate = 0;     // Bd; 0: measured at the matching byte
    BootStep matched = nullptr; // once the matching byte was answered
    BootStep command = nullptr; // of one byte
};

struct BootRom {
    std::vector<uint8_t> bytes; // collected for the step
    size_t wanted = 0;
    BootStep step = nullptr;
    BootStep each = nullptr;
    BootStep afterPassword = nullptr;
    bool refused = false;        // the password was wrong: silent until a reset
    bool matching = true;        // no command yet
    uint32_t matchAttempts = 0;  // since the reset
    uint32_t compareAddress = 0; // TYPE_A: where the flash holds the password
    uint32_t passwordBytes = 0;  // TYPE_A: taken so far, those beyond its length too
    std::vector<uint8_t> ram;    // what was downloaded
    std::vector<uint8_t> record; // the last data record, header included
    uint32_t blockStart = 0;     // TYPE_B
    uint32_t blockSize = 0;
    bool recordFault = false;
    bool rewriting = false; // the records are flash data, not the loader
    // The last hand-over of loader data: when, at the earliest, and how much came with it.
    Moment piece;
    size_t pieceBytes = 0; // 0: none yet
};

struct LoaderState {
    std::vector<uint8_t> frame;
    uint16_t checksum = 0;
    bool checksumStarted = false;
};

struct TranscriptState {
    std::string line;
    Moment start;
    bool received = false; // the line holds bytes from the host
};

struct Chip {
    DeviceRecord device;
    const BootFamily* family = nullptr;
    ChipOptions options;
    Flash flash;

    ChipMode mode = ChipMode::application;
    bool dtr = false;
    bool rts = true;
    bool silent = false; // until a reset
    Moment readyAt;
    Moment nextText; // of an application that sends its text again and again
    uint32_t hostRate = 0;
    uint32_t rate = 0; // 0: measured at the next byte
    Moment now;        // of the last thing processed

    std::deque<PendingByte> input;
    Moment inputFree;
    PendingByte byte; // the one that is processed
    DuePause pause;
    Moment resetBegan;
    Moment rtsChanged;
    std::string resetFault; // of the last reset, to be told when the host relies on it
    std::deque<SentByte> output;
    Moment outputFree;
    Moment lastTraffic;
    bool turnReported = false;

    BootRom boot;
    LoaderState loader;
    std::vector<uint8_t> applicationInput;

    std::array<uint32_t, static_cast<size_t>(ChipStep::count_)> replies{};
    uint32_t flashOperations = 0;
    uint32_t programOperations = 0;
    uint32_t eraseOperations = 0;
    std::minstd_rand random;

    std::vector<ChipViolation> violations;
    ChipCounts counts;
    TranscriptState transcript;
};

// chip.cpp
void SIM_Violation(Chip& chip, std::string text);
void SIM_EnterBootRom(Chip& chip, Moment at);
void SIM_StartLoader(Chip& chip);
// From `from` on the host has to be silent for a while.
void SIM_Pause(Chip& chip, const char* behind, Moment from, int64_t us);
// Puts bytes on the line, the first not before `at`.
void SIM_Send(Chip& chip, std::span<const uint8_t> bytes, Moment at);

// boot_common.cpp: the boot ROM's waiting, and what both families do.
void SIM_BootByte(Chip& chip, uint8_t value, Moment at);
void SIM_Want(Chip& chip, size_t count, BootStep step);
// A piece of loader data begins with this byte: whether the host has paused for it.
void SIM_PieceBegins(Chip& chip);
// Waits for the matching byte.
void SIM_WantMatch(Chip& chip);
// Back to waiting for a command.
void SIM_WantCommand(Chip& chip);
void SIM_BootReply(Chip& chip, ChipStep step, std::vector<uint8_t> bytes, Moment at);
void SIM_UnknownCommand(Chip& chip, uint8_t command);
// True when the byte was the product information command, which is then answered.
bool SIM_ProductInfo(Chip& chip, uint8_t command, Moment at);
// Erases the whole flash with its protections; the moment at which that is done.
Moment SIM_EraseChip(Chip& chip, Moment at);
Moment SIM_AfterChecksum(const Chip& chip, uint64_t bytes, Moment at);
uint64_t SIM_FlashBytes(const Chip& chip);
// Whether a password that was sent in full is to be refused.
bool SIM_PasswordRefused(Chip& chip, std::span<const uint8_t> sent,
                         std::span<const uint8_t> expected);
uint8_t SIM_TwosComplement(std::span<const uint8_t> bytes);

// families.cpp: the family of a device; the first one for a description that names none.
const BootFamily& SIM_FamilyOf(const DeviceRecord& device);
// Adds a family that is not built in; `family` stays the caller's and must outlive its chips.
void SIM_AddFamily(int32_t ramcodeType, const BootFamily& family);

// loader.cpp
void SIM_LoaderByte(Chip& chip, uint8_t value, Moment at);
// loader_commands.cpp: a good frame's payload.
void SIM_LoaderCommand(Chip& chip, std::span<const uint8_t> payload, Moment at);
void SIM_FrameReply(Chip& chip, ChipStep step, std::vector<uint8_t> payload, Moment at);

// faults.cpp
// The fault of a kind that strikes at a step's reply of that number.
const ChipFault* SIM_FaultAt(const Chip& chip, FaultKind kind, ChipStep step, uint32_t number);
// The fault of a kind that counts something of its own.
const ChipFault* SIM_FaultNumber(const Chip& chip, FaultKind kind, uint32_t number);
// The first fault of a kind, whenever it strikes.
const ChipFault* SIM_FaultOf(const Chip& chip, FaultKind kind);
// What the fault's bytes-and-time side makes of a reply; false when it is not sent.
struct ReplyPlan {
    std::vector<uint8_t> bytes;
    Moment at;
};
bool SIM_SpoilReply(Chip& chip, ChipStep step, uint32_t number, ReplyPlan& plan);
// Counts a flash operation; the fault when the power fails in it.
bool SIM_PowerFails(Chip& chip);
void SIM_PlaceBadBits(Chip& chip);

// transcript.cpp
void SIM_TranscriptByte(Chip& chip, bool received, uint8_t value, Moment at);
void SIM_TranscriptNote(Chip& chip, const std::string& text, Moment at);
