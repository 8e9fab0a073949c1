#include "data/area_map.h"
#include "data/checksum.h"
#include "data/hexdata.h"
#include "data/image_copy.h"
#include "data/sha256.h"
#include "support/reports.h"
#include "support/seed.h"

#include <array>
#include <gtest/gtest.h>
#include <map>
#include <set>

namespace {

using Model = std::map<uint32_t, uint8_t>;
using Areas = std::vector<AddressRange>;

// The bytes that a walk over the image finds, in runs that neither overlap nor touch.
Model bytesOfImage() {
    Model model;
    uint32_t runs = 0;
    uint32_t address = 0;
    const uint8_t* data = nullptr;
    while (const uint32_t count = HEXDATA_GetData(address, data)) {
        EXPECT_TRUE(address == 0 || model.empty() || model.rbegin()->first < address - 1);
        ++runs;
        for (uint32_t i = 0; i < count; ++i) {
            model[address + i] = data[i];
        }
        address += count;
        if (address == 0) {
            break; // the area ended with the address space
        }
    }
    EXPECT_EQ(HEXDATA_GetNumAreas(), runs);
    EXPECT_EQ(HEXDATA_GetNumBytes(), model.size());
    EXPECT_EQ(HEXDATA_IsEmpty(), model.empty());
    EXPECT_EQ(HEXDATA_GetFirstAddr(), model.empty() ? 0 : model.begin()->first);
    EXPECT_EQ(HEXDATA_GetLastAddr(), model.empty() ? 0 : model.rbegin()->first);
    return model;
}

std::vector<uint8_t> randomBytes(TestRandom& random, size_t count) {
    std::vector<uint8_t> bytes(count);
    for (uint8_t& byte : bytes) {
        byte = static_cast<uint8_t>(random());
    }
    return bytes;
}

class HexData : public testing::Test {
protected:
    HexData() { HEXDATA_Reset(); }

    static void add(uint32_t start, uint32_t last) {
        HEXDATA_AddData(start, std::vector<uint8_t>(last - start + 1, uint8_t(start)));
    }
    Reports reports;
};

} // namespace

TEST_F(HexData, OverlapsAreAskedAboutUntilAgreedTo) {
    add(0x10, 0x2F);
    reports.answer = ANSWER_CANCEL;
    EXPECT_STREQ(HEXDATA_AddData(0x2F, std::vector<uint8_t>{1, 2}), kMultipleDefinitions);
    EXPECT_EQ(HEXDATA_GetAddError(), "Multiple definitions for same address !");
    EXPECT_EQ(HEXDATA_GetAreas(), (Areas{AddressRange::of(0x10, 0x20)}));
    HEXDATA_ClearAddError();
    reports.answer = ANSWER_OK;
    add(0x08, 0x13);
    add(0x2F, 0x3F);
    EXPECT_EQ(HEXDATA_GetAddError(), "");
    EXPECT_EQ(HEXDATA_GetAreas(), (Areas{AddressRange::of(0x08, 0x38)}));
    EXPECT_EQ(bytesOfImage()[0x13], 0x08);
    EXPECT_EQ(bytesOfImage()[0x2F], 0x2F);
    EXPECT_EQ(reports.questions,
              std::vector<std::string>(2, "Overlapping record problem: Areas overlap   ...\n"
                                          "Overwrite existing data and continue ?"));
}

TEST_F(HexData, StaysWithinTheAddressSpace) {
    add(0xFFFFFFF0, 0xFFFFFFFF);
    EXPECT_EQ(HEXDATA_GetLastAddr(), 0xFFFFFFFFu);
    EXPECT_STREQ(HEXDATA_AddData(0xFFFFFFEF, std::vector<uint8_t>(18)), kPastAddressSpace);
    add(0x100, 0x1FF);
    EXPECT_FALSE(HEXDATA_Relocate(1));
    EXPECT_FALSE(HEXDATA_Relocate(-0x101));
    EXPECT_TRUE(HEXDATA_Relocate(-0x100));
    EXPECT_EQ(HEXDATA_GetAreas(),
              (Areas{AddressRange::of(0, 0x100), AddressRange::of(0xFFFFFEF0, 16)}));
    HEXDATA_DeleteRange(0x80, UINT64_MAX);
    EXPECT_FALSE(HEXDATA_Relocate(-0x10)) << "it would tear the area";
    EXPECT_TRUE(HEXDATA_Relocate(-0x80));
    EXPECT_EQ(HEXDATA_GetAreas(), (Areas{AddressRange::of(0xFFFFFF80, 0x80)}))
        << "all of it passed address 0";
    bool restart = true;
    HEXDATA_CalcSum(0xFFFFFFFE, 4, restart, 0x11);
    EXPECT_EQ(HEXDATA_GetChecksum(), 0x22);
}

