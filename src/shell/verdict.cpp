#include "shell/verdict.h"

#include "data/hexdata.h"
#include "device/device.h"
#include "device/devprops.h"
#include "device/image_checksum.h"
#include "notice/run.h"
#include "notice/status.h"
#include "platform/clock.h"
#include "platform/format.h"
#include "shell/command_ids.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace {

constexpr size_t kChecksumDigits = 4;

Moment begun;
std::vector<std::string> done;
std::string stoppedAt; // empty as long as nothing has failed
bool isRunning = false;

bool changesFlash(int id) {
    return id == CMD_TARGET_ERASE_CHIP || id == CMD_TARGET_ERASE_BLOCKS ||
           id == CMD_TARGET_PROGRAM || id == CMD_TARGET_AUTO;
}

std::string listed(const std::vector<std::string>& names) {
    std::string list;
    for (const std::string& name : names) {
        list += (list.empty() ? "" : ", ") + name;
    }
    return list;
}

std::string whatWasDone() {
    if (RUN_GetExitCode() == 0) {
        return listed(done);
    }
    const char* const other = RUN_IsInterrupted() ? "by the user" : "at the end of the run";
    const std::string where = stoppedAt.empty() ? other : stoppedAt;
    return "stopped " + where + (done.empty() ? "" : ", done: " + listed(done));
}

// "blocks 0-2 5 of 8": those that are selected.
std::string selectedBlocksText() {
    const std::vector<DeviceBlock> selected = DEVICE_SelectedBlocks();
    std::string list;
    for (size_t i = 0; i < selected.size(); ++i) {
        const int first = selected[i].index;
        while (i + 1 < selected.size() && selected[i + 1].index == selected[i].index + 1) {
            ++i;
        }
        const int last = selected[i].index;
        list += first == last ? formatText(" %d", first) : formatText(" %d-%d", first, last);
    }
    return "blocks" + (list.empty() ? " none" : list) +
           formatText(" of %zu", DEVICE_Blocks().size());
}

} // namespace

void VERDICT_Begin() {
    begun = CLOCK_Now();
    VERDICT_NextTry();
}

void VERDICT_NextTry() {
    done.clear();
    stoppedAt.clear();
    isRunning = false;
}

void VERDICT_CommandStarts(const Command& command) {
    if (RUN_IsQuiet() && changesFlash(command.id)) {
        STATUS_SetText("Target CRC: ----", STATUS_CHECKSUM);
    }
    isRunning = command.id != CMD_EXIT;
}

void VERDICT_CommandEnds(int command) {
    const Command* row = COMMAND_Find(command);
    const bool ran = std::exchange(isRunning, false);
    if (row == nullptr || command == CMD_EXIT) {
        return;
    }
    if (RUN_GetExitCode() == 0) {
        done.emplace_back(row->line.name);
    } else if (stoppedAt.empty()) {
        stoppedAt = (ran ? "in " : "before ") + std::string(row->line.name);
    }
}

std::string VERDICT_Line(bool refused) {
    const bool passed = RUN_GetExitCode() == 0;
    const std::string verdict = passed ? "Passed: " : "Failed: ";
    if (refused) {
        return verdict + "refused before anything was begun";
    }
    const bool crc = DEVICE_GetSprtCRC() != 0;
    return verdict + DEVICE_GetName() + ", " + whatWasDone() + ", " + selectedBlocksText() +
           formatText(", %u bytes, %s of image %04X, of chip %s, %.1f s", HEXDATA_GetNumBytes(),
                      crc ? "CRC" : "SUM", DEVICE_CalcImageChecksum(crc),
                      VERDICT_ChipChecksum().c_str(),
                      static_cast<double>(CLOCK_Now().us - begun.us) / 1e6);
}

std::string VERDICT_ChipChecksum() {
    const std::string text = STATUS_GetText(STATUS_CHECKSUM);
    return text.substr(text.size() - std::min(text.size(), kChecksumDigits));
}
