// The text of a program file as it is written: records of hex digits, collected in a large buffer
// on their way to where they go. After a failed write nothing more is written.
#pragma once

#include "platform/files.h"

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>

inline constexpr uint32_t kRecordData = 32; // data bytes of a record at most

class RecordWriter {
public:
    // `write` takes the text, piece by piece, and may leave anything in its place.
    explicit RecordWriter(std::function<FileResult(std::string&)> write);

    // One line: `start`, then the head, the data and the checksum in hex digits. The checksum is
    // the complement of the sum of head and data: the two's when `negated`, else the ones'.
    void record(std::string_view start, std::span<const uint8_t> head,
                std::span<const uint8_t> data, bool negated);
    // Hands over the rest; the first failure on the way.
    [[nodiscard]] FileResult finish();

private:
    void flush();

    std::function<FileResult(std::string&)> write_;
    std::string buffer_;
    size_t used_ = 0;
    FileResult result_;
};
