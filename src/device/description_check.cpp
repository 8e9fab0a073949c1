#include "device/description_check.h"

#include "data/address_range.h"
#include "platform/format.h"

#include <algorithm>
#include <bit>

namespace {

constexpr uint32_t kLargestPage = 1024; // bytes, what the loader's frames have room for

using Faults = std::vector<DescriptionFault>;

void checkPage(const DeviceRecord& record, Faults& faults) {
    const uint32_t page = record.FLASHPageLen;
    if (page == 0) {
        return;
    }
    if (!std::has_single_bit(page) || page > kLargestPage) {
        faults.push_back({"FLASHPageLen", formatText("a page of %u bytes; a power of two up to %u "
                                                     "would be right",
                                                     page, kLargestPage)});
        return;
    }
    for (const FlashBlock& block : record.aBlock) {
        if (block.Start % page != 0 || block.Len % page != 0) {
            faults.push_back(
                {"Bank", formatText("the block at %X, %X bytes, does not begin and end "
                                    "on pages of %X bytes",
                                    block.Start, block.Len, page)});
        }
    }
}

// A wait of 0 ms ends before any chip can answer.
void checkTimeouts(const DeviceRecord& record, Faults& faults) {
    const struct {
        bool used;
        uint32_t milliseconds;
        const char* key;
        const char* user;
    } rows[] = {
        {record.SprtEraseChip != 0, record.TimeoutEraseAll, "TimeoutEraseAll", "SprtEraseChip"},
        {record.SprtErase != 0, record.TimeoutEraseBlock, "TimeoutEraseBlock", "SprtErase"},
        {record.SprtProtectBlock != 0, record.TimeoutEraseBlock, "TimeoutEraseBlock",
         "SprtProtectBlock"},
        // What the boot ROM has erased could not be programmed any more.
        {record.SprtEraseChip != 0 && !record.RamcodeFile.empty(), record.TimeoutGetSUM,
         "TimeoutGetSUM", "UARTRamcode"},
    };
    for (const auto& row : rows) {
        if (row.used && row.milliseconds == 0) {
            faults.push_back({row.key, formatText("%s is missing or 0, but %s needs a time in ms",
                                                  row.key, row.user)});
        }
    }
}

void checkGaps(const DeviceRecord& record, Faults& faults) {
    if (record.FLASHIsEE == 0) {
        return;
    }
    for (size_t i = 1; i < record.aBlock.size(); ++i) {
        const uint64_t end = uint64_t{record.aBlock[i - 1].Start} + record.aBlock[i - 1].Len;
        if (record.aBlock[i].Start != end) {
            faults.push_back(
                {"Bank", formatText("a device that is filled as a whole has no gaps; "
                                    "the block at %X would begin at %llX",
                                    record.aBlock[i].Start, static_cast<unsigned long long>(end))});
        }
    }
}

// A block is erased as one stretch of chip addresses: partly in the window, it would be two.
void checkWindow(const DeviceRecord& record, Faults& faults) {
    const AddressRange window = AddressRange::of(record.RelocateTo, record.RelocateLen);
    for (const FlashBlock& block : record.aBlock) {
        const AddressRange range = AddressRange::of(block.Start, block.Len);
        const bool apart = range.end <= window.start || window.end <= range.start;
        if (!window.empty() && !apart && !window.contains(range)) {
            faults.push_back(
                {"Relocate", formatText("the window at %X, %X bytes, holds a part of "
                                        "the block at %X; whole blocks would be right",
                                        window.start, record.RelocateLen, block.Start)});
        }
    }
}

} // namespace

std::vector<DescriptionFault> checkDescription(const DeviceRecord& record) {
    Faults faults;
    checkPage(record, faults);
    checkTimeouts(record, faults);
    checkGaps(record, faults);
    checkWindow(record, faults);
    return faults;
}
