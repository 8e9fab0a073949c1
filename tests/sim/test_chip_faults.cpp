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
    struct Case {
        const char* fault;
        std::string send;
        std::string answer;
    };
    const std::string identify = frame("00 56543130 8000");
    std::string badSum = identify;
    badSum.replace(badSum.size() - 4, 2, "93");
    const Case cases[] = {
        {"no-reply", frame("00"), ""},
        {"no-reply@identify#2", frame("00"), identify},
        {"no-reply@program", frame("00"), identify},
        {"wrong-reply@identify", frame("00"), "BE" + identify.substr(2)},
        {"wrong-reply@identify,value=FF", frame("00"), "14" + identify.substr(2)},
        {"short-reply@identify,value=3", frame("00"), identify.substr(0, 6)},
        {"bad-checksum@identify", frame("00"), badSum},
        {"long-reply@identify,value=2", frame("00"), frame("00 56543130 8000 0000")},
        {"nak@identify", frame("00"), frame("F1")},
        {"error-reply@identify,address=12,value=63", frame("00"), frame("F3 63 12000000 FF")},
        {"lost-write#1", frame("02 00000000 8000" + repeated("00", 128)), frame("02")},
        {"stuck-bits,address=3,value=80", frame("02 00000000 8000" + repeated("00", 128)),
         frame("F3 02 03000000 80")},
        {"dead-bits,address=3,value=80", frame("05 00000000 00800000"), frame("F3 04 03000000 7F")},
        {"die@any#1", frame("00") + frame("00"), ""},
        {"power-cut#1", frame("01 00000000 00800000"), ""},
    };
    for (const Case& test : cases) {
        Bench bench("VT-B128");
        bench.startLoader();
        CHIP_SetFaults(*bench.chip, {parsed(test.fault)});
        EXPECT_EQ(bench.exchange(test.send), test.answer) << test.fault;
    }
}

TEST(ChipFaults, BootRomMisbehaves) {
    struct Case {
        const char* fault;
        const char* device;
        std::string send;
        std::string answer;
    };
    const std::string blankB = repeated("FF", 12) + "0C";
    const Case cases[] = {
        {"late-match#3", "VT-B128", "8686", ""},
        {"late-match#3", "VT-B128", "868686", "86"},
        {"bad-checksum@sum", "VT-B128", "8620", "8620000001"},
        {"long-reply@sum,value=2", "VT-B128", "8620", "86200000000000"},
        {"refuse-password", "VT-B128", "8610" + blankB, "861011"},
        {"wrong-product", "VT-B256", "86C0", "8657542D423235364748494A4B4C4D4E4F"},
        {"die-at-byte#2", "VT-B128", "8620", "86"},
        {"garbage@match,value=0", "VT-B128", "86", "xx86"},
    };
    for (const Case& test : cases) {
        ChipOptions options;
        options.faults = {parsed(test.fault)};
        Bench bench(test.device, options);
        bench.reset(true);
        std::string answer = bench.exchange(test.send);
        if (test.answer.starts_with("xx"))
            answer.replace(0, 2, "xx");
        EXPECT_EQ(answer, test.answer) << test.fault;
        // A reset brings a chip back that was only silent.
        bench.reset(true);
        if (std::string(test.fault).starts_with("die")) {
            EXPECT_EQ(bench.exchange("86"), "86");
        }
    }
}

TEST(ChipFaults, FlashIsLeftHalfDone) {
    struct Case {
        const char* fault;
        uint32_t wrongFrom; // the first byte of block 0 that is not erased
    };
    for (const Case& test : {Case{"short-erase#1,value=10", 0x7FF0}, Case{"power-cut#1", 0x4000}}) {
        Bench bench("VT-B128");
        bench.startLoader();
        CHIP_PutFlash(*bench.chip, 0, std::vector<uint8_t>(0x8000, 0x11));
        CHIP_SetFaults(*bench.chip, {parsed(test.fault)});
        bench.exchange(frame("01 00000000 00800000"));
        const std::vector<uint8_t> flash = CHIP_GetFlash(*bench.chip, 0, 0x8000);
        const auto wrong = std::ranges::find(flash, 0x11);
        EXPECT_EQ(wrong - flash.begin(), test.wrongFrom) << test.fault;
    }
}

TEST(ChipFaults, SlowReplyComesLate) {
    ChipOptions options;
    options.faults = {parsed("slow@match,value=14")};
    Bench bench("VT-B128", options);
    bench.reset(true);
    CHIP_Receive(*bench.chip, bytesOf("86"), bench.now);
    EXPECT_EQ(CHIP_NextOutput(*bench.chip, kNever), Moment{bench.now.us + 20000});
}

TEST(ChipFaults, TextForm) {
    struct Case {
        const char* text;
        const char* error;
    };
    const Case cases[] = {
        {"", "unknown fault ''"},
        {"noreply", "unknown fault 'noreply'"},
        {"no-reply@nowhere", "unknown step 'nowhere'"},
        {"no-reply@", "unknown step ''"},
        {"no-reply#x", "'x' is not a number"},
        {"no-reply,at=3", "'at=3' is neither address=HEX nor value=HEX"},
        {"no-reply,value=0x3", "'value=0x3' is neither address=HEX nor value=HEX"},
        {"no-reply,", "'' is neither address=HEX nor value=HEX"},
    };
    for (const Case& test : cases) {
        ChipFault fault;
        std::string error;
        EXPECT_FALSE(CHIP_ParseFault(test.text, fault, error)) << test.text;
        EXPECT_EQ(error, test.error);
    }
    const ChipFault fault = parsed("error-reply@erase-block#7,address=1fF,value=A");
    EXPECT_EQ(fault.kind, FaultKind::errorReply);
    EXPECT_EQ(fault.step, ChipStep::eraseBlock);
    EXPECT_EQ(fault.n, 7U);
    EXPECT_EQ(fault.address, 0x1FFU);
    EXPECT_EQ(fault.value, 0xAU);
}
