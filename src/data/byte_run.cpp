#include "data/byte_run.h"

#include <algorithm>
#include <cstring>
#include <utility>

void ByteRun::append(std::span<const uint8_t> bytes) {
    if (bytes.empty()) {
        return;
    }
    if (capacity_ - begin_ - size_ < bytes.size()) {
        regrow(std::min(begin_, size_), std::max(bytes.size(), size_));
    }
    std::memcpy(data() + size_, bytes.data(), bytes.size());
    size_ += bytes.size();
}

void ByteRun::prepend(std::span<const uint8_t> bytes) {
    if (bytes.empty()) {
        return;
    }
    if (begin_ < bytes.size()) {
        const size_t back = capacity_ - begin_ - size_;
        regrow(std::max(bytes.size(), size_), std::min(back, size_));
    }
    begin_ -= bytes.size();
    size_ += bytes.size();
    std::memcpy(data(), bytes.data(), bytes.size());
}

void ByteRun::dropFront(size_t count) {
    begin_ += count;
    size_ -= count;
}

void ByteRun::dropBack(size_t count) {
    size_ -= count;
}

void ByteRun::regrow(size_t front, size_t back) {
    const size_t capacity = front + size_ + back;
    std::unique_ptr<uint8_t[]> room = std::make_unique_for_overwrite<uint8_t[]>(capacity);
    if (size_ > 0) {
        std::memcpy(room.get() + front, data(), size_);
    }
    room_ = std::move(room);
    capacity_ = capacity;
    begin_ = front;
}
