#include "data/record_reader.h"

#include "persist/chars.h"

#include <array>
#include <cstring>

namespace {

constexpr size_t kWindow = 256 * 1024; // characters
constexpr char kCtrlZ = 0x1A;
constexpr char kExpectedHex[] = "Expected Hex character : 0..9, A..F";

// The value of a hex digit by its character; any other character has bits above a digit's.
constexpr uint8_t kNoDigit = 0xF0;
constexpr std::array<uint8_t, 256> kDigits = [] {
    std::array<uint8_t, 256> digits{};
    for (size_t c = 0; c < digits.size(); ++c) {
        const int digit = hexDigitValue(static_cast<char>(c));
        digits[c] = digit < 0 ? kNoDigit : static_cast<uint8_t>(digit);
    }
    return digits;
}();

uint8_t digitOf(char c) {
    return kDigits[static_cast<uint8_t>(c)];
}

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

uint16_t RecordReader::takeWord() {
    const uint8_t high = takeByte();
    return static_cast<uint16_t>(high << 8 | takeByte());
}

// A record is never longer than what refill() provides, or the NUL behind the file's last character
// stands among the digits and is none: they need not be counted first.
void RecordReader::takeBytes(std::span<uint8_t> bytes) {
    if (error_ != nullptr) {
        return;
    }
    const char* text = window_.data() + position_;
    uint8_t sum = checksum_;
    unsigned seen = 0;
    for (uint8_t& byte : bytes) {
        const uint8_t high = digitOf(text[0]);
        const uint8_t low = digitOf(text[1]);
        text += 2;
        seen |= high | low;
        byte = static_cast<uint8_t>(high << 4 | low);
        sum = static_cast<uint8_t>(sum + byte);
    }
    if (seen > 0x0F) {
        fail(kExpectedHex);
        return;
    }
    checksum_ = sum;
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
