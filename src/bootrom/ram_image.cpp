#include "bootrom/ram_image.h"

#include "device/device.h"
#include "notice/error.h"
#include "notice/log.h"
#include "platform/files.h"
#include "platform/format.h"

#include <algorithm>
#include <charconv>
#include <optional>

namespace {

constexpr uint64_t kMaxFileSize = 16U << 20; // far beyond any RAM; keeps a wrong file out of memory
constexpr uint32_t kMaxBlockSize = 0xFFFF;   // bytes, as the block header has room for
constexpr size_t kAddressBytesS3 = 4;

// Hex digits and nothing else.
std::optional<uint32_t> parseHex(std::string_view text, size_t position, size_t digits) {
    if (position + digits > text.size()) {
        return std::nullopt;
    }
    const char* first = text.data() + position;
    uint32_t value = 0;
    const auto result = std::from_chars(first, first + digits, value, 16);
    if (result.ec != std::errc() || result.ptr != first + digits) {
        return std::nullopt;
    }
    return value;
}

// Cuts the first line off the text; empty lines are passed over.
std::string_view takeLine(std::string_view& text) {
    text.remove_prefix(std::min(text.find_first_not_of("\r\n"), text.size()));
    const std::string_view line = text.substr(0, text.find_first_of("\r\n"));
    text.remove_prefix(line.size());
    return line;
}

std::string_view untilNul(std::string_view text) {
    return text.substr(0, text.find('\0'));
}

// The record that begins behind the colon at `position`; none when a pair of digits is none.
std::optional<RamRecord> parseRecordA(std::string_view text, size_t position) {
    RamRecord record;
    record.bytes.push_back(':');
    size_t wanted = 2;
    ++position;
    while (record.bytes.size() < wanted) {
        const auto byte = parseHex(text, position, 2);
        if (!byte) {
            return std::nullopt;
        }
        record.bytes.push_back(static_cast<uint8_t>(*byte));
        wanted = record.count() + size_t{6};
        position += 2;
    }
    record.consumed = position;
    return record;
}

// A block of an S3 line; none when the line does not parse.
std::optional<RamBlock> parseRecordB(std::string_view line) {
    const auto count = parseHex(line, 2, 2);
    const auto address = parseHex(line, 4, 2 * kAddressBytesS3);
    if (!count || !address || *count < kAddressBytesS3 + 1) {
        return std::nullopt;
    }
    RamBlock block{*address, {}};
    for (size_t i = 0; i < *count - kAddressBytesS3 - 1; ++i) {
        const auto byte = parseHex(line, 4 + 2 * (kAddressBytesS3 + i), 2);
        if (!byte) {
            return std::nullopt;
        }
        block.data.push_back(static_cast<uint8_t>(*byte));
    }
    return block;
}

bool refuseFile(const std::string& path, const FileResult& result, std::string_view text) {
    LOG_Add(formatText("RAM-Image %s: %s", path.c_str(), result.reason.c_str()));
    ERROR_Out(nullptr, ERROR_WithReason(text, path + ": " + result.reason), 1);
    return false;
}

} // namespace

bool _LoadRamImage(const std::string& path, std::string& text) {
    FileReader reader;
    const FileResult opened = reader.open(path);
    if (!opened.ok()) {
        return refuseFile(path, opened,
                          opened.status == FileStatus::notFound ? "File not found"
                                                                : "Invalid file handle");
    }
    if (reader.size() > kMaxFileSize) {
        return refuseFile(path, {FileStatus::failed, "the file is too large"}, "Read file failed");
    }
    text.assign(reader.size(), '\0');
    size_t filled = 0;
    while (filled < text.size()) {
        const ptrdiff_t count = reader.read({text.data() + filled, text.size() - filled});
        if (count <= 0) {
            const FileResult ended{FileStatus::failed, "the file has become shorter"};
            return refuseFile(path, count < 0 ? reader.failure() : ended, "Read file failed");
        }
        filled += static_cast<size_t>(count);
    }
    return true;
}

RamImageA parseRamImageA(std::string_view whole) {
    const std::string_view text = untilNul(whole);
    RamImageA image;
    image.length = text.size();
    size_t position = text.find(':');
    while (position != std::string_view::npos) {
        auto record = parseRecordA(text, position);
        if (!record) {
            image.malformed = true;
            break;
        }
        position = text.find(':', record->consumed);
        image.records.push_back(std::move(*record));
    }
    return image;
}

bool _RamImageFits(std::string_view whole) {
    std::string_view text = untilNul(whole);
    uint64_t lowest = UINT64_MAX;
    uint64_t highest = 0; // one past the last byte
    while (!text.empty()) {
        const std::string_view line = takeLine(text);
        if (line.size() < 9 || line.substr(7, 2) != "00") {
            continue;
        }
        const auto count = parseHex(line, 1, 2);
        const auto address = parseHex(line, 3, 4);
        if (!count || !address) {
            ERROR_Out(nullptr, "Error reading RAM-image file", 1);
            return false;
        }
        lowest = std::min<uint64_t>(lowest, *address);
        highest = std::max<uint64_t>(highest, uint64_t{*address} + *count);
    }
    const uint64_t ramEnd = uint64_t{DEVICE_GetRamStart()} + DEVICE_GetRamLen();
    return lowest >= DEVICE_GetRamStart() && lowest < ramEnd && highest <= ramEnd;
}

std::string parseRamImageB(std::string_view whole, RamImageB& image) {
    std::string_view text = untilNul(whole);
    uint64_t end = 0; // one past the last block
    while (!text.empty()) {
        const std::string_view line = takeLine(text);
        if (line.size() < 2 || line[1] != '3') {
            continue;
        }
        auto block = parseRecordB(line);
        if (!block) {
            return "Error parsing RAM-image";
        }
        if (block->address < end) {
            return "RAM-Image records overlap or are not in ascending order";
        }
        if (!block->data.empty()) { // a record may say nothing but its address
            end = uint64_t{block->address} + block->data.size();
            image.blocks.push_back(std::move(*block));
        }
    }
    if (image.blocks.empty()) {
        return "RAM-Image contains no data records";
    }
    image.start = image.blocks.front().address;
    if (end - image.start > kMaxBlockSize) {
        return formatText("RAM-Image is larger than %u bytes", kMaxBlockSize);
    }
    image.size = static_cast<uint32_t>(end - image.start);
    return "";
}
