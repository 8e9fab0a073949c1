#include "data/record_reader.h"

#include "data/hex_codec.h"
#include "persist/chars.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace {

constexpr size_t kReadPiece = 65536; // characters
constexpr size_t kLargeReadPiece = 524288;
constexpr uint64_t kLargeFile = 1U << 20; // bytes, many times what starting a thread costs
constexpr char kExpectedHex[] = "Expected Hex character : 0..9, A..F";

} // namespace

// What is no file in the end, a pipe or a device, tells no size.
RecordReader::RecordReader(FileReader& file)
    : file_(file), pieceSize_(file.size() >= kLargeFile ? kLargeReadPiece
                              : file.size() > 0         ? std::min(file.size() + 1, kReadPiece)
                                                        : kReadPiece),
      window_(kLongestRecord, '\0'), position_(kLongestRecord) {
    if (file.size() >= kLargeFile) {
        ahead_.emplace([this](std::string& piece) { readPiece(piece); });
        std::string first;
        ahead_->exchange(first);
    }
}

// A piece that is shorter than the others is the last one.
void RecordReader::readPiece(std::string& piece) {
    piece.resize(kLongestRecord + pieceSize_);
    size_t end = kLongestRecord;
    while (!readAll_ && end < piece.size()) {
        const ptrdiff_t count = file_.read(std::span(piece).subspan(end));
        readFailed_ = count < 0;
        readAll_ = count <= 0;
        end += count > 0 ? static_cast<size_t>(count) : 0;
    }
    piece.resize(end);
}

void RecordReader::nextPiece() {
    if (ahead_) {
        ahead_->exchange(window_);
    } else {
        readPiece(window_);
    }
    fileEnded_ = window_.size() < kLongestRecord + pieceSize_;
    if (fileEnded_) {
        ahead_.reset();
    }
    if (fileEnded_ && readFailed_) {
        fail("Error reading file");
        reason_ = file_.failure().reason;
    }
}

void RecordReader::slide() {
    const size_t left = window_.size() - position_;
    std::array<char, kLongestRecord> rest;
    std::memcpy(rest.data(), window_.data() + position_, left);
    nextPiece();
    position_ = kLongestRecord - left;
    std::memcpy(window_.data() + position_, rest.data(), left);
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