// Random operations, compared with a plain map of bytes after each of them. Addresses crowd around
// both ends of the address space, so that ranges overlap, touch and join often.
TEST_F(HexData, AgreesWithAMapOfBytes) {
    reports.answer = ANSWER_OK;
    TestRandom random;
    Model model;
    for (int step = 0; step < 6000; ++step) {
        const uint32_t base = random() % 2 == 0 ? 0 : 0xFFFFFE00;
        const uint32_t start = base + random() % 512;
        const auto length = static_cast<uint32_t>(
            std::min<uint64_t>(1 + random() % 24, kAddressSpace - uint64_t{start}));
        if (random() % 5 < 3) {
            const std::vector<uint8_t> bytes = randomBytes(random, length);
            HEXDATA_AddData(start, bytes);
            for (uint32_t i = 0; i < length; ++i) {
                model[start + i] = bytes[i];
            }
        } else {
            HEXDATA_DeleteRange(start, uint64_t{length} * 4);
            const uint64_t end = start + uint64_t{length} * 4;
            model.erase(model.lower_bound(start),
                        end < kAddressSpace ? model.lower_bound(uint32_t(end)) : model.end());
        }
        ASSERT_EQ(bytesOfImage(), model) << "step " << step;
        std::array<uint8_t, 40> copy{};
        std::array<bool, 40> held{};
        HEXDATA_Copy(start, copy, held);
        for (uint64_t i = 0; i < copy.size(); ++i) {
            const auto byte =
                start + i < kAddressSpace ? model.find(uint32_t(start + i)) : model.end();
            ASSERT_EQ(held[i], byte != model.end()) << "step " << step;
            ASSERT_EQ(copy[i], held[i] ? byte->second : 0) << "step " << step;
        }
    }
}

// Copies of random parts, put back after random changes, and the list of what those changed.
TEST_F(HexData, CopiesPutBackWhatTheDifferencesTell) {
    reports.answer = ANSWER_OK;
    TestRandom random;
    const auto change = [&random] {
        const uint32_t start =
            (random() % 2 == 0 ? 0 : 0xFFFFFF00) + static_cast<uint32_t>(random() % 0x100);
        const uint64_t length = std::min<uint64_t>(1 + random() % 24, kAddressSpace - start);
        if (random() % 3 == 0) {
            HEXDATA_DeleteRange(start, length);
        } else {
            HEXDATA_AddData(start, randomBytes(random, static_cast<size_t>(length)));
        }
    };
    for (int round = 0; round < 1500; ++round) {
        const Model before = bytesOfImage();
        const ImageCopy whole = HEXDATA_TakeCopy({IMAGECOPY_Everything()});
        for (uint64_t count = random() % 4; count > 0; --count) {
            change();
        }
        const Model after = bytesOfImage();
        std::set<uint32_t> expected;
        const auto list = [&expected](const Model& left, const Model& right) {
            for (const auto& [address, byte] : left) {
                const auto other = right.find(address);
                if (other == right.end() || other->second != byte) {
                    expected.insert(address);
                }
            }
        };
        list(before, after);
        list(after, before);
        std::set<uint32_t> found;
        for (const AddressRange& range : HEXDATA_Differences(whole, 0)) {
            for (uint64_t at = range.start; at < range.end; ++at) {
                ASSERT_TRUE(found.insert(static_cast<uint32_t>(at)).second);
            }
        }
        ASSERT_EQ(found, expected) << "round " << round;
        ImageCopy part = IMAGECOPY_Reduce(whole, HEXDATA_Differences(whole, round % 40));
        HEXDATA_Exchange(part);
        ASSERT_EQ(bytesOfImage(), before) << "round " << round;
        HEXDATA_Exchange(part);
        ASSERT_EQ(bytesOfImage(), after) << "round " << round;
    }
}

