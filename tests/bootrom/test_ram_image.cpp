// Taking RAM images of both formats apart.

#include "bootrom/ram_image.h"
#include "support/script_world.h"

TEST(RamImageA, MustLieInTheRam) {
    const std::tuple<std::string, bool, std::string> cases[] = {
        {":10020000", true, ""}, // the header of a line is all that is looked at
        {":01020000AAxx\r\n\r\n:0105FF00AA\r\n:00000001FF", true, ""},
        {":01020000AA\n:02FFFF04AAAA\n", true, ""}, // other types are passed over
        {":0101FF00AA", false, ""},
        {":02020000AAAA\n:0205FF00AAAA", false, ""},
        {":01060000AA", false, ""},
        {":00000001FF\n", false, ""},
        {"", false, ""},
        {":0G020000AA", false, "Error reading RAM-image file"},
        {":-1020000AA", false, "Error reading RAM-image file"},
        {std::string(":01020000AA\n\0:01FF0000AA", 24), true, ""}, // a NUL ends the text
    };
    ScriptWorld world("Bank = 8000,8000\nRam = 200,400", {});
    for (const auto& [text, fits, error] : cases) {
        EXPECT_EQ(_RamImageFits(text), fits) << text;
        EXPECT_EQ(world.errors(), error) << text;
    }
}

TEST(RamImageA, GivesItsRecordsUpToTheFirstFault) {
    const std::tuple<std::string, size_t, bool> cases[] = {
        {"junk:0102000055A8\r\n:00000001FF", 2, false},
        {":0102000055A8:00000001FF", 2, false},
        {":0102000055A8\n:010200G055A8\n:00000001FF", 1, true},
        {":0102000055A8\n:04020100\n", 1, true}, // cut off
        {":0102000055", 0, true},
        {"nothing", 0, false},
    };
    for (const auto& [text, records, malformed] : cases) {
        const RamImageA image = parseRamImageA(text);
        EXPECT_EQ(image.records.size(), records) << text;
        EXPECT_EQ(image.malformed, malformed) << text;
    }
    EXPECT_EQ(parseRamImageA(std::get<0>(cases[0])).records[0].bytes, bytesOfHex("3A0102000055A8"));
}

TEST(RamImageB, IsTakenWholeOrNotAtAll) {
    const std::string tooFar = "S30600000000AAFF\nS306000100FFAAFF";
    const std::tuple<std::string, std::string, uint32_t, uint32_t> cases[] = {
        {"S0030000FC\r\nS30720000000AABB00\nS30620000010CC00\nS70500000000FA", "", 0x20000000,
         0x11},
        {"S306FFFFFFFF0000", "", 0xFFFFFFFF, 1},
        {"S30600000010AAFF\nS3060000000FAAFF",
         "RAM-Image records overlap or are not in ascending order", 0, 0},
        {"S30700000010AABBFF\nS30600000011AAFF",
         "RAM-Image records overlap or are not in ascending order", 0, 0},
        {"S0030000FC", "RAM-Image contains no data records", 0, 0},
        {tooFar, "RAM-Image is larger than 65535 bytes", 0, 0},
        {"S30G00000010AAFF", "Error parsing RAM-image", 0, 0},
        {"S304000000", "Error parsing RAM-image", 0, 0},
        {"S30800000010AA", "Error parsing RAM-image", 0, 0},
        {"S30600000010A ", "Error parsing RAM-image", 0, 0},
    };
    for (const auto& [text, error, start, size] : cases) {
        RamImageB image;
        EXPECT_EQ(parseRamImageB(text, image), error) << text;
        if (error.empty()) {
            EXPECT_EQ(image.start, start) << text;
            EXPECT_EQ(image.size, size) << text;
        }
    }
}

TEST(RamImage, FileThatCannotBeReadIsReported) {
    ScriptWorld world("Bank = 8000,8000", {});
    std::string text;
    const std::string folder = world.folder().string();
    EXPECT_FALSE(_LoadRamImage(folder + "/missing", text));
    EXPECT_EQ(world.errors(), "File not found (" + folder + "/missing: No such file or directory)");
    EXPECT_FALSE(_LoadRamImage(folder, text));
    EXPECT_EQ(world.errors(), "Invalid file handle (" + folder + ": Is a directory)");
    EXPECT_TRUE(_LoadRamImage(world.addFile("image", "abc"), text));
    EXPECT_EQ(text, "abc");
}
