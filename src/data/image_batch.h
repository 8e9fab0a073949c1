// Records on their way into the memory image. Those that continue each other where the image holds
// nothing are collected and added in large pieces, as adding each by itself costs more than reading
// it; every other record is added at once, so that what there is to ask or to refuse comes with the
// record that causes it. Nothing else may add to the image meanwhile.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

class ImageBatch {
public:
    // As HEXDATA_AddData: null, or why the bytes were refused.
    [[nodiscard]] const char* add(uint32_t address, std::span<const uint8_t> bytes);
    // Adds what is collected; the image holds all of it only after this.
    void flush();

private:
    bool mayCollect(size_t count);

    std::vector<uint8_t> bytes_; // they lie before next_
    uint64_t next_ = 0;          // behind the last record
    uint64_t room_ = 0;          // addresses from next_ on that are known to be free
};
