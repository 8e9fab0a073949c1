#include "sim/sim_server.h"

#include "device/device_parser.h"
#include "platform/files.h"
#include "platform/format.h"
#include "platform/process.h"
#include "sim/chip.h"
#include "sim/replay.h"
#include "sim/sim_flash_file.h"
#include "sim/sim_line.h"

#include <algorithm>
#include <functional>
#include <memory>
#include <optional>
#include <utility>

namespace {

constexpr size_t kShownViolations = 20;
constexpr int kHostDiffers = 3;
constexpr size_t kLargestLog = 256 << 20; // bytes
constexpr size_t kMayBeMore = 2000; // bytes of one look at the line, behind which there may be
                                    // more that came as early

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

// What is behind the line: a chip, or a log that is played.
struct Peer {
    std::function<void(const HostEvent&, Moment now, Moment earliest)> take;
    std::function<std::optional<Moment>()> nextOutput;
    std::function<std::vector<uint8_t>(Moment now)> takeOutput;
    std::function<bool()> isOver;
    std::function<void()> save;
};

void serve(const Peer& peer, SimServerLine& line) {
    Moment looked; // what is read next came after it
    while (!peer.isOver()) {
        if (const auto bytes = peer.takeOutput(CLOCK_Now()); !bytes.empty()) {
            line.send(bytes);
        }
        const SimSignal signal =
            SIMWAIT_Wait(line.descriptors(), peer.nextOutput().value_or(kNever));
        const Moment woken = CLOCK_Now();
        size_t count = 0;
        const HostSink sink = [&](const HostEvent& event) {
            count += event.bytes.size();
            peer.take(event, CLOCK_Now(), looked); // some may have come since it woke
        };
        if (signal == SimSignal::end || !line.receive(sink)) {
            return;
        }
        if (count < kMayBeMore) {
            looked = woken;
        }
        if (signal == SimSignal::saveFlash && peer.save) {
            peer.save();
        }
    }
}

Peer chipPeer(const ChipPtr& chip, const std::string& flashOut) {
    CHIP_SetLines(*chip, false, true, CLOCK_Now()); // an application may speak from now on
    Peer peer;
    peer.take = [chip, dtr = false, rts = true](const HostEvent& event, Moment now,
                                                Moment earliest) mutable {
        switch (event.kind) {
        case HostEvent::Kind::data:
            CHIP_Receive(*chip, event.bytes, now, earliest);
            return;
        case HostEvent::Kind::rate:
            CHIP_SetHostRate(*chip, event.value);
            return;
        case HostEvent::Kind::dtr:
            dtr = event.value != 0;
            break;
        case HostEvent::Kind::rts:
            rts = event.value != 0;
            break;
        }
        CHIP_SetLines(*chip, dtr, rts, now);
    };
    peer.nextOutput = [chip] { return CHIP_NextOutput(*chip, kNever); };
    peer.takeOutput = [chip](Moment now) {
        std::vector<uint8_t> bytes;
        while (const auto output = CHIP_TakeOutput(*chip, now)) {
            bytes.push_back(output->value);
        }
        return bytes;
    };
    peer.isOver = [] { return false; };
    peer.save = [chip, flashOut] { SIM_WriteFlash(*chip, flashOut); };
    return peer;
}

Peer replayPeer(Replay& replay) {
    Peer peer;
    peer.take = [&replay](const HostEvent& event, Moment now, Moment) { replay.take(event, now); };
    peer.nextOutput = [&replay] { return replay.nextOutput(); };
    peer.takeOutput = [&replay](Moment now) { return replay.takeOutput(now); };
    peer.isOver = [&replay, told = false]() mutable {
        if (replay.isAtEnd() && !std::exchange(told, true)) {
            PROCESS_WriteOut("the log has been played to its end\n");
        }
        return !replay.difference().empty();
    };
    return peer;
}

SimServerLinePtr openLine(const SimOptions& options, std::string& error) {
    SIMWAIT_CatchSignals();
    SimServerLinePtr line = options.tcpPort >= 0 ? SIMTCP_Open(options.tcpPort, error)
                                                 : SIMPTY_Open(options.link, options.rate, error);
    if (line) {
        PROCESS_WriteOut(line->address + "\n");
    }
    return line;
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
    const SimServerLinePtr line = openLine(options, error);
    if (!line) {
        return failed(error);
    }
    serve(chipPeer(chip, options.flashOut), *line);
    CHIP_FlushTranscript(*chip);
    const bool saved = SIM_WriteFlash(*chip, options.flashOut);
    PROCESS_WriteOut(summary(*chip));
    if (!saved) {
        return 1;
    }
    return CHIP_GetCounts(*chip).violations == 0 ? 0 : kHostDiffers;
}

int SIM_Replay(const SimOptions& options) {
    std::string text;
    if (const FileResult read = FILES_ReadAll(options.replay, text, kLargestLog); !read.ok()) {
        return failed(options.replay + ": " + (read.reason.empty() ? "not found" : read.reason));
    }
    std::string error;
    std::vector<ReplayItem> items = REPLAY_ParseLog(text, error);
    if (items.empty()) {
        return failed(options.replay + ": " + error);
    }
    Replay replay(std::move(items), options.tcpPort >= 0);
    const SimServerLinePtr line = openLine(options, error);
    if (!line) {
        return failed(error);
    }
    serve(replayPeer(replay), *line);
    const std::string& difference = replay.difference();
    if (difference.empty() && replay.isAtEnd()) {
        return 0;
    }
    PROCESS_WriteOut(difference.empty() ? "not played to its end, at " + replay.missing()
                                        : "the host differs at " + difference);
    return kHostDiffers;
}

int SIM_ListDevices(const SimOptions& options) {
    std::string error;
    for (const DeviceRecord& device : readDevices(options, error)) {
        PROCESS_WriteOut(device.Device + "\n");
    }
    return error.empty() ? 0 : failed(error);
}
