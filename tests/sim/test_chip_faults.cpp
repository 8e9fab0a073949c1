#include "sim/chip_bench.h"

#include <algorithm>

namespace {

ChipFault parsed(const std::string& text) {
    ChipFault fault;
    std::string error;
    EXPECT_TRUE(CHIP_ParseFault(text, fault, error)) << error;
    return fault;
}

} // namespace

TEST(ChipFaults, RepliesAreSpoilt) {
    const std::string identify = frame("00 56543130 8000");
    // By a loader that runs, else by the boot ROM after a reset.
    const std::tuple<const char*, bool, std::string, std::string> cases[] = {
        {"no-reply@identify#2", true, frame("00"), identify},
        {"short-reply@identify,value=3", true, frame("00"), identify.substr(0, 6)},
        {"long-reply@identify,value=2", true, frame("00"), frame("00 56543130 8000 0000")},
        {"die@any#1", true, frame("00") + frame("00"), ""},
        {"power-cut#1", true, frame("01 00000000 00800000"), ""},
        {"late-match#3", false, "868686", "86"},
        {"long-reply@sum,value=2", false, "8620", "86200000000000"},
        {"die-at-byte#2", false, "8620", "86"},
        {"reset-at-byte#2", false, "8620", "86"},
        {"garbage@match,value=0", false, "86", "xx86"},
    };
    for (const auto& [fault, byLoader, sent, expected] : cases) {
        Bench bench("VT-B128");
        byLoader ? bench.startLoader() : bench.reset(true);
        CHIP_SetFaults(*bench.chip, {parsed(fault)});
        std::string answer = bench.exchange(sent);
        if (expected.starts_with("xx")) {
            answer.replace(0, 2, "xx");
        }
        EXPECT_EQ(answer, expected) << fault;
    }
}

// Where the first 11 stands after an erase of a block full of them, or after a write of one to 0.
TEST(ChipFaults, EraseAndWriteGoAstray) {
    const std::string erase = frame("01 00000000 00800000");
    const std::string write = frame("02 00000000 8000 11" + repeat("FF", 127));
    const std::tuple<const char*, std::string, ptrdiff_t> cases[] = {
        {"short-erase#1,value=10", erase, 0x7FF0},
        {"power-cut#1", erase, 0x4000},
        {"misplaced-write#1,address=80", write, 0x80},
        {"shifted-write#1,value=3", write, 3},
        {"lost-write#2", write, 0},
    };
    for (const auto& [fault, sent, first] : cases) {
        Bench bench("VT-B128");
        bench.startLoader();
        CHIP_PutFlash(*bench.chip, 0, std::vector<uint8_t>(0x8000, sent == erase ? 0x11 : 0xFF));
        CHIP_SetFaults(*bench.chip, {parsed(fault)});
        bench.exchange(sent);
        const std::vector<uint8_t> flash = CHIP_GetFlash(*bench.chip, 0, 0x8000);
        EXPECT_EQ(std::ranges::find(flash, 0x11) - flash.begin(), first) << fault;
    }
}

TEST(ChipFaults, TextForm) {
    const std::pair<const char*, const char*> cases[] = {
        {"noreply", "unknown fault 'noreply'"},
        {"no-reply@nowhere", "unknown step 'nowhere'"},
        {"no-reply#x", "'x' is not a number"},
        {"no-reply,at=3", "'at=3' is neither address=HEX nor value=HEX"},
        {"no-reply,", "'' is neither address=HEX nor value=HEX"},
    };
    for (const auto& [text, expected] : cases) {
        ChipFault fault;
        std::string error;
        EXPECT_FALSE(CHIP_ParseFault(text, fault, error)) << text;
        EXPECT_EQ(error, expected);
    }
}
