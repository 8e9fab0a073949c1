#include "data/record_writer.h"

#include "data/hex_codec.h"

#include <cstring>

namespace {

constexpr size_t kFirstBuffer = 16384; // characters; a small file touches no more memory
constexpr size_t kBuffer = 262144;
constexpr size_t kLongestLine = 128; // start, head, 32 data bytes, checksum, line end

} // namespace

RecordWriter::RecordWriter(std::function<FileResult(std::string&)> write)
    : write_(std::move(write)), buffer_(kFirstBuffer, '\0') {
}

void RecordWriter::record(std::string_view start, std::span<const uint8_t> head,
                          std::span<const uint8_t> data, bool negated) {
    if (buffer_.size() - used_ < kLongestLine) {
        flush();
        buffer_.resize(kBuffer);
    }
    char* const line = buffer_.data() + used_;
    char* text = line;
    for (const char character : start) { // one or two: less than a call to copy them
        *text++ = character;
    }
    uint8_t sum = 0;
    text = encodeHex(text, head, sum);
    text = encodeHex(text, data, sum);
    const auto checksum = static_cast<uint8_t>(~sum + (negated ? 1 : 0));
    text = encodeHex(text, {&checksum, 1}, sum);
    *text++ = '\r';
    *text++ = '\n';
    used_ += static_cast<size_t>(text - line);
}

void RecordWriter::flush() {
    if (result_.ok()) {
        buffer_.resize(used_);
        result_ = write_(buffer_);
    }
    used_ = 0;
}

FileResult RecordWriter::finish() {
    flush();
    return result_;
}
