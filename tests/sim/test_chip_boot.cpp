#include "sim/chip_bench.h"

#include <sstream>

namespace {

struct BootCase {
    const char* name;
    const char* device;
    uint32_t otherRate;    // TYPE_A: the rate from the second exchange's answer on; 0 none
    const char* exchanges; // "sent=answered", in turn
    const char* violations;
    ChipMode mode;
};

const std::string kBlankA = "FFC0FFC0" + repeat("FF", 255);
const std::string kBlankA96 = "027F00027F00" + repeat("FF", 255);

// What the names in the table stand for; anything else for itself.
std::string passwordFor(const std::string& sent) {
    if (sent == "{A}") {
        return kBlankA;
    }
    if (sent == "{A96}") {
        return kBlankA96;
    }
    return sent == "{B}" ? repeat("FF", 12) + "0C" : sent == "{W}" ? repeat("FF", 12) + "0D" : sent;
}

std::vector<BootCase> bootCases() {
    return {
        {"TYPE_A loader without its timer record", "VT-A60", 38400,
         "5A=5A 07=07 60=60 {A}= 3A0100400001BE= 3A00000001FF=",
         "no timer record before the end of the loader\n", ChipMode::bootRom},
        {"TYPE_A erase command, read protection and status", "VT-A96", 38400,
         "5A=5A 07=07 F0=F0 {A96}= F1=8000 FA=FA {A96}=FB C3=C301000000000000", "",
         ChipMode::bootRom},
        {"TYPE_A record outside the RAM", "VT-A32", 38400,
         "5A=5A 07=07 60=60 {A}= 3A0108400001B6= 3A00000001FF=",
         "loader record 0840 outside the RAM\n", ChipMode::bootRom},
        {"TYPE_A record with a wrong checksum", "VT-A32", 38400,
         "5A=5A 07=07 60=60 {A}= 3A0100400001BF= 3A00000001FF=", "record with a wrong checksum\n",
         ChipMode::bootRom},
        {"TYPE_A commands that the chip lacks", "VT-A32", 38400, "5A=5A 07=07 30= C3=",
         "boot ROM command 30, which the chip does not have\nboot ROM command C3, which the chip "
         "does not have\n",
         ChipMode::bootRom},
        {"TYPE_A host stays at the matching rate", "VT-A32", 0, "5A=5A 07=07 90=",
         "byte sent at 9600 Bd while the chip listens at 38400 Bd\nboot ROM command 4D, which the "
         "chip does not have\n",
         ChipMode::bootRom},
        {"TYPE_A rate without a code", "VT-A32", 115200, "5A=5A 1C=1C 90=908000", "",
         ChipMode::bootRom},
        {"TYPE_B checksums", "VT-B128", 0,
         "86=86 10=10 {W}=18 10=10 {B}=10 200000000004DD=18 10=10 {B}=10 200000000004DC=10 "
         "01020304F7=18",
         "password block with a wrong checksum\nblock header with a wrong checksum\nloader data "
         "with a wrong checksum\n",
         ChipMode::bootRom},
        {"TYPE_B block outside the RAM", "VT-B128", 0, "86=86 10=10 {B}=10 20001FFE0004BF=18",
         "loader block 20001FFE, 4 bytes, outside the RAM\n", ChipMode::bootRom},
    };
}

} // namespace

TEST(ChipBoot, Conversations) {
    for (const BootCase& test : bootCases()) {
        SCOPED_TRACE(test.name);
        Bench bench(test.device);
        const bool typeA = bench.description.RamcodeType == RAMCODE_TYPE_A;
        CHIP_SetHostRate(*bench.chip, typeA ? 9600 : 38400);
        bench.reset(true);
        std::istringstream exchanges(test.exchanges);
        std::string exchange;
        for (int done = 1; exchanges >> exchange; done++) {
            const size_t mark = exchange.find('=');
            EXPECT_EQ(bench.exchange(passwordFor(exchange.substr(0, mark))),
                      exchange.substr(mark + 1))
                << exchange;
            if (done == 2 && test.otherRate != 0) {
                CHIP_SetHostRate(*bench.chip, test.otherRate);
            }
        }
        EXPECT_EQ(bench.violations(), test.violations);
        EXPECT_EQ(CHIP_GetMode(*bench.chip), test.mode);
    }
}

