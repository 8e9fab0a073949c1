#include "data/record_writer.h"

#include <array>
#include <cstring>

namespace {

constexpr size_t kBuffer = 262144; // characters
constexpr size_t kLongestLine = 128; // start, head, 32 data bytes, checksum, line end

using Pair = std::array<char, 2>;
constexpr std::array<Pair, 256> kPairs = [] {
    constexpr char kDigits[] = "0123456789ABCDEF";
    std::array<Pair, 256> pairs{};
    for (size_t byte = 0; byte < pairs.size(); ++byte) {
        pairs[byte] = {kDigits[byte >> 4], kDigits[byte & 0x0F]};
    }
    return pairs;
}();

char* putByte(char* text, uint8_t byte) {
    std::memcpy(text, kPairs[byte].data(), 2);
    return text + 2;
}

char* putBytes(char* text, std::span<const uint8_t> bytes, uint8_t& sum) {
    for (const uint8_t byte : bytes) {
        text = putByte(text, byte);
        sum = static_cast<uint8_t>(sum + byte);
    }
    return text;
}

} // namespace

RecordWriter::RecordWriter(FileReplacer& file) : file_(file), buffer_(kBuffer, '\0') {
}

void RecordWriter::record(std::string_view start, std::span<const uint8_t> head,
                          std::span<const uint8_t> data, bool negated) {
    if (buffer_.size() - used_ < kLongestLine) {
        flush();
    }
    char* const line = buffer_.data() + used_;
    std::memcpy(line, start.data(), start.size());
    uint8_t sum = 0;
    char* text = putBytes(line + start.size(), head, sum);
    text = putBytes(text, data, sum);
    text = putByte(text, static_cast<uint8_t>(~sum + (negated ? 1 : 0)));
    *text++ = '\r';
    *text++ = '\n';
    used_ += static_cast<size_t>(text - line);
}

void RecordWriter::flush() {
    failed_ = failed_ || !file_.write(std::string_view(buffer_).substr(0, used_)).ok();
    used_ = 0;
}

bool RecordWriter::finish() {
    flush();
    return !failed_ && file_.commit().ok();
}
