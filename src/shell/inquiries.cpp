#include "shell/inquiries.h"

#include "device/device.h"
#include "device/device_parser.h"
#include "notice/error.h"
#include "notice/log.h"
#include "notice/run.h"
#include "persist/ini.h"
#include "platform/files.h"
#include "platform/format.h"
#include "platform/port_list.h"
#include "platform/process.h"
#include "serial/sio.h"
#include "shell/identity.h"

#include <algorithm>
#include <array>
#include <map>
#include <vector>

namespace {

void answerLine(const std::string& text) {
    PROCESS_WriteOut(formatPrintable(text, LineEnds::shown) + "\n");
}

void complain(const std::string& text) {
    PROCESS_WriteError(formatPrintable(text, LineEnds::shown) + "\n");
}

// Settings and devices as a run would have them; what is wrong with them is printed.
void readWhatARunReads() {
    RUN_SetUnattended(true);
    RUN_SetIsolated(true); // no file is written
    ERROR_SetHandlers([](WindowHandle, const std::string& text, const std::string&,
                         int) { complain("Error: " + text); },
                      {}, {});
    LOG_SetObserver([](const std::string&, const std::string& text) { complain(text); });
    INI_Load();
}

// By the path of a port its COM numbers, "COM1" or "COM1,COM5".
std::map<std::string, std::string> comNumbers() {
    std::map<std::string, std::string> names;
    for (uint32_t number = 1; number <= kMaxComPort; ++number) {
        std::string& text = names[PORTLIST_Find(SIO_DeviceOfPort(number)).path];
        text += formatText(text.empty() ? "COM%u" : ",COM%u", number);
    }
    return names;
}

using PortRow = std::array<std::string, 5>;

PortRow rowOf(const PresentPort& port, const std::string& numbers) {
    std::string adapter = port.maker;
    adapter += (adapter.empty() || port.product.empty() ? "" : " ") + port.product;
    PortRow row{port.path, numbers, adapter, port.serialNumber, port.stableName};
    std::ranges::replace_if(
        row, [](const std::string& cell) { return cell.empty(); }, "-");
    return row;
}

void printColumns(const std::vector<PortRow>& rows) {
    std::array<size_t, 5> widths{};
    for (const PortRow& row : rows) {
        for (size_t i = 0; i < row.size(); ++i) {
            widths[i] = std::max(widths[i], row[i].size());
        }
    }
    for (const PortRow& row : rows) {
        std::string line;
        for (size_t i = 0; i + 1 < row.size(); ++i) {
            line += row[i] + std::string(widths[i] - row[i].size() + 2, ' ');
        }
        answerLine(line + row.back());
    }
}

uint64_t flashBytes(const DeviceRecord& device) {
    uint64_t bytes = 0;
    for (const FlashBlock& block : device.aBlock) {
        bytes += block.Len;
    }
    return bytes;
}

} // namespace

int INQUIRY_Paths(const std::string&) {
    const std::string data = FILES_KeptFolder(Kept::data);
    answerLine("settings: " + FILES_KeptFile(Kept::settings, "ini"));
    if (!FILES_IsPortable()) {
        answerLine("ports for all users: [Settings PORTS] of " + FILES_BesideProgram("ini"));
    }
    answerLine("default project: " + IDENTITY_DefaultProject());
    answerLine("logs: " + FILES_KeptFile(Kept::state, "log") + ", .err and .sio beside it");
    answerLine("recent files: " + FILES_UserConfigFolder().string() + "/");
    answerLine("devices: " + FILES_ProgramFolder() + "Device/");
    answerLine("RAM images: " + FILES_ProgramFolder() + "RamImage/");
    if (data != FILES_ProgramFolder()) {
        answerLine("your own devices and RAM images: " + data + "Device/, " + data + "RamImage/");
    }
    return 0;
}

int INQUIRY_Ports(const std::string&) {
    readWhatARunReads();
    std::vector<PortRow> rows;
    std::map<std::string, std::string> numbers = comNumbers();
    for (const PresentPort& port : PORTLIST_Present()) {
        rows.push_back(rowOf(port, numbers[port.path]));
    }
    if (rows.empty()) {
        complain("No serial port is present");
    }
    printColumns(rows);
    return 0;
}

int INQUIRY_Devices(const std::string&) {
    readWhatARunReads();
    if (DEVICE_Init() != 0) {
        return 1;
    }
    for (int slot = 0; slot < DEVICE_GetNumDevices(); ++slot) {
        const DeviceRecord& device = DEVICE_At(slot);
        answerLine(formatText("%-16s  %s, %zu blocks, %ju bytes of flash", device.Device.c_str(),
                              device.Manufacturer.c_str(), device.aBlock.size(),
                              static_cast<uintmax_t>(flashBytes(device))));
    }
    return 0;
}

int INQUIRY_CheckDevice(const std::string& file) {
    std::string text;
    if (const FileResult read = FILES_ReadAll(file, text); !read.ok()) {
        complain(file + ": " + read.reason);
        return 1;
    }
    const DeviceParseResult result = DEVICE_ParseText(text);
    if (!result.record) {
        PROCESS_WriteError(formatPrintable(file + ": " + faultTexts(result), LineEnds::stay));
        return 1;
    }
    const std::string image = result.record->RamcodeFile;
    const bool isThere =
        image.empty() || FILES_Exists(FILES_SharedFile("RamImage/" + image)) ||
        FILES_Exists(std::filesystem::path(file).parent_path().parent_path() / "RamImage" / image);
    if (!isThere) {
        complain(file + ": its RAM image is not there: " + FILES_SharedFile("RamImage/" + image));
        return 1;
    }
    answerLine(formatText("%s: %s can be used, %zu blocks, %ju bytes of flash", file.c_str(),
                          result.record->Device.c_str(), result.record->aBlock.size(),
                          static_cast<uintmax_t>(flashBytes(*result.record))));
    return 0;
}
