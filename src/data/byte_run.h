// A run of bytes that grows and shrinks at both ends: the bytes of one area of the memory image.
// Room at least doubles on either side, so that adding a file record by record costs a constant
// time a byte, in whichever direction its addresses run.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <span>

class ByteRun {
public:
    ByteRun() = default;
    explicit ByteRun(std::span<const uint8_t> bytes) { append(bytes); }

    size_t size() const { return size_; }
    uint8_t* data() { return room_.get() + begin_; }
    const uint8_t* data() const { return room_.get() + begin_; }
    std::span<const uint8_t> bytes() const { return {data(), size_}; }

    // The bytes may not be the run's own.
    void append(std::span<const uint8_t> bytes);
    void prepend(std::span<const uint8_t> bytes);
    // At most size() bytes.
    void dropFront(size_t count);
    void dropBack(size_t count);

private:
    struct Free {
        void operator()(uint8_t* room) const { std::free(room); }
    };
    using Room = std::unique_ptr<uint8_t[], Free>;

    // Moves to a room with `front` and `back` free bytes around the held ones.
    void regrow(size_t front, size_t back);
    void extend(size_t back);

    Room room_; // from the C heap, which can extend a large block in place of copying it
    size_t capacity_ = 0;
    size_t begin_ = 0;
    size_t size_ = 0;
};
