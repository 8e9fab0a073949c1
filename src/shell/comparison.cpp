#include "shell/comparison.h"

#include "data/hexdata.h"
#include "data/image_copy.h"
#include "data/image_walk.h"
#include "data/program_file.h"
#include "data/sha256.h"
#include "device/device.h"
#include "device/image_fit.h"
#include "notice/error.h"
#include "notice/log.h"
#include "platform/files.h"
#include "platform/format.h"
#include "serial/sio.h"
#include "shell/front_end.h"
#include "shell/program_files.h"
#include "shell/session.h"
#include "target/commands.h"

#include <algorithm>
#include <numeric>

namespace {

constexpr size_t kShownBytes = 8;     // of a difference in the note
constexpr size_t kReportedBytes = 32; // of a difference in a line of the report

struct Comparison {
    std::string side;  // "chip", "file"
    std::string other; // "the chip VT-B128 at COM1"
    ImageCopy copy;
    std::vector<uint64_t> begins; // in its bytes, of each of its areas
    std::vector<AddressRange> differences;
    std::optional<size_t> current; // that was gone to
    std::string image;             // digest of the image that was compared
    std::string device;
};

std::optional<Comparison> comparison;

// By which another image is noticed, whoever has changed it.
std::string imageDigest() {
    Sha256 digest;
    constexpr uint32_t kPiece = 65536;
    forEachPiece(kPiece, IMAGECOPY_Everything(),
                 [&digest](uint32_t address, std::span<const uint8_t> bytes) {
                     const std::string place = formatText("%X %zu ", address, bytes.size());
                     digest.add(place);
                     digest.add({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
                 });
    return digest.finish();
}

// What of the ranges lies in those others; both ascend.
std::vector<AddressRange> comparedRanges(const std::vector<AddressRange>& ranges,
                                         const std::vector<AddressRange>& others) {
    std::vector<AddressRange> common;
    auto other = others.begin();
    for (const AddressRange& range : ranges) {
        while (other != others.end() && other->end <= range.start) {
            ++other;
        }
        for (auto at = other; at != others.end() && at->start < range.end; ++at) {
            common.push_back({std::max(range.start, at->start), std::min(range.end, at->end)});
        }
    }
    return common;
}

uint64_t bytesOf(const std::vector<AddressRange>& ranges) {
    return std::accumulate(
        ranges.begin(), ranges.end(), uint64_t{0},
        [](uint64_t sum, const AddressRange& range) { return sum + range.size(); });
}

std::string counted(uint64_t count, const char* what) {
    return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

// "5 bytes differ in 2 places".
std::string figures() {
    const uint64_t bytes = bytesOf(comparison->differences);
    return counted(bytes, "byte") + (bytes == 1 ? " differs in " : " differ in ") +
           counted(comparison->differences.size(), "place");
}

// A line a block that has differences, and one for those in no block.
std::vector<std::string> blockLines() {
    std::vector<std::string> lines;
    uint64_t inBlocks = 0;
    const auto add = [&lines](const std::string& where, uint64_t bytes) {
        if (bytes > 0) {
            lines.push_back(where + ": " + counted(bytes, "byte") +
                            (bytes == 1 ? " differs" : " differ"));
        }
    };
    for (const DeviceBlock& block : DEVICE_Blocks()) {
        const uint64_t bytes = bytesOf(comparedRanges(comparison->differences, {block.range}));
        add(formatText("Block %d (%X - %X)", block.index, block.range.start, block.range.last()),
            bytes);
        inBlocks += bytes;
    }
    const uint64_t all = bytesOf(comparison->differences);
    add("In no block", all - std::min(inBlocks, all));
    return lines;
}

std::optional<uint8_t> otherByte(uint32_t address) {
    const ImageCopy& copy = comparison->copy;
    const auto area = std::ranges::partition_point(
        copy.areas, [address](const AddressRange& range) { return range.end <= address; });
    if (area == copy.areas.end() || !area->contains(address)) {
        return std::nullopt;
    }
    const auto index = static_cast<size_t>(area - copy.areas.begin());
    return copy.bytes[static_cast<size_t>(comparison->begins[index] + (address - area->start))];
}

std::optional<uint8_t> imageByteAt(uint32_t address) {
    uint8_t byte = 0;
    bool held = false;
    HEXDATA_Copy(address, {&byte, 1}, {&held, 1});
    return held ? std::optional(byte) : std::nullopt;
}

// The bytes of a range in hex, the first ones of a long one.
std::string hexOf(const AddressRange& range, size_t most,
                  std::optional<uint8_t> (*byteAt)(uint32_t)) {
    std::string text;
    const uint64_t end = std::min<uint64_t>(range.end, range.start + most);
    for (uint64_t address = range.start; address < end; ++address) {
        const std::optional<uint8_t> byte = byteAt(static_cast<uint32_t>(address));
        text += (text.empty() ? "" : " ") + (byte ? formatText("%02X", *byte) : std::string("--"));
    }
    return text + (end < range.end ? " ..." : "");
}

std::string bothOf(const AddressRange& range, size_t most) {
    const std::string place = range.size() == 1 ? formatText("%X", range.start)
                                                : formatText("%X - %X", range.start, range.last());
    return place + ": image " + hexOf(range, most, imageByteAt) + ", " + comparison->side + " " +
           hexOf(range, most, otherByte);
}

void showComparison() {
    FRONTEND_Get().refreshView(View::hexDump);
    FRONTEND_Get().updateMenu();
}

// Takes the place of any that was.
void begin(std::string side, std::string other, ImageCopy copy) {
    comparison.emplace();
    comparison->side = std::move(side);
    comparison->other = std::move(other);
    comparison->differences = HEXDATA_Differences(copy, 0);
    comparison->copy = std::move(copy);
    uint64_t begins = 0;
    for (const AddressRange& area : comparison->copy.areas) {
        comparison->begins.push_back(begins);
        begins += area.size();
    }
    comparison->image = imageDigest();
    comparison->device = DEVICE_GetName();
    const bool equal = comparison->differences.empty();
    LOG_Add("Compared with " + comparison->other + ": " + (equal ? "no difference" : figures()));
    for (const std::string& line : blockLines()) {
        LOG_Add(line);
    }
    if (equal) {
        comparison.reset();
    }
    showComparison();
}

std::string chipName() {
    return "the chip " + DEVICE_GetName() + " at " + SIO_PortName();
}

// What is read of the chip; none, and said so, when there is nothing.
std::vector<AddressRange> rangesOfChip() {
    const std::vector<AddressRange> areas = HEXDATA_GetAreas();
    std::vector<AddressRange> ranges =
        comparedRanges(areas, DEVICE_JoinedRanges(DEVICE_SelectedBlocks()));
    const uint64_t left = bytesOf(areas) - bytesOf(ranges);
    if (ranges.empty()) {
        ERROR_Out(nullptr, "Nothing to compare: no data lies in the selected blocks", 1);
    } else if (left > 0) {
        LOG_Add("Note: " + counted(left, "byte") + " outside of the selected blocks not compared");
    }
    return ranges;
}

// "block 0, block 3"; many are not listed.
std::string blocksThatDiffer() {
    constexpr int kListed = 4;
    int count = 0;
    std::string text;
    for (const DeviceBlock& block : DEVICE_Blocks()) {
        if (!comparedRanges(comparison->differences, {block.range}).empty() && ++count <= kListed) {
            text += (text.empty() ? "" : ", ") + formatText("block %d", block.index);
        }
    }
    return text + (count > kListed ? " and others" : "");
}

void reportChipDiffers() {
    const AddressRange first = comparison->differences.front();
    const AddressRange byte = AddressRange::of(first.start, 1);
    ERROR_Out(nullptr, "Image and chip differ: " + figures() + ", the first at " + bothOf(byte, 1),
              1, {Cause::contentsDiffer, blocksThatDiffer()});
}

void goTo(size_t index) {
    comparison->current = index;
    FRONTEND_Get().revealData(comparison->differences[index]);
    showComparison();
}

std::string report() {
    const std::string image = ORIGIN_Text();
    std::string text = "Comparison\nImage: " + (image.empty() ? "without a name" : image) +
                       "\nOther: " + comparison->other + "\nDevice: " + DEVICE_GetName() + "\n" +
                       figures() + "\n";
    for (const std::string& line : blockLines()) {
        text += line + "\n";
    }
    text += "\n";
    for (const AddressRange& range : comparison->differences) {
        text += bothOf(range, kReportedBytes) + "\n";
    }
    return text;
}

} // namespace

void COMPARISON_WithChip() {
    COMPARISON_End();
    if (!TARGET_HasSelectedBlock()) {
        return;
    }
    const std::vector<AddressRange> ranges = rangesOfChip();
    if (ranges.empty()) {
        return;
    }
    const TargetBusy busy;
    std::optional<ImageCopy> chip = TARGET_ReadToCompare(ranges);
    if (!chip) {
        return; // which has been reported
    }
    begin("chip", chipName(), std::move(*chip));
    if (comparison) {
        reportChipDiffers();
    } else {
        ERROR_Ask(nullptr, "Image and chip do not differ", "Comparing", BOX_OK);
    }
}

void COMPARISON_WithFile(const std::string& path) {
    COMPARISON_End();
    LOG_Add("Comparing with " + path);
    std::optional<ImageCopy> file;
    {
        const ImageBeside beside;
        if (PROGRAMFILE_Load(path)) {
            file = beside.copy();
        }
    }
    if (!file) {
        return; // which has been reported
    }
    begin("file", path, std::move(*file));
    const std::string result =
        comparison ? figures() + ".\nF11 shows the next one." : "Image and file do not differ.";
    ERROR_Ask(nullptr, result, "Comparing", BOX_OK);
}

void COMPARISON_WithFileDialog() {
    if (const auto path = PROGRAM_AskForFile("Compare with file")) {
        COMPARISON_WithFile(*path);
    }
}

bool COMPARISON_IsOpen() {
    return comparison.has_value();
}

void COMPARISON_End() {
    if (comparison) {
        comparison.reset();
        showComparison();
    }
}

void COMPARISON_Follow() {
    if (comparison &&
        (comparison->device != DEVICE_GetName() || comparison->image != imageDigest())) {
        COMPARISON_End();
    }
}

void COMPARISON_Next() {
    if (comparison) {
        const size_t next = comparison->current ? *comparison->current + 1 : 0;
        goTo(next % comparison->differences.size());
    }
}

void COMPARISON_Previous() {
    if (comparison) {
        const size_t count = comparison->differences.size();
        goTo((comparison->current.value_or(0) + count - 1) % count);
    }
}

std::vector<AddressRange> COMPARISON_DifferencesIn(const AddressRange& range) {
    std::vector<AddressRange> found;
    if (comparison) {
        const std::vector<AddressRange>& all = comparison->differences;
        auto at = std::ranges::partition_point(
            all, [&range](const AddressRange& one) { return one.end <= range.start; });
        for (; at != all.end() && at->start < range.end; ++at) {
            found.push_back({std::max(at->start, range.start), std::min(at->end, range.end)});
        }
    }
    return found;
}

std::string COMPARISON_TextAt(uint32_t address) {
    const AddressRange byte = AddressRange::of(address, 1);
    return COMPARISON_DifferencesIn(byte).empty() ? "" : bothOf(byte, 1);
}

std::string COMPARISON_Note() {
    if (!comparison) {
        return "";
    }
    if (!comparison->current) {
        return "Compared with " + comparison->other + ": " + figures() +
               ". F11 shows the next one.";
    }
    return formatText("Difference %zu of %zu, ", *comparison->current + 1,
                      comparison->differences.size()) +
           bothOf(comparison->differences[*comparison->current], kShownBytes);
}

void COMPARISON_Save(const std::string& path) {
    if (!comparison) {
        return;
    }
    if (const FileResult written = FILES_Replace(path, report()); !written.ok()) {
        ERROR_Out(nullptr, ERROR_WithReason("Error writing file", path + ": " + written.reason), 1);
    } else {
        LOG_Add("Saved the comparison as " + path);
    }
}

void COMPARISON_SaveDialog() {
    const FileRequest request = {
        true, "Save comparison", {{"Text (*.txt)", "*.txt"}, {"All files (*.*)", "*.*"}}, ""};
    if (const auto choice = FRONTEND_Get().chooseFile(request)) {
        COMPARISON_Save(choice->path);
    }
}
