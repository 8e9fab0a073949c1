#include "device/device.h"

#include "device/device_parser.h"
#include "device/devprops.h"
#include "notice/error.h"
#include "notice/log.h"
#include "notice/run.h"
#include "persist/parse.h"
#include "platform/files.h"
#include "platform/format.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <numeric>
#include <span>
#include <vector>

namespace {

std::vector<DeviceRecord> table;
// What the getters read while the table is empty.
const DeviceRecord kBlankRecord = [] {
    DeviceRecord record;
    record.Writable = 0;
    return record;
}();

constexpr int kExitCode = 1;
constexpr size_t kMostNames = 12; // in a hint

// How many characters one has to change, add or leave out to get the other, whatever their case.
size_t textDistance(std::string_view one, std::string_view other) {
    std::vector<size_t> row(other.size() + 1);
    std::iota(row.begin(), row.end(), size_t{0});
    for (const char a : one) {
        size_t diagonal = row[0]++;
        for (size_t i = 0; i < other.size(); ++i) {
            const bool same = std::toupper(static_cast<unsigned char>(a)) ==
                              std::toupper(static_cast<unsigned char>(other[i]));
            const size_t changed = diagonal + (same ? 0 : 1);
            diagonal = row[i + 1];
            row[i + 1] = std::min({changed, row[i] + 1, diagonal + 1});
        }
    }
    return row.back();
}

std::string leftOut; // what was said of the descriptions that cannot be used, a line each

void leaveOut(const std::string& why) {
    LOG_Add(why);
    leftOut += (leftOut.empty() ? "" : "\n") + why;
}

int lastDevice() {
    return DEVICE_GetNumDevices() - 1;
}

bool isDevice(int index) {
    return index >= 0 && index <= lastDevice();
}

// The settings may name a device that is no longer there: then the last one counts as selected.
int selectedDevice() {
    const int index = DEVPROPS_GetDevice();
    return isDevice(index) ? index : lastDevice();
}

// Why the file at `path` could not be read whole into `text`; empty when it could. `reason` tells
// the system's part of it.
const char* readDescription(const std::filesystem::path& path, std::string& text,
                            std::string& reason) {
    FileReader reader;
    const FileResult opened = reader.open(path);
    reason = opened.reason;
    if (!opened.ok()) {
        return "Device::DEVICE_Init: Read file failed";
    }
    if (reader.size() > kLargestText) {
        reason = "the file is too large";
        return "Device::DEVICE_Init: Read file failed";
    }
    text.resize(reader.size());
    size_t filled = 0;
    while (filled < text.size()) {
        const ptrdiff_t count = reader.read(std::span(text).subspan(filled));
        if (count < 0) {
            reason = reader.failure().reason;
            return "Device::DEVICE_Init: Read file failed";
        }
        if (count == 0) {
            reason = formatText("%zu of %zu bytes", filled, text.size());
            return "Device::DEVICE_Init: Error reading file";
        }
        filled += static_cast<size_t>(count);
    }
    return "";
}

} // namespace

int DEVICE_Init() {
    leftOut.clear();
    const std::string folder = FILES_ProgramFolder() + "Device/";
    const std::vector<std::filesystem::path> paths = FILES_ListShared("Device", ".dev");
    for (const std::filesystem::path& path : paths) {
        std::string text;
        std::string reason;
        const std::string failure = readDescription(path, text, reason);
        if (failure.empty()) {
            static_cast<void>(
                _ParseDeviceFile(text, path.string())); // which says why it refuses one
        } else {
            leaveOut(ERROR_WithReason(failure, path.string() + ": " + reason));
        }
    }
    if (table.empty()) {
        const std::string text =
            formatText("Can not find device file in directory %s", folder.c_str());
        ERROR_Out(nullptr, ERROR_WithReason(text, leftOut), kExitCode);
        return 1;
    }
    if (!leftOut.empty() && !RUN_IsUnattended()) {
        ERROR_Ask(nullptr, leftOut, "Device descriptions that are left out", BOX_OK);
    }
    return 0;
}

int _ParseDeviceFile(const std::string& text, const std::string& path) {
    const DeviceParseResult result = DEVICE_ParseText(text);
    for (const DeviceFault& fault : result.faults) {
        leaveOut(formatText("Device::_ParseDeviceFile: Error reading device file %s, Line %d: %s",
                            path.c_str(), fault.line, PARSE_ErrorWords(fault.text).c_str()));
    }
    if (!result.missing.empty()) {
        leaveOut(formatText("Error reading device file %s: Missing parameter: %s", path.c_str(),
                            result.missing.c_str()));
    }
    if (!result.record) {
        return 1;
    }
    _AddDevice(*result.record);
    return 0;
}