// Every order of additions and deletions costs about the same; a linear walk or a copy of the whole
// area for each record would take minutes here.
TEST_F(HexData, ManyRecordsInAnyOrderAreQuick) {
    constexpr uint32_t kRecords = 200000;
    const std::vector<uint8_t> record(32, 0x5A);
    for (uint32_t i = 0; i < kRecords; ++i) {
        HEXDATA_AddData(32 * (kRecords - 1 - i), record);
    }
    EXPECT_EQ(HEXDATA_GetAreas(), (Areas{AddressRange::of(0, uint64_t{32} * kRecords)}));
    for (uint32_t i = 0; i < kRecords / 2; ++i) {
        HEXDATA_DeleteRange(64 * i + 32, 32);
    }
    EXPECT_EQ(HEXDATA_GetNumAreas(), kRecords / 2);
    reports.answer = ANSWER_OK;
    for (const uint32_t first : {0u, 1u}) {
        for (uint32_t i = first; i < kRecords; i += 2) {
            HEXDATA_AddData(32 * i, record);
        }
    }
    EXPECT_EQ(HEXDATA_GetAreas(), (Areas{AddressRange::of(0, uint64_t{32} * kRecords)}));
}

TEST_F(HexData, ChecksumsCountGapsAsFill) {
    HEXDATA_AddData(0x01, std::vector<uint8_t>{0x12});
    bool restart = true;
    HEXDATA_CalcSum(0, 4, restart, 0xFF);
    EXPECT_EQ(HEXDATA_GetChecksum(), 0x030F);
    HEXDATA_CalcSum(1, 1, restart, 0xFF);
    EXPECT_EQ(HEXDATA_GetChecksum(), 0x0321);
}

TEST(Checksum, Sha256IsThatOfTheStandard) {
    const std::pair<std::string, const char*> cases[] = {
        {"abc", "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"},
        {"abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq", // fills more than one block
         "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1"},
    };
    for (const auto& [text, digest] : cases) {
        Sha256 sum;
        sum.add(text);
        EXPECT_EQ(sum.finish(), digest);
    }
}

// The fast forms against the plain definition: T[crc >> 8] ^ (crc << 8) ^ byte.
TEST(Checksum, FastFormsEqualThePlainOnes) {
    const auto plainStep = [](uint16_t crc, uint8_t byte) {
        uint32_t entry = crc & 0xFF00u;
        for (int bit = 0; bit < 8; ++bit) {
            entry = (entry << 1) ^ ((entry & 0x8000) != 0 ? 0x11021u : 0);
        }
        return static_cast<uint16_t>(entry ^ static_cast<uint32_t>(crc << 8) ^ byte);
    };
    ASSERT_EQ(plainStep(0x0100, 0), 0x1021);
    TestRandom random;
    for (int round = 0; round < 400; ++round) {
        const size_t count = random() % (round % 2 == 0 ? 70 : 2000);
        const std::vector<uint8_t> bytes = randomBytes(random, count);
        const auto start = static_cast<uint16_t>(random());
        const auto fill = static_cast<uint8_t>(random());
        uint16_t crc = start;
        uint16_t fillCrc = start;
        uint16_t sum = start;
        for (const uint8_t byte : bytes) {
            crc = plainStep(crc, byte);
            fillCrc = plainStep(fillCrc, fill);
            sum = static_cast<uint16_t>(sum + byte);
        }
        ASSERT_EQ(CHECKSUM_Crc(start, bytes), crc) << count;
        ASSERT_EQ(CHECKSUM_Sum(start, bytes), sum) << count;
        ASSERT_EQ(CHECKSUM_CrcOfFill(start, fill, count), fillCrc) << count;
        ASSERT_EQ(CHECKSUM_SumOfFill(start, fill, count), uint16_t(start + fill * count));
    }
}
