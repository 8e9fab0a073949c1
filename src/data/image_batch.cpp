#include "data/image_batch.h"

#include "data/hexdata.h"

namespace {

constexpr size_t kPiece = 65536; // bytes

} // namespace

const char* ImageBatch::add(uint32_t address, std::span<const uint8_t> bytes) {
    if (address == next_ && mayCollect(bytes.size())) {
        bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
        room_ -= bytes.size();
        next_ += bytes.size();
        return nullptr;
    }
    flush();
    next_ = address + uint64_t{bytes.size()};
    room_ = 0;
    return HEXDATA_AddData(address, bytes);
}

// What lies behind a record is looked up only when another one continues it.
bool ImageBatch::mayCollect(size_t count) {
    if (bytes_.size() + count > kPiece) {
        flush();
    }
    if (room_ < count) {
        flush();
        room_ = HEXDATA_GetRoom(static_cast<uint32_t>(next_));
    }
    return room_ >= count;
}

void ImageBatch::flush() {
    static_cast<void>(HEXDATA_AddData(static_cast<uint32_t>(next_ - bytes_.size()), bytes_));
    bytes_.clear();
}
