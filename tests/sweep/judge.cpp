#include "data/hexdata.h"
#include "device/device.h"
#include "platform/format.h"
#include "shell/command_ids.h"
#include "shell/command_table.h"
#include "shell/session.h"
#include "sim/flash.h"
#include "sweep/sweep.h"

namespace {

using Look = std::function<bool(SweepWorld&)>;

constexpr int64_t kFailureMs = 1700; // the rest of a frame, and the pauses after a failure
constexpr int64_t kRetryMs = 300;    // of the matching byte
constexpr int64_t kSumMs = 5000;     // for a checksum that came in part
constexpr int64_t kAnewMs = 1500; // a reset and what follows, where a synchronised boot ROM fails
constexpr int64_t kStopMs = 2500; // from Cancel or Ctrl-C to the end
constexpr int64_t kReconnectMs = 200; // a loader that still runs is left first

// What the loader makes of these contents.
uint16_t checksumOf(const SweepWorld& world, const std::vector<uint8_t>& bytes) {
    Flash flash = SIMFLASH_Create(DEVICE_Selected());
    for (uint32_t i = 0; i < world.size; ++i) {
        SIMFLASH_Put(flash, world.start + i, bytes[i]);
    }
    return DEVICE_GetSprtCRC() != 0 ? SIMFLASH_AddCrc(flash, world.start, world.size, 0xFFFF)
                                    : SIMFLASH_AddSum(flash, world.start, world.size, 0);
}

std::vector<uint8_t> wholeFlash(const SweepWorld& world) {
    return world.flash(world.start, world.size);
}

Look holds(const char* contents) {
    return [contents](SweepWorld& world) { return wholeFlash(world) == world.contents(contents); };
}
Look runs(ChipMode mode) {
    return [mode](SweepWorld& world) {
        return world.chip([mode](Chip& chip) { return CHIP_GetMode(chip) == mode; });
    };
}
bool firstBlockIsBlank(SweepWorld& world) {
    return world.flash(world.start, world.size / 2) == std::vector<uint8_t>(world.size / 2, 0xFF);
}
bool checksumIsRight(SweepWorld& world) {
    return SESSION_Get().targetChecksum == checksumOf(world, wholeFlash(world));
}
bool imageIsFlash(SweepWorld& world) {
    const uint32_t first = world.start + 0x10;
    std::vector<uint8_t> image(world.size - 0x10);
    HEXDATA_Copy(first, image, {});
    return HEXDATA_GetFirstAddr() == first && HEXDATA_GetNumBytes() == image.size() &&
           image == world.flash(first, world.size - 0x10);
}
template <bool both>
bool isProtected(SweepWorld& world) {
    return world.chip([](Chip& chip) {
        return CHIP_IsBlockProtected(chip, 0) && CHIP_IsBlockProtected(chip, 1) == both;
    });
}
bool isReadProtected(SweepWorld& world) {
    return world.chip(CHIP_IsReadProtected);
}
bool statusIsShown(SweepWorld& world) {
    return world.hasLogged("00 00 00 00 00 00 00 ");
}

std::string listed(const std::vector<std::string>& texts) {
    std::string all;
    for (const std::string& text : texts) {
        all += text + " | ";
    }
    return all;
}

// The longest wait of the program's, in ms, that a byte of the stage can spoil.
int64_t longestWait(uint8_t stage, const std::string& command) {
    constexpr int64_t kFrames[] = {1000, 4000, 2000, 5000, 5000, 2000, 4000, 5000};
    const bool erases = command.starts_with("erase") || command.starts_with("auto");
    return stage < std::size(kFrames) ? kFrames[stage] : erases ? 9050 : 5000;
}

std::string checkTime(const SweepCase& sweepCase, const CleanRun& clean, const Outcome& told) {
    const auto& stages = clean.stages[sweepCase.kind == "rx" ? 1 : 0];
    const bool known = sweepCase.isOnLine() && sweepCase.where < stages.size();
    const uint8_t stage = known ? stages[sweepCase.where] : kStageBoot;
    int64_t allowed = clean.outcome.us / 1000 + sweepCase.lineFault().lateMs + kRetryMs;
    // The erase by the boot ROM leaves it synchronised for the connect that follows.
    allowed += stage == kStageBoot && sweepCase.command.starts_with("auto")
                   ? (sweepCase.kind == "rx" ? kSumMs : 0) + kAnewMs
                   : 0;
    if (!told.success) {
        const bool isLost = sweepCase.what == "unplugged"; // after that nothing is waited for
        allowed += (isLost ? 0 : longestWait(stage, sweepCase.command)) + kFailureMs;
    }
    const bool inTime = told.us / 1000 <= allowed && told.usAfterStop / 1000 <= kStopMs;
    return inTime ? ""
                  : formatText("took %d ms, %d are allowed; ", static_cast<int>(told.us / 1000),
                               static_cast<int>(allowed));
}

// A failure has one reason, and behind it what follows from it. A byte too many behind the answer
// to a command that failed is found by the next poll, which ends the link.
std::string checkReasons(const SweepCase& sweepCase, const Outcome& told) {
    std::vector<std::string> reasons = told.errors;
    if (reasons.size() > 1 && sweepCase.what == "doubled" && reasons.back() == "Timeout error") {
        reasons.pop_back();
    }
    for (const char* following : {"Could not download RAM image. Please check password",
                                  "SIO::_StartComm: Could not open COM-Port"}) {
        if (reasons.size() > 1 && reasons.back() == following) {
            reasons.pop_back();
        }
    }
    const bool mayBeSilent = sweepCase.what == "ctrlc" && reasons.empty();
    return reasons.size() == 1 || told.success || mayBeSilent ? "" : "reasons: " + listed(reasons);
}

// What of a success that is none nobody can see from this side of the line.
std::string blindSpot(const SweepCase& sweepCase, SweepWorld& world) {
    if (sweepCase.isStop() && sweepCase.command == "download" && runs(ChipMode::loader)(world)) {
        return "Cancel that comes too late to end a download";
    }
    if (sweepCase.command == "flash-status" && sweepCase.kind == "rx") {
        return "flash memory status, which has no check byte";
    }
    if (sweepCase.command == "protect-chip" && DEVICE_GetSprtProtectBlock() == 0) {
        return "protection by the boot ROM, whose echo and answer are the same byte";
    }
    if (sweepCase.command != "auto" || sweepCase.kind != "chip") {
        return "";
    }
    if (DEVICE_GetFLASHIsEE() != 0) {
        return "pages that EE flash did not take, after Auto without Verify: nothing is compared";
    }
    const uint16_t wanted = checksumOf(world, world.contents("program"));
    if (DEVICE_GetSprtCRC() == 0 && checksumOf(world, wholeFlash(world)) == wanted) {
        return "bytes in wrong places, after Auto without Verify: the SUM is the same";
    }
    return "";
}

void checkVerdict(const SweepCase& sweepCase, const CleanRun& clean, SweepWorld& world,
                  Verdict& verdict) {
    const bool success = verdict.told.success;
    if (sweepCase.kind == "at" &&
        (success != clean.outcome.success || !world.violations().empty())) {
        verdict.wrong += listed(verdict.told.errors) + world.violations();
    }
    const bool ignoredStop = verdict.told.usAfterStop >= 0;
    if (!success || (!ignoredStop && world.command.asAsked(world))) {
        return;
    }
    verdict.blindSpot = blindSpot(sweepCase, world);
    if (verdict.blindSpot.empty()) {
        verdict.wrong += ignoredStop ? "success though it was stopped; "
                                     : "success, and the chip is not as asked; ";
    }
}

std::string checkNext(SweepWorld& world, const CleanRun& clean, bool virtualTime) {
    world.mend();
    const size_t violations = world.violations().size();
    const Outcome next = world.run();
    std::string wrong;
    if (next.success != clean.outcome.success || next.success != world.command.asAsked(world)) {
        wrong += "next run: " + listed(next.errors);
    }
    if (virtualTime && next.us / 1000 > clean.outcome.us / 1000 + kReconnectMs) {
        wrong += "next run took " + std::to_string(next.us / 1000) + " ms; ";
    }
    return wrong + world.violations().substr(violations);
}

} // namespace

