#include "sim/chip_bench.h"

#include <sstream>

namespace {

struct BootCase {
    const char* name;
    const char* device;
    std::string steps;
    std::string violations;
    const char* passwordArea = "";
};

// What the names in the steps stand for, in the order in which they are replaced.
const std::pair<std::string, std::string> kNames[] = {
    {"{data}", "{password} 200000001000D0=10"},
    {"{loader}", "{password} 200000000001DF=10"},
    {"{password}", "{B} 10=10 {blankB}0C=10"},
    {"{records}", "{A} 60=60 {blankA}="},
    {"{A}", "r9600 boot 5A=5A 07=07 r38400"},
    {"{B}", "boot 86=86"},
    {"{blankA}", "FFC0FFC0" + repeat("FF", 255)},
    {"{blankA96}", "027F00027F00" + repeat("FF", 255)},
    {"{blankB}", repeat("FF", 12)},
};

std::string expanded(std::string steps) {
    for (const auto& [name, text] : kNames) {
        for (size_t at = steps.find(name); at != std::string::npos; at = steps.find(name)) {
            steps.replace(at, name.size(), text);
        }
    }
    return steps;
}

// "sent=answered" waits for the answer, bytes alone do not. "boot" resets into the boot ROM, "D1"
// and the like set a line, "r9600" the host's rate, "+50" lets so many ms pass.
void play(Bench& bench, const std::string& steps) {
    bool lines[2] = {false, true}; // DTR, RTS
    std::istringstream words(expanded(steps));
    for (std::string step; words >> step;) {
        const size_t mark = step.find('=');
        if (step == "boot") {
            bench.reset(true);
        } else if (step[0] == '+') {
            bench.now.us += std::stoll(step) * 1000;
        } else if (step[0] == 'r') {
            CHIP_SetHostRate(*bench.chip, static_cast<uint32_t>(std::stoul(step.substr(1))));
        } else if (step.size() == 2 && (step[0] == 'D' || step[0] == 'R')) {
            lines[step[0] == 'R'] = step[1] == '1';
            CHIP_SetLines(*bench.chip, lines[0], lines[1], bench.now);
        } else if (mark != std::string::npos) {
            EXPECT_EQ(bench.exchange(step.substr(0, mark)), step.substr(mark + 1)) << step;
        } else {
            CHIP_Receive(*bench.chip, bytesOfHex(step), bench.now);
            CHIP_Run(*bench.chip, bench.now);
        }
    }
}

} // namespace

TEST(ChipBoot, Conversations) {
    const std::string lacks = ", which the chip does not have\n";
    const BootCase cases[] = {
        {"loader without its timer record", "VT-A60",
         "{A} 60=60 {blankA}= 3A0100400001BE= 3A00000001FF=",
         "no timer record before the end of the loader\n"},
        {"erase command, read protection and status", "VT-A96",
         "{A} F0=F0 {blankA96}= F1=8000 FA=FA {blankA96}=FB C3=C301000000000000", ""},
        {"record outside the RAM", "VT-A32",
         "{records} 3A0108400001B6= 3A00000001FF=", "loader record 0840 outside the RAM\n"},
        {"record with a wrong checksum", "VT-A32",
         "{records} 3A0100400001BF= 3A00000001FF=", "record with a wrong checksum\n"},
        {"commands that the chip lacks", "VT-A32",
         "{A} 30= C3=", "boot ROM command 30" + lacks + "boot ROM command C3" + lacks},
        {"host stays at the matching rate", "VT-A32", "r9600 boot 5A=5A 07=07 90=",
         "byte sent at 9600 Bd while the chip listens at 38400 Bd\nboot ROM command 4D" + lacks},
        {"rate without a code", "VT-A32", "r9600 boot 5A=5A 1C=1C r115200 90=908000", ""},
        {"right password", "VT-A32",
         "{A} 60=60 FFC0FFC10102030405060708= 3A020040000102BB= 3A00000001FF=0003", "",
         "080102030405060708"},
        {"wrong password", "VT-A32",
         "{A} 60=60 FFC0FFC10102030405060709= 3A020040000102BB= 3A00000001FF=", "",
         "080102030405060708"},
        {"checksums", "VT-B128",
         "{B} 10=10 {blankB}0D=18 {password} 200000000004DD=18 {password} 200000000004DC=10 "
         "01020304F7=18",
         "password block with a wrong checksum\nblock header with a wrong checksum\nloader data "
         "with a wrong checksum\n"},
        {"block outside the RAM", "VT-B128", "{password} 20001FFE0004BF=18",
         "loader block 20001FFE, 4 bytes, outside the RAM\n"},
    };
    for (const BootCase& test : cases) {
        SCOPED_TRACE(std::string(test.device) + " " + test.name);
        Bench bench(test.device);
        CHIP_PutFlash(*bench.chip, bench.description.PWAreaStart, bytesOfHex(test.passwordArea));
        play(bench, test.steps);
        EXPECT_EQ(bench.violations(), test.violations);
    }
}

// What a strict chip holds against its host, and a lenient one does not.
TEST(ChipBoot, PrescribedPausesAndRecords) {
    const std::string whole = repeat("01", 281);
    const BootCase cases[] = {
        {"all pauses made", "VT-B128", "D1 +50 R0 +250 R1 +250 D0 +250 86 +10 10", ""},
        {"the reset", "VT-B128", "D1 +299 D0 +250 86", "reset of 299 ms where 300 are due\n"},
        {"the level in it", "VT-B128", "D1 +50 R0 +50 R1 +249 D0 +250 86",
         "RTS changed 249 ms before the end of the reset where 250 are due\n"},
        {"after the reset", "VT-B128", "D1 +300 D0 +249 86",
         "byte sent 249 ms after the reset where 250 are due\n"},
        {"between pieces", "VT-B128", "{data} 0102 +9 0102 +10 0102",
         "loader data sent 9.0 ms after the piece before, 10 are due\n"},
        {"a piece", "VT-B128", "{data} " + whole + " +10 " + whole + " 01",
         "more than 281 bytes of loader data without a pause\n"},
        {"before the loader", "VT-B128", "{loader} FF01 +99 EB +1 ED",
         "byte sent 99 ms after the download where 100 are due\n"},
        {"between records", "VT-A32", "{records} 3A0100400001BE +9 3A0100410001BD +10 3A00000001FF",
         "loader data sent 9.0 ms after the piece before, 10 are due\n"},
        {"records", "VT-A32",
         "{records} 3A0100400001BE +10 3A00004000C0 +10 3A00000006FA +10 3A0100000200FD +10 "
         "3A020000020000FC +10 3A0100000101FD",
         "record of type 00 with 0 bytes\nrecord of type 06 with 0 bytes\nrecord of type 02 with 1 "
         "bytes\nrecord of type 01 with 1 bytes\n"},
    };
    for (const BootCase& test : cases) {
        for (const bool strict : {true, false}) {
            SCOPED_TRACE(test.name);
            ChipOptions options;
            options.strict = strict;
            Bench bench(test.device, options);
            play(bench, test.steps);
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
