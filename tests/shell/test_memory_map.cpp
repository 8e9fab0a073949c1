// The memory map: what it says of blocks, image and chip, and how it comes down to pixels.
#include "link/chip_record.h"
#include "platform/format.h"
#include "shell/memory_map.h"
#include "shell_world.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace {

std::string rowsText() {
    std::string text;
    for (const MapRow& row : MEMORYMAP_Rows()) {
        text +=
            formatText("%d%s %X-%X [%s] [%s]\n", row.block, row.selected ? "+" : "",
                       row.range.start, row.range.last(), row.contents.c_str(), row.result.c_str());
    }
    return text;
}

// One character a pixel, the first of these that holds.
std::string pixelText(int pixels) {
    constexpr std::pair<MapFacts, char> kLetters[] = {
        {kMapProtected, 'P'}, {kMapDiffers, 'D'},  {kMapUnknown, 'U'}, {kMapVerified, 'V'},
        {kMapWritten, 'W'},   {kMapErased, 'E'},   {kMapVectors, 'v'}, {kMapPassword, 'p'},
        {kMapData, 'd'},      {kMapSelected, '+'}, {~0U, '-'}};
    std::string text;
    for (const MapFacts facts : MEMORYMAP_Pixels(MapScale(pixels))) {
        const auto* found = std::ranges::find_if(
            kLetters, [facts](const auto& letter) { return (facts & letter.first) != 0; });
        text += found->second;
    }
    return text;
}

void selectBlocks(const std::vector<FlashBlock>& blocks) {
    DeviceRecord device;
    device.Device = "VT-2";
    device.aBlock = blocks;
    _AddDevice(device);
    DEVPROPS_SetDevice(DEVICE_GetNumDevices() - 1);
    DEVPROPS_SelectAllBlocks();
}

void note(uint32_t start, uint32_t last, ChipMark mark) {
    CHIPRECORD_Note(AddressRange::upTo(start, last), mark);
}

} // namespace

TEST(MemoryMap, SaysWhatIsWhere) {
    const std::string device = "Device = \"VT-1\"\nManufacturer = \"Acme\"\n";
    const struct {
        const char* what;
        std::string device;
        void (*prepare)();
        const char* rows;
        const char* pixels; // sixteen
    } cases[] = {
        {"nothing", device + "Bank = 0, 100, 100, 300\n", [] {},
         "0+ 0-FF [] []\n1+ 100-3FF [] []\n", "++++++++++++++++"},
        {"a block that is not selected, data with a gap, data outside, the space between left out",
         device + "Bank = 1000, 100, 8000, 100\n",
         [] {
             DEVPROPS_SelectBlock(1, false);
             ShellWorld::load(0xFF0, std::vector<uint8_t>(0x20));
             ShellWorld::load(0x10F0, std::vector<uint8_t>(0x18));
             ShellWorld::load(0x9000, {1});
         },
         "0+ 1000-10FF [32 bytes of data] []\n1 8000-80FF [] []\n"
         "-1 FF0-9000 [25 bytes of data] []\n",
         "d++++++d--------"},
        {"password and vectors, and a byte that takes a whole pixel",
         device + "Bank = 0, 1000\naIDAdr = FFE, FFF\nIDLenMin = 2\nIDLenMax = 2\n"
                  "IVector = 0, \"Reset\", 32, 0\n",
         [] { note(0x801, 0x801, ChipMark::differs); }, "0+ 0-FFF [password, vectors] [differs]\n",
         "v+++++++D++++++p"},
        {"a password area",
         device + "Bank = 0, 1000\nPWArea = F00,100\nIDLenMin = 8\nIDLenMax = 31\n", [] {},
         "0+ 0-FFF [password] []\n", "+++++++++++++++p"},
        {"the last that was done holds, and only where it was done",
         device + "Bank = 0, 100, 100, 100\n",
         [] {
             note(0, 0x1FF, ChipMark::erased);
             note(0x20, 0x9F, ChipMark::written);
             note(0x40, 0x5F, ChipMark::verified);
             note(0x100, 0x11F, ChipMark::unknown);
             CHIPRECORD_NoteProtected(AddressRange::upTo(0x180, 0x1FF));
             note(0x1C0, 0x1DF, ChipMark::erased); // it would have been refused
         },
         "0+ 0-FF [] [erased, written, verified]\n1+ 100-1FF [] [unfinished, erased, protected]\n",
         "EWVWWEEEUEEEPPEP"},
    };
    for (const auto& one : cases) {
        SCOPED_TRACE(one.what);
        ShellWorld world(one.device);
        one.prepare();
        EXPECT_EQ(rowsText(), one.rows);
        EXPECT_EQ(pixelText(16), one.pixels);
        const std::string told = MEMORYMAP_Describe(MapScale(16), 0);
        EXPECT_TRUE(told.starts_with(formatText("%X - ", MapScale(16).rangeAt(0).start))) << told;
        CHIPRECORD_SetChip(one.what); // another one than before
        EXPECT_TRUE(CHIPRECORD_Get().empty());
    }
}

TEST(MemoryMap, EveryPixelStandsForItsOwnAddresses) {
    using Blocks = std::vector<FlashBlock>;
    for (const Blocks& blocks :
         {Blocks{{0, 0x1000}}, Blocks{{0, 3}}, Blocks{{0, 0x100}, {0x100, 0x1300}, {0x8000, 0x57}},
          Blocks{{0, 0x80000000}, {0x80000000, 0x80000000}}}) {
        SCOPED_TRACE(blocks.size());
        ShellWorld world;
        selectBlocks(blocks);
        const MapScale scale(701);
        uint64_t left = 0; // addresses without a pixel
        for (const FlashBlock& block : blocks) {
            left += block.Len;
        }
        const uint64_t pixelBytes = left / static_cast<uint64_t>(scale.pixels()) + 1;
        uint64_t next = 0;
        for (int pixel = 0; pixel < scale.pixels(); ++pixel) {
            const AddressRange range = scale.rangeAt(pixel);
            const MapScale::Span span = scale.spanOf(range);
            EXPECT_TRUE(span.first == pixel && span.end == pixel + 1 && range.start >= next);
            next = range.end;
            left -= range.size();
        }
        // The pixel that reaches into the next part stands for the end of the one before.
        EXPECT_LT(left, (scale.parts().size() - 1) * pixelBytes + 1);
    }
}

TEST(MemoryMap, TakesManyAreasInTheLargestFlash) {
    ShellWorld world;
    selectBlocks({{0, 0x80000000}, {0x80000000, 0x80000000}});
    constexpr uint32_t kAreas = 100'000;
    for (uint32_t area = 0; area < kAreas; ++area) {
        HEXDATA_AddData(area * 0xA000, std::vector<uint8_t>(2));
    }
    EXPECT_EQ(rowsText(), "0+ 0-7FFFFFFF [104858 bytes of data] []\n"
                          "1+ 80000000-FFFFFFFF [95142 bytes of data] []\n");
    for (const MapFacts facts : MEMORYMAP_Pixels(MapScale(400))) {
        EXPECT_NE(facts & kMapGap, 0U);
    }
    EXPECT_EQ(pixelText(400).find_first_not_of('d'), 382U) << "nothing behind 0xF4236001";
}
