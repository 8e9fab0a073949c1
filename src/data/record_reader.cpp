#include "data/record_reader.h"

#include "data/hex_codec.h"
#include "persist/chars.h"

#include <cstring>

namespace {

constexpr size_t kWindow = 65536; // characters
constexpr char kCtrlZ = 0x1A;
constexpr char kExpectedHex[] = "Expected Hex character : 0..9, A..F";

} // namespace

RecordReader::RecordReader(FileReader& file) : file_(file), window_(kWindow + kLongestRecord) {
}

void RecordReader::refill() {
    if (fileEnded_ || end_ - position_ >= kLongestRecord) {
        return;
    }
    std::memmove(window_.data(), window_.data() + position_, end_ - position_);
    end_ -= position_;
    position_ = 0;
    while (!fileEnded_ && end_ < kWindow) {
        const ptrdiff_t count = file_.read(std::span(window_).subspan(end_, kWindow - end_));
        if (count < 0) {
            fail("Error reading file");
        }
        fileEnded_ = count <= 0;
        end_ += count > 0 ? static_cast<size_t>(count) : 0;
    }
    window_[end_] = '\0';
}

bool RecordReader::atEndOfData() const {
    return atEndOfFile() || peek() == kCtrlZ;
}

void RecordReader::fail(const char* error) {
    if (error_ == nullptr) {
        error_ = error;
    }
}

void RecordReader::expect(char character) {
    if (peek() != character) {
        fail(kUnexpectedCharacter);
    } else if (error_ == nullptr) {
        ++position_;
    }
}

char RecordReader::takeType() {
    const char type = peek();
    if (static_cast<uint8_t>(type) < 0x20) {
        fail(kUnexpectedCharacter);
    }
    return error_ == nullptr ? window_[position_++] : '\0';
}

uint8_t RecordReader::takeByte() {
    uint8_t byte = 0;
    takeBytes({&byte, 1});
    return byte;
}

// A record is never longer than what refill() provides, or the NUL behind the file's last character
// stands among the digits and is none: they need not be counted first.
void RecordReader::takeBytes(std::span<uint8_t> bytes) {
    if (error_ != nullptr) {
        return;
    }
    if (!decodeHex(window_.data() + position_, bytes, checksum_)) {
        fail(kExpectedHex);
        return;
    }
    position_ += 2 * bytes.size();
}

void RecordReader::takeLineEnd() {
    if (error_ != nullptr || atEndOfData()) {
        return;
    }
    if (!isLineBreak(peek())) {
        fail("Expected CR or LF");
        return;
    }
    ++lineEnds_;
    ++position_;
    if (isLineBreak(peek())) {
        ++position_;
    }
}