using TimedBytes = std::vector<std::pair<int64_t, std::string>>; // after so many ms

// "D1" and the like set a line, names in braces bring the chip so far.
void playCase(Bench& bench, const TimedBytes& sent) {
    bool lines[2] = {false, true}; // DTR, RTS
    for (const auto& [afterMs, what] : sent) {
        bench.now.us += afterMs * 1000;
        if (what[0] == 'D' && what.size() == 2) {
            lines[0] = what[1] == '1';
            CHIP_SetLines(*bench.chip, lines[0], lines[1], bench.now);
        } else if (what[0] == 'R') {
            lines[1] = what[1] == '1';
            CHIP_SetLines(*bench.chip, lines[0], lines[1], bench.now);
        } else if (what == "{records}") {
            CHIP_SetHostRate(*bench.chip, 9600);
            bench.reset(true);
            bench.exchange("5A");
            bench.exchange("28");
            bench.exchange("60");
            bench.exchange(kBlankA);
        } else if (what[0] == '{') {
            bench.reset(true);
            bench.exchange("86");
            bench.exchange("10" + repeat("FF", 12) + "0C");
            bench.exchange(what == "{data}" ? "20000000 1000 D0" : "20000000 0001 DF");
        } else {
            CHIP_Receive(*bench.chip, bytesOfHex(what), bench.now);
            CHIP_Run(*bench.chip, bench.now);
        }
    }
}

// What a strict chip holds against its host, and a lenient one does not.
TEST(ChipBoot, PrescribedPausesAndRecords) {
    struct Case {
        const char* name;
        const char* device;
        TimedBytes sent;
        const char* violations;
    };
    const std::string wholeB = repeat("01", 281);
    const Case cases[] = {
        {"all pauses made",
         "VT-B128",
         {{0, "D1"}, {50, "R0"}, {250, "R1"}, {250, "D0"}, {250, "86"}, {10, "10"}},
         ""},
        {"the reset",
         "VT-B128",
         {{0, "D1"}, {299, "D0"}, {250, "86"}},
         "reset of 299 ms where 300 are due\n"},
        {"the level in it",
         "VT-B128",
         {{0, "D1"}, {50, "R0"}, {50, "R1"}, {249, "D0"}, {250, "86"}},
         "RTS changed 249 ms before the end of the reset where 250 are due\n"},
        {"after the reset",
         "VT-B128",
         {{0, "D1"}, {300, "D0"}, {249, "86"}},
         "byte sent 249 ms after the reset where 250 are due\n"},
        {"between pieces",
         "VT-B128",
         {{0, "{data}"}, {0, "0102"}, {9, "0102"}, {10, "0102"}},
         "loader data sent 9.0 ms after the piece before, 10 are due\n"},
        {"a piece",
         "VT-B128",
         {{0, "{data}"}, {0, wholeB}, {10, wholeB}, {0, "01"}},
         "more than 281 bytes of loader data without a pause\n"},
        {"before the loader",
         "VT-B128",
         {{0, "{loader}"}, {0, "FF01"}, {99, "EB"}, {1, "ED"}},
         "byte sent 99 ms after the download where 100 are due\n"},
        {"between records",
         "VT-A32",
         {{0, "{records}"}, {0, "3A0100400001BE"}, {9, "3A0100410001BD"}, {10, "3A00000001FF"}},
         "loader data sent 9.0 ms after the piece before, 10 are due\n"},
        {"records",
         "VT-A32",
         {{0, "{records}"},
          {0, "3A0100400001BE"},
          {10, "3A00004000C0"},
          {10, "3A00000006FA"},
          {10, "3A0100000200FD"},
          {10, "3A020000020000FC"},
          {10, "3A0100000101FD"}},
         "record of type 00 with 0 bytes\nrecord of type 06 with 0 bytes\nrecord of type 02 with 1 "
         "bytes\nrecord of type 01 with 1 bytes\n"},
    };
    for (const Case& test : cases) {
        for (const bool strict : {true, false}) {
            SCOPED_TRACE(test.name);
            ChipOptions options;
            options.strict = strict;
            Bench bench(test.device, options);
            playCase(bench, test.sent);
            EXPECT_EQ(bench.violations(), strict ? test.violations : "");
        }
    }
}

