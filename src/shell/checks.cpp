#include "shell/checks.h"

#include "bootrom/family.h"
#include "data/hexdata.h"
#include "device/device.h"
#include "device/ivector.h"
#include "notice/error.h"
#include "notice/run.h"
#include "shell/session.h"
#include "target/commands.h"

#include <algorithm>
#include <array>
#include <functional>
#include <optional>

namespace {

// The password bytes of the device as the image holds them, and how many it holds.
int collectPassword(std::array<uint8_t, 256>& bytes) {
    const int count = DEVICE_GetNumIDAdr();
    int held = 0;
    for (int index = 0; index < count; ++index) {
        const uint32_t wanted = DEVICE_RelocateAddr(DEVICE_GetIDAdr(index));
        uint32_t found = wanted;
        const uint8_t* data = nullptr;
        if (HEXDATA_GetData(found, data) == 0) {
            continue;
        }
        const uint32_t distance = found - wanted;
        if (distance <= static_cast<uint32_t>(count - 1 - index)) {
            bytes[static_cast<size_t>(index) + distance] = *data;
            ++held;
        }
    }
    return held;
}

bool agreed(const char* text, const char* caption) {
    // Anything but No goes on, so that an unattended run, whose questions are answered with 0,
    // does.
    return ERROR_Ask(nullptr, text, caption, BOX_YES_NO | BOX_DEFAULT_SECOND) != ANSWER_NO;
}

bool rangeIsGood() {
    if (!HEXDATA_GetFits()) {
        ERROR_Notify("File does not fits into selected blocks");
        return false;
    }
    if (HEXDATA_IsEmpty()) {
        ERROR_Notify("Nothing to do");
        return false;
    }
    return true;
}

bool resetVectorAccepted() {
    constexpr char kCaption[] = "Reset Vector";
    const ResetVectorVerdict verdict = CHECKS_ResetVector();
    if (verdict == RESET_VECTOR_OUTSIDE) {
        return agreed("Reset vector does not point into flash memory!\nContinue?", kCaption);
    }
    const bool missing = verdict == RESET_VECTOR_MISSING ||
                         (verdict == RESET_VECTOR_NONE && DEVICE_GetNumIVector() != 0);
    return !missing || agreed("File does not contain a reset vector!\nContinue?", kCaption);
}

bool passwordAccepted() {
    constexpr char kCaption[] = "Password Warning";
    if (DEVICE_GetSkipPasswordCheck() != 0) {
        return true;
    }
    switch (CHECKS_Password()) {
    case PASSWORD_INCOMPLETE:
        return agreed("File does not contain all password bytes!\nContinue?", kCaption);
    case PASSWORD_UNIFORM:
        return agreed("File does not contain a valid password!\nContinue?", kCaption);
    case PASSWORD_PLAUSIBLE:
        break;
    }
    return true;
}

// Auto on a chip that can only be erased or filled as a whole would take deselected blocks with it.
bool wholeChipAccepted() {
    if (RUN_IsQuiet()) {
        ERROR_Out(nullptr, "Auto writes the whole chip, but a block is deselected", 1);
        return false;
    }
    return agreed("Auto writes the whole chip, deselected blocks too!\nContinue?",
                  "Deselected Blocks");
}

bool everyBlockSelected() {
    return DEVICE_SelectedBlocks().size() == DEVICE_Blocks().size();
}

bool eraseForAuto() {
    if (everyBlockSelected()) {
        return TARGET_EraseChip(false) == 0;
    }
    if (DEVICE_GetSprtErase() != 0) {
        return TARGET_EraseSelectedBlocks();
    }
    return wholeChipAccepted() && TARGET_EraseChip(false) == 0;
}

bool mayBeWritten() {
    return TARGET_HasSelectedBlock() && rangeIsGood() && resetVectorAccepted() &&
           passwordAccepted();
}

} // namespace

ResetVectorVerdict CHECKS_ResetVector() {
    ResetVectorVerdict verdict = RESET_VECTOR_NONE;
    for (const IVectorEntry& vector : DEVICE_Selected().aIVector) {
        const std::optional<uint32_t> value = IVECT_LoadedValue(vector);
        if (!value) {
            continue;
        }
        const bool erased = IVECT_IsErased(vector, *value);
        if (!erased && verdict == RESET_VECTOR_NONE) {
            verdict = RESET_VECTOR_MISSING;
        }
        if (IVECT_IsReset(vector)) {
            if (!IVECT_PointsIntoFlash(*value)) {
                return RESET_VECTOR_OUTSIDE;
            }
            if (!erased) {
                return RESET_VECTOR_GOOD;
            }
        }
    }
    return verdict;
}

PasswordVerdict CHECKS_Password() {
    const BootRomProtocol* family = currentProtocol();
    if (family == nullptr || !family->passwordInProgram) {
        return PASSWORD_PLAUSIBLE;
    }
    std::array<uint8_t, 256> bytes{};
    const int count = DEVICE_GetNumIDAdr();
    const int held = collectPassword(bytes);
    if (held == 0 || held < DEVICE_GetIDLenMin()) {
        return PASSWORD_INCOMPLETE;
    }
    const auto end = bytes.begin() + count;
    const bool uniform = std::adjacent_find(bytes.begin(), end, std::not_equal_to<>()) == end;
    return uniform ? PASSWORD_UNIFORM : PASSWORD_PLAUSIBLE;
}

void CHECKS_Program() {
    if (mayBeWritten()) {
        const TargetBusy busy;
        TARGET_Program(HEXDATA_GetFirstAddr(), HEXDATA_GetLastAddr());
    }
}

void CHECKS_Auto() {
    if (!mayBeWritten()) {
        return;
    }
    const TargetBusy busy;
    if (DEVICE_GetFLASHIsEE() != 0) {
        if (everyBlockSelected() || wholeChipAccepted()) {
            TARGET_ProgramTarget();
        }
    } else if (eraseForAuto()) {
        TARGET_Program(HEXDATA_GetFirstAddr(), HEXDATA_GetLastAddr());
    }
}

void CHECKS_Verify() {
    if (HEXDATA_IsEmpty()) {
        ERROR_Notify("Nothing to do");
        return;
    }
    const TargetBusy busy;
    TARGET_Verify(HEXDATA_GetFirstAddr(), HEXDATA_GetLastAddr());
}
