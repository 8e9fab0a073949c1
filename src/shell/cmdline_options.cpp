#include "shell/cmdline_options.h"

#include "device/device.h"
#include "device/devprops.h"
#include "device/devprops_store.h"
#include "link/password.h"
#include "notice/error.h"
#include "persist/chars.h"
#include "persist/hex_text.h"
#include "platform/format.h"
#include "platform/serial_port.h"
#include "serial/sio.h"
#include "shell/settings.h"
#include "shell/summary.h"

#include <algorithm>
#include <utility>

namespace {

constexpr size_t kLongestPasswordText = 600; // characters

// Reads a number that must be followed by one of `separators`; notes what is wrong.
bool readNumber(int64_t& value, std::string_view separators, const char* wrongSeparator) {
    const char behind = CMDLINE_PeekBehindNumber();
    if (behind != '\0' && separators.find(behind) == std::string_view::npos) {
        CMDLINE_Fault(wrongSeparator);
        return false;
    }
    CMDLINE_GetDecValue();
    value = CMDLINE_GetTrueValue();
    return !CMDLINE_ValueError();
}

struct BlockRange {
    int64_t first = 0;
    int64_t last = 0;
};

// What is wrong with naming these blocks on a device that has `count`; empty when nothing is.
std::string blockFault(const BlockRange& range, int count) {
    if (range.first >= 0 && range.last < count) {
        return "";
    }
    return formatText("Block %lld does not exist, the device has %d blocks (from 0)",
                      static_cast<long long>(range.first < 0 ? range.first : range.last), count);
}

// One "B" or "B1-B2" of the list. False when the list ends here.
bool readListItem(std::vector<BlockRange>& ranges) {
    BlockRange range;
    if (!readNumber(range.first, ",-", "Illegal separator")) {
        return false;
    }
    range.last = range.first;
    char next = CMDLINE_GetChar();
    if (next == '-') {
        if (!readNumber(range.last, ",", "Separator has to be ,")) {
            return false;
        }
        next = CMDLINE_GetChar();
    }
    if (range.first > range.last) {
        CMDLINE_Fault("Start block must be <= end block");
        return false;
    }
    ranges.push_back(range);
    return next == ',';
}

// Those before one that the device lacks are set.
void selectBlocks(const std::vector<BlockRange>& ranges, bool selected) {
    for (const BlockRange& range : ranges) {
        const int count = DEVICE_CountBlocks(DEVICE_Selected());
        if (const std::string fault = blockFault(range, count); !fault.empty()) {
            ERROR_Out(nullptr, fault, 1);
            break;
        }
        for (auto block = static_cast<int>(range.first); block <= range.last; ++block) {
            DEVPROPS_SelectBlock(block, selected);
        }
    }
    CONFIGURATION_Changed();
}

std::string blocksMisfit(const std::vector<BlockRange>& ranges, const DeviceRecord& device) {
    for (const BlockRange& range : ranges) {
        if (std::string fault = blockFault(range, DEVICE_CountBlocks(device)); !fault.empty()) {
            return fault;
        }
    }
    return "";
}

void selectDevice(int slot) {
    DEVPROPS_SetDevice(slot);
    DEVPROPS_SelectAllBlocks();
    CONFIGURATION_Changed();
}

ArgumentValue readPortDevice() {
    const std::string device = CMDLINE_TakeRest();
    if (const std::string problem = SERIALPORT_NameProblem(device); !problem.empty()) {
        CMDLINE_Fault(problem);
        return {};
    }
    return {[device] { SIO_SetDevice(device); }};
}

std::string outOfRange(const Setting& setting, const ValueRange& range) {
    return formatText(setting.number.isHex ? "%s has to be within %llX - %llX"
                                           : "%s has to be within %lld - %lld",
                      setting.option.name, static_cast<long long>(range.least),
                      static_cast<long long>(range.most));
}

} // namespace

ArgumentValue OPTION_Read(const Setting& setting) {
    if (setting.option.read != nullptr) {
        return setting.option.read();
    }
    if (setting.option.takesDevice && SERIALPORT_IsDeviceName(CMDLINE_PeekRest())) {
        return readPortDevice();
    }
    const SettingNumber& number = setting.number;
    const int32_t value = number.isHex ? CMDLINE_GetHexValue() : CMDLINE_GetDecValue();
    if (CMDLINE_ValueError()) {
        return {};
    }
    const ValueRange range = setting.option.range.value_or(ValueRange{number.min, number.max});
    const int64_t asked = CMDLINE_GetTrueValue();
    if (asked < range.least || asked > range.most) {
        CMDLINE_Fault(outOfRange(setting, range));
        return {};
    }
    return {[set = number.set, value] { set(static_cast<uint32_t>(value)); }};
}

ArgumentValue OPTION_Password() {
    const std::string text = CMDLINE_GetString(kLongestPasswordText);
    if (CMDLINE_ValueError()) {
        return {};
    }
    std::string error;
    const std::vector<uint8_t> bytes = HEXTEXT_ToBytes(text, kMaxPassword, error);
    if (!error.empty()) {
        CMDLINE_Fault(error);
        return {};
    }
    if (!std::ranges::all_of(text, [](char c) { return hexDigitValue(c) >= 0; })) {
        CMDLINE_Doubt("Not a hex value"); // "-1" counts as a pair otherwise
    }
    return {[bytes] {
                PASSWORD_SetHexmode(true);
                PASSWORD_SetFillFF(false);
                PASSWORD_SetBytes(bytes);
            },
            [length = bytes.size()](const DeviceRecord& device) {
                return PASSWORD_CheckLength(length, device.IDLenMin, device.IDLenMax).value_or("");
            }};
}

ArgumentValue OPTION_TargetDevice() {
    const std::string name = CMDLINE_TakeRest();
    const std::optional<int> slot = DEVICE_SlotOf(name);
    if (!slot) {
        if (const std::string unknown = DEVICE_UnknownText(name); !unknown.empty()) {
            CMDLINE_Fault(unknown);
        }
        CMDLINE_Fault("Device not set!");
        return {.hint = DEVICE_UnknownHint(name)};
    }
    return {[slot] { selectDevice(*slot); }, {}, slot};
}

ArgumentValue OPTION_TargetSelBlocks() {
    constexpr char kWrongSeparator[] = "Separator has to be ,";
    int64_t enable = 0;
    if (!readNumber(enable, ",", kWrongSeparator)) {
        return {};
    }
    if (CMDLINE_GetChar() != ',') {
        CMDLINE_Fault(kWrongSeparator);
        return {};
    }
    if (enable != 0 && enable != 1) {
        CMDLINE_Doubt("The first value has to be 1, to select the blocks behind it, or 0");
    }
    std::vector<BlockRange> ranges;
    while (readListItem(ranges)) {
    }
    return {[ranges, enable] { selectBlocks(ranges, enable != 0); },
            [ranges](const DeviceRecord& device) { return blocksMisfit(ranges, device); }};
}
