#include "shell/cmdline_options.h"

#include "device/device.h"
#include "device/devprops.h"
#include "device/devprops_store.h"
#include "link/password.h"
#include "notice/error.h"
#include "persist/hex_text.h"
#include "platform/format.h"
#include "shell/cmdline_values.h"
#include "shell/settings.h"
#include "shell/summary.h"

namespace {

constexpr size_t kLongestPasswordText = 600; // characters

// Reads a number that must be followed by one of `separators`; reports what is wrong.
bool readNumber(int& value, std::string_view separators, const char* wrongSeparator) {
    const char behind = CMDLINE_PeekBehindNumber();
    if (behind != '\0' && separators.find(behind) == std::string_view::npos) {
        ERROR_Out(nullptr, wrongSeparator, 1);
        return false;
    }
    value = CMDLINE_GetDecValue();
    return !CMDLINE_ValueError();
}

bool selectBlocks(int first, int last, bool selected) {
    if (first > last) {
        ERROR_Out(nullptr, "Start block must be <= end block", 1);
        return false;
    }
    const int count = static_cast<int>(DEVICE_Blocks().size());
    if (first < 0 || last >= count) {
        ERROR_Out(nullptr,
                  formatText("Block %d does not exist, the device has %d blocks (from 0)",
                             first < 0 ? first : last, count),
                  1);
        return false;
    }
    for (int block = first; block <= last; ++block) {
        DEVPROPS_SelectBlock(block, selected);
    }
    return true;
}

// One "B" or "B1-B2" of the list. False when the list ends here.
bool selectListItem(bool selected) {
    int first = 0;
    if (!readNumber(first, ",-", "Illegal separator")) {
        return false;
    }
    int last = first;
    char next = CMDLINE_GetChar();
    if (next == '-') {
        if (!readNumber(last, ",", "Separator has to be ,")) {
            return false;
        }
        next = CMDLINE_GetChar();
    }
    return selectBlocks(first, last, selected) && next == ',';
}

} // namespace

void OPTION_Apply(const Setting& setting) {
    if (setting.option.apply != nullptr) {
        setting.option.apply();
        return;
    }
    const int32_t value = setting.number.isHex ? CMDLINE_GetHexValue() : CMDLINE_GetDecValue();
    if (!CMDLINE_ValueError()) {
        setting.number.set(static_cast<uint32_t>(value));
    }
}

void OPTION_Password() {
    const std::string text = CMDLINE_GetString(kLongestPasswordText);
    if (CMDLINE_ValueError()) {
        return;
    }
    std::string error;
    const std::vector<uint8_t> bytes = HEXTEXT_ToBytes(text, kMaxPassword, error);
    if (!error.empty()) {
        ERROR_Out(nullptr, error, 1);
        return;
    }
    PASSWORD_SetHexmode(true);
    PASSWORD_SetFillFF(false);
    PASSWORD_SetBytes(bytes);
}

void OPTION_TargetDevice() {
    if (DEVICE_FindByName(CMDLINE_GetArgument()) != 0) {
        ERROR_Out(nullptr, "Device not set!", 1);
        return;
    }
    DEVPROPS_SelectAllBlocks();
    CONFIGURATION_Changed();
}

void OPTION_TargetSelBlocks() {
    constexpr char kWrongSeparator[] = "Separator has to be ,";
    int enable = 0;
    if (!readNumber(enable, ",", kWrongSeparator)) {
        return;
    }
    if (CMDLINE_GetChar() != ',') {
        ERROR_Out(nullptr, kWrongSeparator, 1);
        return;
    }
    while (selectListItem(enable != 0)) {
    }
    CONFIGURATION_Changed();
}
