// The text of a program file as its record readers see it: a window that slides over the file, the
// line number, the checksum of the record being read and the first error. Every read after an error
// yields 0 and moves nothing, so that a record's reads may follow one another. The next piece of a
// large file is read meanwhile.
#pragma once

#include "platform/files.h"
#include "platform/second_buffer.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

// The longest record that is looked at in one piece: start, 256 bytes in hex digits and a line end.
inline constexpr size_t kLongestRecord = 1000; // characters
inline constexpr char kCtrlZ = 0x1A;
inline constexpr char kUnexpectedCharacter[] = "Unexpected character";
inline constexpr char kChecksumError[] = "CheckSum error !";
inline constexpr char kRecordTooShort[] = "Record too short !";

class RecordReader {
public:
    explicit RecordReader(FileReader& file); // which nobody else reads meanwhile

    // Sees to it that the whole next record stands in the window.
    void refill() {
        if (window_.size() - position_ < kLongestRecord && !fileEnded_) {
            slide();
        }
    }
    bool atEndOfFile() const { return position_ == window_.size(); }
    // Ctrl-Z, or the end of the file.
    bool atEndOfData() const { return atEndOfFile() || peek() == kCtrlZ; }
    char peek() const { return window_[position_]; } // NUL at the end of the file

    // Steps over `character`, or sets the error.
    void expect(char character);
    char takeType(); // any character but a control character
    void startChecksum() { checksum_ = 0; }
    uint8_t checksum() const { return checksum_; }
    uint8_t takeByte();
    void takeBytes(std::span<uint8_t> bytes);
    // Steps over what ends a line: one or two of CR and LF; the last line may do without.
    void takeLineEnd();

    // Of a format whose files have an end record: whether a record was it. What follows it may be
    // read as well.
    void noteEndRecord(bool isEnd) {
        endRecord_ = isEnd || hasEndRecord() ? End::there : End::lacking;
    }
    bool lacksEndRecord() const { return endRecord_ == End::lacking; }

    // The first error of the file, null while there is none.
    const char* error() const { return error_; }
    // The system's reason where the error is that the file could not be read.
    const std::string& reason() const { return reason_; }
    void fail(const char* error);
    int line() const { return lineEnds_ + 1; }

private:
    enum class End { unknown, lacking, there };
    bool hasEndRecord() const { return endRecord_ == End::there; }

    void readPiece(std::string& piece);
    void nextPiece();
    void slide();

    FileReader& file_;
    const size_t pieceSize_;
    bool readAll_ = false; // the end has come, or a failure
    bool readFailed_ = false;
    std::string window_; // room for what is left of the piece before, then the piece, then a NUL
    size_t position_;
    bool fileEnded_ = false;
    int lineEnds_ = 0;
    uint8_t checksum_ = 0;
    const char* error_ = nullptr;
    std::string reason_;
    End endRecord_ = End::unknown;
    std::optional<SecondBuffer> ahead_; // has what readPiece() uses until it is gone
};
