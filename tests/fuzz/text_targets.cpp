// Files and texts: read, and what was understood is written and read once more.
#include "bootrom/ram_image.h"
#include "data/program_file.h"
#include "data/program_format.h"
#include "device/device_parser.h"
#include "fuzz/fuzz.h"
#include "persist/ini.h"
#include "platform/rfc2217_codec.h"
#include "shell/cmdline_line.h"
#include "shell/project.h"
#include "shell/shell_world.h"
#include "sim/telnet.h"
#include "target/reply.h"

#include <algorithm>

namespace {

using Bytes = std::span<const uint8_t>;

std::string textOf(Bytes bytes) {
    return {bytes.begin(), bytes.end()};
}

// One folder for all runs: making one takes longer than what is looked at.
ShellWorld& fuzzWorld() {
    static ShellWorld world;
    HEXDATA_Reset();
    RUN_Reset();
    world.reports.clear();
    world.screen.questions.clear();
    world.screen.log.clear();
    world.log.clear();
    return world;
}

std::string fuzzProgramFile(Bytes bytes) {
    ShellWorld& world = fuzzWorld();
    const std::string path = world.folder / "program";
    writeFile(path, textOf(bytes));
    if (!PROGRAMFILE_Load(path)) {
        return !HEXDATA_IsEmpty()      ? "a refused file leaves data"
               : world.reports.empty() ? "refused without a word"
                                       : "";
    }
    const std::string image = ShellWorld::image();
    for (const ProgramFormat& format : PROGRAMFORMAT_All()) {
        const std::string copy = path + format.suffix;
        if (!PROGRAMFILE_Save(copy, format.type) || !PROGRAMFILE_Load(copy) ||
            ShellWorld::image() != image) {
            return "comes back otherwise from " + format.name;
        }
    }
    return "";
}

std::string fuzzDescription(Bytes bytes) {
    const DeviceParseResult result = DEVICE_ParseText(textOf(bytes));
    const bool refused = !result.faults.empty() || !result.missing.empty();
    return result.record.has_value() == refused ? "neither taken nor refused" : "";
}

std::string fuzzProject(Bytes bytes) {
    ShellWorld& world = fuzzWorld();
    const std::string path = world.folder / "p.tpu";
    std::filesystem::remove(path);
    writeFile(path, textOf(bytes));
    if (PROJECT_Load(path, false) != ProjectRead::whole) {
        return world.screen.questions.empty() && world.reports.empty() ? "refused without a word"
                                                                       : "";
    }
    if (!PROJECT_Save(path, "a.hex")) {
        return "not written";
    }
    const std::string saved = readFile(path);
    if (PROJECT_Load(path, false) != ProjectRead::whole || !PROJECT_Save(path, "a.hex")) {
        return "writes what it does not read:\n" + saved;
    }
    return readFile(path) == saved ? "" : "another one when saved again:\n" + saved;
}

// Whatever the file holds: what the program writes to it is what it reads back.
std::string fuzzSettings(Bytes bytes) {
    constexpr char kFuzzed[] = "Settings DEVICEPROPS";
    ShellWorld& world = fuzzWorld();
    writeFile(world.folder / "tool.ini", textOf(bytes));
    INI_Load();
    if (!world.reports.empty()) {
        return "";
    }
    INI_WriteInt(kFuzzed, "DevProps.Speed", -12345);
    const int32_t written[4] = {1, -2, 3, 0x7FFFFFFF};
    INI_WriteRect(kFuzzed, "Rect", written);
    if (!world.reports.empty()) {
        return ""; // no room
    }
    INI_Save();
    INI_Load();
    int32_t speed = 0;
    int32_t rect[4] = {};
    INI_ReadInt(kFuzzed, "DevProps.Speed", speed);
    INI_ReadRect(kFuzzed, "Rect", rect);
    return speed == -12345 && std::ranges::equal(written, rect)
               ? ""
               : "read back otherwise:\n" + readFile(world.folder / "tool.ini");
}

// Arguments, a line each; those before the first empty line are read unattended too.
std::string fuzzCommandLine(Bytes bytes) {
    fuzzWorld();
    std::vector<std::string> arguments(1);
    for (const uint8_t byte : bytes) {
        if (byte == '\n') {
            arguments.emplace_back();
        } else if (byte != 0) {
            arguments.back() += static_cast<char>(byte);
        }
    }
    for (const bool unattended : {false, true}) {
        if (unattended) {
            arguments.emplace_back("-Exit");
        }
        LINE_SetKindOfRun(arguments);
        for (const LineItem& item : LINE_Read(arguments).items) {
            if (unattended && !item.isKnown && item.faults.empty()) {
                return "nothing is said of " + item.argument;
            }
        }
    }
    return "";
}

std::string fuzzRamImage(Bytes bytes) {
    const std::string text = textOf(bytes);
    static_cast<void>(_RamImageFits(text));
    for (const RamRecord& record : parseRamImageA(text).records) {
        if (record.bytes.size() != record.count() + 6U) {
            return "a record of another length than it says";
        }
    }
    RamImageB image;
    if (!parseRamImageB(text, image).empty()) {
        return "";
    }
    uint64_t end = image.start;
    for (const RamBlock& block : image.blocks) {
        if (block.address < end || block.data.empty()) {
            return "blocks overlap or are empty";
        }
        end = uint64_t{block.address} + block.data.size();
    }
    return end == uint64_t{image.start} + image.size ? "" : "another size than its blocks";
}

// A stream means the same in whatever pieces it comes. The first byte says where it is cut.
std::string fuzzTelnet(Bytes bytes) {
    if (bytes.empty()) {
        return "";
    }
    const size_t cut = std::min<size_t>(bytes[0], bytes.size() - 1) + 1;
    const std::vector<Bytes> ways[] = {{bytes.subspan(1)},
                                       {bytes.subspan(1, cut - 1), bytes.subspan(cut)}};
    std::vector<std::string> seen;
    for (const std::vector<Bytes>& pieces : ways) {
        TelnetDecoder decoder;
        TelnetNegotiation negotiation;
        Telnet server;
        std::vector<uint8_t> data;
        std::vector<uint8_t> out;
        std::vector<TelnetEvent> events;
        std::string asked;
        for (const Bytes piece : pieces) {
            telnetDecode(decoder, piece, data, events);
            for (const HostEvent& event : TELNET_Receive(server, piece)) {
                asked += event.kind == HostEvent::Kind::data
                             ? textOf(event.bytes)
                             : "#" + std::to_string(static_cast<int>(event.kind)) + "=" +
                                   std::to_string(event.value);
            }
        }
        for (const TelnetEvent& event : events) {
            telnetNegotiate(negotiation, event, out);
        }
        seen.push_back(textOf(data) + "|" + textOf(out) + "|" + asked + "|" +
                       textOf(server.answers));
    }
    return seen[0] == seen[1] ? "" : "depends on where the stream is cut";
}

std::string fuzzReply(Bytes bytes) {
    const Reply reply = parseReply(bytes);
    if (reply.kind != ReplyKind::malformed) {
        static_cast<void>(TARGET_HandleReply(bytes, reply.kind));
    }
    return reply.data.size() > bytes.size() ? "more data than was sent" : "";
}

} // namespace

const std::vector<FuzzTarget>& FUZZ_Targets() {
    static const std::vector<FuzzTarget> targets = {
        {"program", fuzzProgramFile}, {"description", fuzzDescription},
        {"project", fuzzProject},     {"settings", fuzzSettings},
        {"line", fuzzCommandLine},    {"ram", fuzzRamImage},
        {"telnet", fuzzTelnet},       {"reply", fuzzReply},
        {"answers", fuzzAnswers},     {"spoilt", fuzzSpoiltLine}};
    return targets;
}
