#include "sim/sim_server.h"

#include "device/device_parser.h"
#include "platform/files.h"
#include "platform/format.h"
#include "platform/process.h"
#include "sim/chip.h"
#include "sim/sim_flash_file.h"
#include "sim/sim_line.h"

#include <algorithm>
#include <memory>

namespace {

constexpr size_t kShownViolations = 20;

int failed(const std::string& text) {
    PROCESS_WriteError("calvorin-sim: " + formatPrintable(text, LineEnds::stay) + "\n");
    return 1;
}

std::string devicesFolder(const SimOptions& options) {
    return options.devicesFolder.empty() ? FILES_ProgramFolder() + "Device" : options.devicesFolder;
}

std::vector<std::filesystem::path> descriptions(const SimOptions& options) {
    return options.devicesFolder.empty() ? FILES_ListShared("Device", ".dev")
                                         : FILES_List(options.devicesFolder, ".dev");
}

// All devices whose descriptions can be read; what is wrong with the others in `error`.
std::vector<DeviceRecord> readDevices(const SimOptions& options, std::string& error) {
    std::vector<DeviceRecord> devices;
    for (const std::filesystem::path& path : descriptions(options)) {
        std::string text;
        if (const FileResult read = FILES_ReadAll(path, text); !read.ok()) {
            error += formatText("%s: %s\n", path.c_str(), read.reason.c_str());
            continue;
        }
        const DeviceParseResult result = DEVICE_ParseText(text);
        if (result.record) {
            devices.push_back(*result.record);
        } else {
            error += path.string() + ": " + faultTexts(result);
        }
    }
    return devices;
}

std::optional<DeviceRecord> findDevice(const SimOptions& options, std::string& error) {
    const std::vector<DeviceRecord> devices = readDevices(options, error);
    const auto found = std::ranges::find(devices, options.device, &DeviceRecord::Device);
    if (found != devices.end()) {
        return *found;
    }
    error +=
        formatText("no device '%s' in %s", options.device.c_str(), devicesFolder(options).c_str());
    return std::nullopt;
}

// A pseudo-terminal has no control lines, and the rate that its host has set may already be another
// when the bytes are looked at: the chip is told to go by the bytes alone.
ChipOptions chipOptions(const SimOptions& options) {
    ChipOptions chip = options.chip;
    const bool hasLines = options.tcpPort >= 0;
    chip.checkRate = hasLines;
    if (hasLines) {
        chip.resyncByMatch = false;
        chip.startInBootRom = false;
    }
    return chip;
}

std::string summary(const Chip& chip) {
    const ChipCounts& counts = CHIP_GetCounts(chip);
    std::string text = formatText(
        "bytes received %llu, sent %llu; resets %llu; boot ROM commands %llu; loaders %llu;\n"
        "frames %llu; erases %llu; program commands %llu (%llu bytes); reads %llu\n",
        static_cast<unsigned long long>(counts.bytesIn),
        static_cast<unsigned long long>(counts.bytesOut),
        static_cast<unsigned long long>(counts.resets),
        static_cast<unsigned long long>(counts.bootCommands),
        static_cast<unsigned long long>(counts.downloads),
        static_cast<unsigned long long>(counts.frames),
        static_cast<unsigned long long>(counts.erases),
        static_cast<unsigned long long>(counts.programs),
        static_cast<unsigned long long>(counts.bytesProgrammed),
        static_cast<unsigned long long>(counts.reads));
    text += formatText("violations %llu\n", static_cast<unsigned long long>(counts.violations));
    const auto& violations = CHIP_GetViolations(chip);
    for (size_t i = 0; i < std::min(violations.size(), kShownViolations); i++) {
        text += "  " + violations[i].text + "\n";
    }
    return text;
}

void passOutputs(Chip& chip, SimServerLine& line) {
    std::vector<uint8_t> bytes;
    const Moment now = CLOCK_Now();
    while (const auto output = CHIP_TakeOutput(chip, now)) {
        bytes.push_back(output->value);
    }
    if (!bytes.empty()) {
        line.send(bytes);
    }
}

void serve(Chip& chip, SimServerLine& line, const SimOptions& options) {
    while (true) {
        passOutputs(chip, line);
        const Moment next = CHIP_NextOutput(chip, kNever).value_or(kNever);
        const SimSignal signal = SIMWAIT_Wait(line.descriptors(), next);
        if (signal == SimSignal::end || !line.receive(chip, CLOCK_Now())) {
            return;
        }
        if (signal == SimSignal::saveFlash) {
            SIM_WriteFlash(chip, options.flashOut);
        }
    }
}

bool openTranscript(const std::string& path, ChipOptions& chip, std::string& error) {
    if (path.empty()) {
        return true;
    }
    auto file = std::make_shared<AppendFile>();
    const FileResult result = file->create(path);
    if (!result.ok()) {
        error = path + ": " + (result.reason.empty() ? "not found" : result.reason);
        return false;
    }
    chip.transcript = [file](const std::string& line) { file->write(line + "\n"); };
    return true;
}

} // namespace

int SIM_Serve(const SimOptions& options) {
    std::string error;
    const auto device = findDevice(options, error);
    ChipOptions settings = chipOptions(options);
    if (!device || !openTranscript(options.transcript, settings, error)) {
        return failed(error);
    }
    const ChipPtr chip = CHIP_Create(*device, settings);
    if (!SIM_ReadFlash(*chip, options.flashIn, error)) {
        return failed(error);
    }
    SIMWAIT_CatchSignals();
    const SimServerLinePtr line = options.tcpPort >= 0
                                      ? SIMTCP_Open(options.tcpPort, error)
                                      : SIMPTY_Open(options.link, options.rate, error);
    if (!line) {
        return failed(error);
    }
    PROCESS_WriteOut(line->address + "\n");
    serve(*chip, *line, options);
    CHIP_FlushTranscript(*chip);
    const bool saved = SIM_WriteFlash(*chip, options.flashOut);
    PROCESS_WriteOut(summary(*chip));
    if (!saved) {
        return 1;
    }
    return CHIP_GetCounts(*chip).violations == 0 ? 0 : 3;
}

int SIM_ListDevices(const SimOptions& options) {
    std::string error;
    for (const DeviceRecord& device : readDevices(options, error)) {
        PROCESS_WriteOut(device.Device + "\n");
    }
    return error.empty() ? 0 : failed(error);
}
