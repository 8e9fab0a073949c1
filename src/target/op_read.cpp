// Operations that read the chip: read back, the blank checks by reading, verify.

#include "data/hexdata.h"
#include "device/device.h"
#include "link/chip_record.h"
#include "link/target_state.h"
#include "notice/log.h"
#include "notice/progress.h"
#include "platform/format.h"
#include "target/operation.h"
#include "target/reply.h"

#include <algorithm>
#include <functional>

namespace {

constexpr uint32_t kReadPiece = 256; // bytes

// A failure at the first byte of a reply that is not erased.
Result<> checkBlank(uint32_t address, const std::vector<uint8_t>& data) {
    const auto found =
        std::find_if(data.begin(), data.end(), [](uint8_t byte) { return byte != 0xFF; });
    if (found == data.end()) {
        return {};
    }
    return Failure{TERR_NOT_BLANK, address + static_cast<uint32_t>(found - data.begin()), *found};
}

using TakeReply = std::function<Result<>(const Reply&)>;

// Reads the range piece by piece, behind `done` bytes of others; `take` is given every reply.
Result<> readBehind(uint64_t done, const AddressRange& range, const TakeReply& take) {
    const uint64_t last = range.end - 1;
    for (uint64_t address = range.start; address < range.end;) {
        if (Result<> on = goesOn(); !on) {
            return on;
        }
        setProgress(done + (address - range.start), address);
        const uint64_t count = address + kReadPiece < last ? kReadPiece : range.end - address;
        const auto from = static_cast<uint32_t>(address);
        const Result<Reply> reply =
            readSome(kRead, from, mappedRun(from, static_cast<uint32_t>(count)));
        if (!reply) {
            return reply.error();
        }
        if (Result<> taken = take(*reply); !taken) {
            return taken;
        }
        address += reply->data.size();
    }
    return {};
}

Result<> readRange(const AddressRange& range, const TakeReply& take) {
    if (range.empty()) {
        return Failure{.reason =
                           formatText("The range %X - %X is empty", range.start, range.last())};
    }
    setProgressRange(range.size() - 1);
    return readBehind(0, range, take);
}

void appendReply(ImageCopy& copy, const Reply& reply) {
    if (!copy.areas.empty() && copy.areas.back().end == reply.address) {
        copy.areas.back().end += reply.data.size();
    } else {
        copy.areas.push_back(AddressRange::of(reply.address, reply.data.size()));
    }
    copy.bytes.insert(copy.bytes.end(), reply.data.begin(), reply.data.end());
}

// What a chip holds from one address on.
struct ReadPiece {
    uint32_t address = 0;
    std::vector<uint8_t> data;
};

Result<> blankReadBlock(const AddressRange& block) {
    for (uint64_t address = block.start; address < block.end;) {
        if (Result<> on = goesOn(); !on) {
            return on;
        }
        const auto from = static_cast<uint32_t>(address);
        const auto rest =
            static_cast<uint32_t>(std::min<uint64_t>(kReadPiece, block.end - address));
        const Result<Reply> reply = readTarget(kRead, from, mappedRun(from, rest));
        if (!reply) {
            return reply.error();
        }
        if (Result<> blank = checkBlank(from, reply->data); !blank) {
            return blank;
        }
        address += reply->data.size();
    }
    return {};
}

// Notes what of the bytes from an address on is equal and what is not.
void recordComparison(uint32_t address, const std::vector<uint8_t>& expected,
                      const std::vector<uint8_t>& data) {
    for (size_t at = 0; at < data.size();) {
        const bool equal = expected[at] == data[at];
        size_t end = at;
        while (end < data.size() && (expected[end] == data[end]) == equal) {
            ++end;
        }
        CHIPRECORD_Note(AddressRange::of(address + static_cast<uint32_t>(at), end - at),
                        equal ? ChipMark::verified : ChipMark::differs);
        at = end;
    }
}

// A failure at the first byte that differs from the image.
Result<> compareWithImage(uint32_t address, const std::vector<uint8_t>& data) {
    std::vector<uint8_t> expected(data.size());
    HEXDATA_Copy(address, expected, {});
    recordComparison(address, expected, data);
    const auto [image, target] = std::mismatch(expected.begin(), expected.end(), data.begin());
    if (image == expected.end()) {
        return {};
    }
    size_t differing = 0;
    for (size_t i = 0; i < data.size(); ++i) {
        differing += data[i] != expected[i] ? 1 : 0;
    }
    const Failure failure{TERR_COMPARE,
                          address + static_cast<uint32_t>(image - expected.begin()),
                          *target,
                          {},
                          formatText("expected %02X, found %02X; %zu of %zu bytes in this "
                                     "answer differ",
                                     *image, *target, differing, data.size()),
                          {Cause::contentsDiffer,
                           blockTextAt(address + static_cast<uint32_t>(image - expected.begin()))}};
    LOG_Add(formatText("Verify failed at %06X", failure.address));
    return failure;
}

Result<> verifyPiece(const AddressRange& piece) {
    const Result<Reply> reply =
        readTarget(kReadToVerify, piece.start, static_cast<uint32_t>(piece.size()));
    return reply ? compareWithImage(piece.start, reply->data) : reply.error();
}

} // namespace

Result<> opReadBack(const Operation& operation) {
    std::vector<ReadPiece> pieces;
    Result<> read = readRange(operation.range, [&pieces](const Reply& reply) {
        pieces.push_back({reply.address, reply.data});
        return Result<>();
    });
    if (!read) {
        return read; // what is loaded stays
    }
    HEXDATA_Clear();
    HEXDATA_ClearAddError();
    for (const ReadPiece& piece : pieces) {
        if (const char* error = HEXDATA_AddData(piece.address, piece.data)) {
            return Failure{.reason = error};
        }
    }
    return {};
}

Result<> opBlankRead(const Operation& operation) {
    return readRange(operation.range, [](const Reply& reply) {
        Result<> blank = checkBlank(reply.address, reply.data);
        if (blank) {
            CHIPRECORD_Note(AddressRange::of(reply.address, reply.data.size()), ChipMark::erased);
        }
        return blank;
    });
}

Result<> opBlankReadBlocks(const Operation& operation) {
    if (Result<> fit = checkBlocks(operation.blocks); !fit) {
        return fit;
    }
    setProgressRange(DEVICE_Blocks().size());
    for (const DeviceBlock& block : operation.blocks) {
        setBlockProgress(block);
        if (Result<> blank = blankReadBlock(block.range); !blank) {
            return blank;
        }
        CHIPRECORD_Note(block.range, ChipMark::erased);
    }
    return {};
}

Result<> opVerify(const Operation& operation) {
    const uint32_t packet = TARGET_State().PacketSize;
    if (packet == 0) {
        return Failure{.reason = "A packet size of 0 bytes is not supported"};
    }
    return forEachPiece(operation.range, std::min(packet, kReadPiece), verifyPiece);
}

Result<> opCompare(const Operation& operation) {
    ImageCopy& copy = *operation.into;
    uint64_t total = 0;
    for (const AddressRange& range : copy.ranges) {
        total += range.size();
    }
    setProgressRange(total);
    uint64_t done = 0;
    for (const AddressRange& range : copy.ranges) {
        Result<> read = readBehind(done, range, [&copy](const Reply& reply) {
            std::vector<uint8_t> expected(reply.data.size());
            HEXDATA_Copy(reply.address, expected, {});
            recordComparison(reply.address, expected, reply.data);
            appendReply(copy, reply);
            return Result<>();
        });
        if (!read) {
            return read;
        }
        done += range.size();
    }
    return {};
}
