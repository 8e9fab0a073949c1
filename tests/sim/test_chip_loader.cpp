#include "sim/chip_bench.h"

namespace {

struct FrameCase {
    const char* name;
    const char* device;
    std::string before; // flash contents from its first byte on
    std::string payload;
    std::string answer; // payload
    std::string violations;
};

const std::string kPage = "AA" + repeat("FF", 127);

std::vector<FrameCase> frameCases() {
    return {
        {"erase of half a block", "VT-B128", "", "01 00000000 00400000", "F1",
         "erase of 0, 4000 bytes, which is no block that the loader erases\n"},
        {"erase without the command", "VT-BE32", "", "01 00000000 00400000", "F1",
         "erase of 0, 4000 bytes, which is no block that the loader erases\n"},
        {"program across a page", "VT-B128", "", "02 40000000 8000" + kPage, "F1",
         "program of 40, 80 bytes, which is not a page\n"},
        {"program part of a page", "VT-B128", "", "02 00000000 0100 AA", "F1",
         "program of 0, 1 bytes, which is not a page\n"},
        {"program outside the flash", "VT-B128", "", "02 00000200 8000" + kPage, "F1",
         "program of 20000, 80 bytes, outside the flash\n"},
        {"program with another length", "VT-B128", "", "02 00000000 7F00" + kPage, "F1",
         "program frame with 128 data bytes that says 127\n"},
        {"program what is not erased", "VT-B128", "0F", "02 00000000 8000" + kPage,
         "F3 02 00000000 0A", "program of 0, which is not erased\n"},
        {"fill up what is not erased", "VT-B128", "0F", "02 00000000 8000" + repeat("FF", 128),
         "02", ""},
        {"overwrite EE flash", "VT-BE32", "0F", "02 00000000 8000" + kPage, "02", ""},
        {"program half a word", "VT-B64S", "", "02 02800000 0400 01020304", "F1",
         "program of 8002, 4 bytes, not in whole words\n"},
        {"program more than a packet", "VT-B64S", "", "02 00800000 8400" + repeat("00", 132), "F1",
         "program of 84 bytes with a packet size of 80\n"},
        {"program an image address", "VT-B32R", "", "02 00000008 0400 01020304", "F1",
         "program of 8000000, 4 bytes, outside the flash\n"},
        {"read behind the last block's end", "VT-B128", "", "03 FEFF0100 0400",
         "03 FEFF0100 0400 FFFFFFFF", ""},
        {"read far outside", "VT-B128", "", "03 00000300 0100", "03 00000300 0100 FF",
         "read of 30000, 1 bytes, outside the flash\n"},
        {"read too much", "VT-B128", "", "03 00000000 E803", "F1", "read of 1000 bytes\n"},
        // 0xFFFF over the byte 01: table[FF] is 1EF0; (FF00 ^ 1EF0) ^ 01 is E1F1.
        {"CRC", "VT-B128", "01", "04 00000000 00000000 01", "04 F1E1", ""},
        {"CRC continued before it began", "VT-B128", "", "04 00000000 00000000 00", "F1",
         "checksum of 0, 1 bytes, flag 0\n"},
        {"CRC without the command", "VT-B64S", "", "04 00800000 00000000 01", "F1",
         "checksum of 8000, 1 bytes, flag 1\n"},
        {"blank check finds", "VT-B128", "FFFF7F", "05 00000000 00800000", "F3 04 02000000 7F", ""},
        {"protect without the command", "VT-B128", "", "06 00000000 00800000", "F1",
         "protect of 0, 8000 bytes, which is no block that the loader protects\n"},
        {"unknown command", "VT-B128", "", "08", "F1", "loader command 08 with 1 bytes\n"},
        {"command with a byte too many", "VT-B128", "", "0000", "F1",
         "loader command 00 with 2 bytes\n"},
    };
}

} // namespace

TEST(ChipLoader, Frames) {
    for (const FrameCase& test : frameCases()) {
        SCOPED_TRACE(test.name);
        Bench bench(test.device);
        bench.startLoader();
        ASSERT_EQ(CHIP_GetMode(*bench.chip), ChipMode::loader) << bench.violations();
        EXPECT_TRUE(
            CHIP_PutFlash(*bench.chip, CHIP_FlashStart(*bench.chip), bytesOfHex(test.before)));
        EXPECT_EQ(bench.exchange(frame(test.payload)), frame(test.answer));
        EXPECT_EQ(bench.violations(), test.violations);
    }
}

TEST(ChipLoader, BadFramesAreRefused) {
    const std::string nak = frame("F1");
    const std::tuple<const char*, std::string, const char*> cases[] = {
        {"EBED01000002EC", nak, "frame with a wrong checksum or end\n"},
        {"EBED01000001ED", nak, "frame with a wrong checksum or end\n"},
        {"EBED000000EC", nak, "frame without a command\n"},
        {"EBEC", "", "byte EC as second byte of a frame\n"},
        {"EBED0109", "", "frame of 2305 bytes\n"},
        {"5A", "", "byte 5A where a frame begins\n"},
    };
    for (const auto& [bytes, answer, violation] : cases) {
        Bench bench("VT-B128");
        bench.startLoader();
        EXPECT_EQ(bench.exchange(bytes), answer) << bytes;
        EXPECT_EQ(bench.violations(), violation);
        EXPECT_EQ(bench.exchange(frame("00")), frame("00 56543130 8000"));
    }
}

TEST(ChipLoader, ProtectedBlocksStayAsTheyAre) {
    Bench bench("VT-B256");
    bench.startLoader();
    EXPECT_EQ(bench.exchange(frame("06 00000000 00400000")), frame("06"));
    EXPECT_TRUE(CHIP_IsBlockProtected(*bench.chip, 0));
    EXPECT_FALSE(CHIP_IsBlockProtected(*bench.chip, 1));
    EXPECT_EQ(bench.exchange(frame("01 00000000 00400000")), frame("F3 01 00000000 FF"));
    EXPECT_EQ(bench.exchange(frame("02 00000000 0001" + repeat("00", 256))),
              frame("F3 02 00000000 FF"));
    EXPECT_EQ(bench.exchange(frame("02 00400000 0001" + repeat("00", 256))), frame("02"));
    EXPECT_EQ(bench.violations(), "");
}