TEST(ChipBoot, LinesChooseWhatStarts) {
    ChipOptions options;
    options.applicationText = "hello";
    Bench bench("VT-B128", options);
    bench.reset(false);
    EXPECT_EQ(CHIP_GetMode(*bench.chip), ChipMode::application);
    EXPECT_EQ(bench.exchange("86"), "68656C6C6F");
    EXPECT_EQ(CHIP_GetApplicationInput(*bench.chip), bytesOfHex("86"));
    bench.reset(true);
    EXPECT_EQ(bench.exchange("86"), "86");
    CHIP_SetLines(*bench.chip, true, true, bench.now);
    EXPECT_EQ(bench.exchange("20"), "");
    EXPECT_EQ(bench.violations(), "byte sent while the chip is in reset or starting\n");
}

TEST(ChipBoot, PasswordOfAProgrammedChip) {
    // TYPE_A: the length and the bytes at the addresses that the host names.
    for (const bool right : {true, false}) {
        Bench a("VT-A32");
        EXPECT_TRUE(CHIP_PutFlash(*a.chip, 0xFFC0, bytesOfHex("080102030405060708")));
        CHIP_SetHostRate(*a.chip, 9600);
        a.reset(true);
        a.exchange("5A");
        a.exchange("28");
        EXPECT_EQ(a.exchange("60"), "60");
        a.exchange(std::string("FFC0FFC1 01020304050607") + (right ? "08" : "09"));
        a.exchange("3A 02 0040 00 0102 BB");
        EXPECT_EQ(a.exchange("3A 00 0000 01 FF"), right ? "0003" : "");
        EXPECT_EQ(a.violations(), "");
    }
}

// A line without control lines: a matching byte is what a conversation begins with.
TEST(ChipBoot, ResyncByMatchingByte) {
    for (const char* device : {"VT-A32", "VT-B128"}) {
        ChipOptions options;
        options.startInBootRom = true;
        options.resyncByMatch = true;
        options.checkRate = false;
        Bench bench(device, options);
        const bool typeA = bench.description.RamcodeType == RAMCODE_TYPE_A;
        bench.startLoader();
        ASSERT_EQ(CHIP_GetMode(*bench.chip), ChipMode::loader);
        EXPECT_EQ(bench.exchange(frame("00")), frame("00 56543130 8000"));
        const std::string match = typeA ? "5A" : "86";
        EXPECT_EQ(bench.exchange(match), match);
        EXPECT_EQ(CHIP_GetMode(*bench.chip), ChipMode::bootRom);
        // A host that gave up in the middle of a command comes back after a while.
        bench.exchange(typeA ? "0760FFC0" : "10FFFF");
        EXPECT_EQ(bench.exchange(match), match);
        EXPECT_EQ(bench.exchange(typeA ? "0790" : "20"), typeA ? "07908000" : "20000000");
    }
}

TEST(ChipBoot, SendingIntoAReplyIsOutOfTurn) {
    ChipOptions options;
    options.pacing = true;
    options.checksumUsPerKiB = 0;
    Bench bench("VT-B128", options);
    CHIP_SetHostRate(*bench.chip, 10000);
    bench.reset(true);
    bench.exchange("86");
    CHIP_Receive(*bench.chip, bytesOfHex("20"), bench.now);
    EXPECT_EQ(CHIP_NextOutput(*bench.chip, kNever), Moment{bench.now.us + 2000});
    CHIP_Receive(*bench.chip, bytesOfHex("20"), Moment{bench.now.us + 2000});
    CHIP_Run(*bench.chip, Moment{bench.now.us + 20000});
    EXPECT_EQ(bench.violations(), "byte sent before the reply to the last command has arrived\n");
}
