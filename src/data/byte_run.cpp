#include "data/byte_run.h"

#include "platform/memory.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

namespace {

// From here on a run gets eight times its size at once: what is not touched takes no memory, and
// large pages come only to a block that has its place from the beginning, one of theirs.
constexpr size_t kLargeRun = 1 << 20; // bytes
constexpr size_t kLargeGrowth = 8;
constexpr size_t kLargePage = 2 << 20;

uint8_t* allocate(size_t& capacity) {
    void* room = nullptr;
    if (capacity > kLargeRun) {
        capacity = (capacity + kLargePage - 1) / kLargePage * kLargePage;
        room = std::aligned_alloc(kLargePage, capacity);
    } else {
        room = std::malloc(capacity);
    }
    if (room == nullptr) {
        throw std::bad_alloc();
    }
    if (capacity > kLargeRun) {
        MEMORY_PreferLargePages(room, capacity);
    }
    return static_cast<uint8_t*>(room);
}

} // namespace

void ByteRun::append(std::span<const uint8_t> bytes) {
    if (bytes.empty()) {
        return;
    }
    if (capacity_ - begin_ - size_ < bytes.size()) {
        extend(std::max(bytes.size(), size_));
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
    size_t capacity = front + size_ + back;
    Room room(allocate(capacity));
    if (size_ > 0) {
        std::memcpy(room.get() + front, data(), size_);
    }
    room_ = std::move(room);
    capacity_ = capacity;
    begin_ = front;
}

void ByteRun::extend(size_t back) {
    if (begin_ > size_) { // more room in front than is worth keeping
        regrow(size_, back);
        return;
    }
    if (size_ >= kLargeRun) {
        regrow(begin_, std::max(back, (kLargeGrowth - 1) * size_));
        return;
    }
    const size_t capacity = begin_ + size_ + back;
    auto* const room = static_cast<uint8_t*>(std::realloc(room_.get(), capacity));
    if (room == nullptr) {
        throw std::bad_alloc();
    }
    static_cast<void>(room_.release()); // the old block is gone, or the new one is the same
    room_.reset(room);
    capacity_ = capacity;
}
