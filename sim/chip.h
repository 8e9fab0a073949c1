// A virtual chip: the boot ROM of either family and, once a loader has been downloaded, the loader.
// A passive state machine without threads: it is told what happens on the line and when, and hands
// out the bytes it sends with the moment at which each has arrived. It judges the program: what a
// real chip would let pass or silently ruin is recorded as a violation.
//
// Not thread-safe; whoever shares a chip between threads guards it. Moments must not decrease.
#pragma once

#include "device/device_record.h"
#include "platform/clock.h"
#include "sim/chip_options.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

struct Chip;
using ChipPtr = std::shared_ptr<Chip>;

struct ChipOutput {
    Moment at;         // when its stop bit has arrived
    uint8_t value = 0; // as the host sees it at the rate it listens at
};

// An error of the program under test.
struct ChipViolation {
    Moment at;
    std::string text;
};

struct ChipCounts {
    uint64_t bytesIn = 0;
    uint64_t bytesOut = 0;
    uint64_t resets = 0;
    uint64_t bootCommands = 0;
    uint64_t downloads = 0; // loaders started
    uint64_t frames = 0;    // complete ones with a good checksum
    uint64_t erases = 0;    // blocks and chips
    uint64_t programs = 0;  // program commands
    uint64_t bytesProgrammed = 0;
    uint64_t reads = 0;
    uint64_t violations = 0; // all, those beyond the list's limit too
};

enum class ChipMode { inReset, bootRom, loader, application };

ChipPtr CHIP_Create(const DeviceRecord& device, const ChipOptions& options = {});

// The rate at which the host sends and listens from now on, in bits per second; 0 unknown.
void CHIP_SetHostRate(Chip& chip, uint32_t rate);
// Bytes that the host hands to its line at a moment. With pacing each arrives ten bits after the
// one before it, without at once. A line that only knows when it looked gives the moment from which
// on they may have been handed over as well.
void CHIP_Receive(Chip& chip, std::span<const uint8_t> bytes, Moment at);
void CHIP_Receive(Chip& chip, std::span<const uint8_t> bytes, Moment at, Moment earliest);
// When the last byte handed over has arrived at the chip.
Moment CHIP_InputDone(const Chip& chip);
// The control lines. DTR holds the chip in reset while it is set; when it is cleared the chip
// starts: the boot ROM when RTS is set at that moment, else the application.
void CHIP_SetLines(Chip& chip, bool dtr, bool rts, Moment at);

// When the next byte of the chip arrives, if that is at or before `until`. What the host has sent
// is processed as far as needed.
std::optional<Moment> CHIP_NextOutput(Chip& chip, Moment until);
// Takes the next byte that has arrived by `now`.
std::optional<ChipOutput> CHIP_TakeOutput(Chip& chip, Moment now);
// Drops what has arrived by `now`: nobody listens.
void CHIP_DropOutput(Chip& chip, Moment now);
// Processes everything that has arrived by `now`.
void CHIP_Run(Chip& chip, Moment now);

ChipMode CHIP_GetMode(const Chip& chip);
const std::vector<ChipViolation>& CHIP_GetViolations(const Chip& chip); // the first 1000
const ChipCounts& CHIP_GetCounts(const Chip& chip);
// What the application has received.
const std::vector<uint8_t>& CHIP_GetApplicationInput(const Chip& chip);
bool CHIP_IsReadProtected(const Chip& chip);
bool CHIP_IsBlockProtected(const Chip& chip, size_t block);
bool CHIP_IsBlank(const Chip& chip);

// The flash by image addresses, past all rules. Get: bytes outside the flash are 0xFF. Put: false
// when a byte lies outside the flash, which it then ignores.
std::vector<uint8_t> CHIP_GetFlash(const Chip& chip, uint32_t address, uint32_t count);
bool CHIP_PutFlash(Chip& chip, uint32_t address, std::span<const uint8_t> bytes);
// The image addresses from the first to the last byte of the flash.
uint32_t CHIP_FlashStart(const Chip& chip);
uint64_t CHIP_FlashSpan(const Chip& chip); // bytes, gaps included

// Replaces the faults; their counts start again.
void CHIP_SetFaults(Chip& chip, const std::vector<ChipFault>& faults);
// Passes the rest of an unfinished transcript line on.
void CHIP_FlushTranscript(Chip& chip);