void _AddDevice(const DeviceRecord& record) {
    if (DEVICE_GetNumDevices() >= kMaxDevices) {
        ERROR_Out(nullptr, "Device::_AddDevice: Too many devices", kExitCode);
        return;
    }
    table.push_back(record);
}

int DEVICE_GetNumDevices() {
    return static_cast<int>(table.size());
}

void DEVICE_Clear() {
    table.clear();
}

std::optional<int> DEVICE_SlotOf(const std::string& name) {
    const auto found = std::ranges::find(table, name, &DeviceRecord::Device);
    return found == table.end() ? std::nullopt
                                : std::optional(static_cast<int>(found - table.begin()));
}

std::string DEVICE_UnknownText(const std::string& name) {
    return name.empty() ? std::string()
                        : formatText("The devicename '%s' was unknown.\n"
                                     "Please check your configuration!\n\n",
                                     name.c_str());
}

Hint DEVICE_UnknownHint(const std::string& name) {
    std::vector<std::string> names;
    names.reserve(table.size());
    for (const DeviceRecord& device : table) {
        names.push_back(device.Device);
    }
    std::ranges::stable_sort(
        names, {}, [&name](const std::string& other) { return textDistance(name, other); });
    std::string list;
    for (size_t i = 0; i < std::min(names.size(), kMostNames); ++i) {
        list += (i == 0 ? "" : ", ") + names[i];
    }
    if (names.size() > kMostNames) {
        list += formatText(" and %zu more", names.size() - kMostNames);
    }
    return {Cause::unknownDevice, list};
}

int DEVICE_FindByName(const std::string& name) {
    if (const auto slot = DEVICE_SlotOf(name)) {
        DEVPROPS_SetDevice(*slot);
        return 0;
    }
    if (!name.empty()) {
        ERROR_Out(nullptr, DEVICE_UnknownText(name), kExitCode, DEVICE_UnknownHint(name));
    }
    return 1;
}

std::string DEVICE_GetNameAt(int index) {
    return DEVICE_At(index).Device;
}

const DeviceRecord& DEVICE_At(int index) {
    return isDevice(index) ? table[static_cast<size_t>(index)] : kBlankRecord;
}

const DeviceRecord& DEVICE_Selected() {
    return DEVICE_At(selectedDevice());
}

int DEVICE_SelectedIndex() {
    return std::max(selectedDevice(), 0);
}

int DEVICE_CountBlocks(const DeviceRecord& device) {
    return static_cast<int>(device.aBlock.size()) + (DEVPROPS_GetXDataLen() != 0 ? 1 : 0);
}

std::vector<DeviceBlock> DEVICE_Blocks(const DeviceRecord& device) {
    std::vector<DeviceBlock> blocks;
    const auto add = [&blocks](uint32_t start, uint32_t length) {
        blocks.push_back({static_cast<int>(blocks.size()), AddressRange::of(start, length)});
    };
    for (const FlashBlock& block : device.aBlock) {
        add(block.Start, block.Len);
    }
    if (DEVPROPS_GetXDataLen() != 0) {
        add(DEVPROPS_GetXDataStart(), DEVPROPS_GetXDataLen());
    }
    return blocks;
}

std::vector<DeviceBlock> DEVICE_SelectedBlocks() {
    std::vector<DeviceBlock> blocks = DEVICE_Blocks();
    std::erase_if(blocks,
                  [](const DeviceBlock& block) { return !DEVPROPS_IsBlockSelected(block.index); });
    return blocks;
}

uint32_t DEVICE_GetFlashStart() {
    const std::vector<DeviceBlock> blocks = DEVICE_Blocks();
    return blocks.empty() ? 0 : blocks.front().range.start;
}

uint32_t DEVICE_GetFlashEnd() {
    const std::vector<DeviceBlock> blocks = DEVICE_Blocks();
    return blocks.empty() ? 0 : blocks.back().range.last();
}

uint32_t DEVICE_GetIDAdr(int index) {
    const std::vector<uint32_t>& addresses = DEVICE_Selected().aIDAdr;
    const auto position = static_cast<size_t>(index);
    return index >= 0 && position < addresses.size() ? addresses[position] : 0;
}

void DEVICE_GetIVector(int index, int32_t& number, std::string& name, int32_t& bits,
                       uint32_t& address) {
    const std::vector<IVectorEntry>& vectors = DEVICE_Selected().aIVector;
    if (index < 0 || static_cast<size_t>(index) >= vectors.size()) {
        return;
    }
    const IVectorEntry& entry = vectors[static_cast<size_t>(index)];
    number = entry.Number;
    name = entry.Name;
    bits = entry.Bits;
    address = entry.Address;
}

uint32_t DEVICE_RelocateAddr(uint32_t address, const DeviceRecord& device) {
    const bool moved =
        address >= device.RelocateFrom && address - device.RelocateFrom < device.RelocateLen;
    return moved ? address + (device.RelocateTo - device.RelocateFrom) : address;
}