const std::vector<SweepCommand>& SWEEP_Commands() {
    static const std::vector<SweepCommand> commands = {
        {"download", {CMD_TARGET_DOWNLOAD_RAM_IMAGE}, "program", runs(ChipMode::loader)},
        {"erase-chip", {CMD_TARGET_ERASE_CHIP}, "old", holds("blank")},
        {"erase-connected", {CMD_TARGET_GET_CRC, CMD_TARGET_ERASE_CHIP}, "old", holds("blank")},
        {"erase-blocks", {CMD_TARGET_ERASE_BLOCKS}, "old", holds("half")},
        {"program", {CMD_TARGET_PROGRAM}, "blank", holds("program")},
        {"read-back", {CMD_TARGET_READ_BACK}, "program", imageIsFlash},
        {"checksum", {CMD_TARGET_GET_CRC}, "program", checksumIsRight},
        {"auto", {CMD_TARGET_AUTO}, "old", holds("program")},
        {"auto-verify", {CMD_TARGET_AUTO, CMD_TARGET_VERIFY}, "old", holds("program")},
        {"verify", {CMD_TARGET_VERIFY}, "program", holds("program")},
        {"verify-other", {CMD_TARGET_VERIFY}, "old", holds("program")},
        {"blank-chip", {CMD_TARGET_BLANK_CHECK_CHIP}, "blank", holds("blank")},
        {"blank-other", {CMD_TARGET_BLANK_CHECK_CHIP}, "half", holds("blank")},
        {"blank-blocks", {CMD_TARGET_BLANK_CHECK_BLOCKS}, "half", firstBlockIsBlank},
        {"start", {CMD_TARGET_START_APPLICATION}, "program", runs(ChipMode::application)},
        {"protect-chip", {CMD_TARGET_PROTECT_CHIP}, "program", isProtected<true>},
        {"protect-blocks", {CMD_TARGET_PROTECT_BLOCKS}, "program", isProtected<false>},
        {"read-protect", {CMD_TARGET_READ_PROTECT}, "program", isReadProtected},
        {"flash-status", {CMD_TARGET_FLASH_STATUS}, "program", statusIsShown}};
    return commands;
}

CleanRun JUDGE_Clean(const std::string& device, const std::string& command) {
    SweepWorld world({device, command, "clean", 0, ""});
    CleanRun clean;
    clean.isOffered = std::ranges::all_of(world.command.ids, COMMAND_IsEnabled);
    if (!clean.isOffered) {
        return clean;
    }
    clean.outcome = world.run();
    std::ranges::copy(world.stages, clean.stages);
    const bool success = !command.ends_with("-other"); // what is named so is to find a difference
    if (clean.outcome.success != success || world.command.asAsked(world) != success ||
        !world.violations().empty()) {
        clean.wrong = "without a fault: " + listed(clean.outcome.errors) + world.violations();
    }
    return clean;
}

Verdict JUDGE_Case(const SweepCase& sweepCase, const CleanRun& clean, bool virtualTime) {
    SweepWorld world(sweepCase, virtualTime);
    Verdict verdict;
    verdict.told = world.run();
    checkVerdict(sweepCase, clean, world, verdict);
    verdict.wrong += checkReasons(sweepCase, verdict.told);
    if (virtualTime) {
        verdict.wrong += checkTime(sweepCase, clean, verdict.told);
    }
    verdict.wrong += checkNext(world, clean, virtualTime);
    return verdict;
}
