// What goes over the line while the program talks to a boot ROM, byte for byte.

#include "bootrom/connect.h"
#include "bootrom/download.h"
#include "bootrom/flash_commands.h"
#include "bootrom/handshake.h"
#include "link/password.h"
#include "link/target_link.h"
#include "link/target_state.h"
#include "support/script_world.h"

namespace {

const std::string kDeviceA =
    "Bank = 8000,8000\nUARTRamcode = \"a.hex\", \"TYPE_A\"\nRam = 0200,0400\n"
    "RAMCodeAdrLen = 2\nPWArea = FFC0,20\nTimeoutGetSUM = 5000\n"
    "TimeoutEraseAll = 30000\n";
const std::string kDeviceB =
    "Bank = 0,8000\nUARTRamcode = \"b.s\", \"TYPE_B\"\nTimeoutGetSUM = 5000\n"
    "TimeoutEraseAll = 30000\n";
const Script kReset = {{"DTR on", ""}, {"RTS on", ""}, {"DTR off", ""}};
const Script kMatchA = {{"rate 9600", ""}, {"5A", "5A"}, {"07", "07"}, {"rate 38400", ""}};
const Script kSumA = {{"90", "90 1234"}};
const Script kBlankSumA = {{"90", "90 8000"}};
const Script kMatchB = {{"86", "86"}};
const Script kSumB = {{"20", "20 1234 BA"}};

Script join(std::initializer_list<Script> parts) {
    Script all;
    for (const Script& part : parts) {
        all.insert(all.end(), part.begin(), part.end());
    }
    return all;
}

Result<> download(const std::string& path, bool showProgress = false) {
    return _DownloadRamImage(*_SelectProtocol(), path, showProgress);
}

Result<> eraseChip() {
    return _EraseChip(*_SelectProtocol());
}

std::function<Result<>()> slot(Result<> (*BootRomProtocol::*member)()) {
    return [member] { return (_SelectProtocol()->*member)(); };
}

// The link is the boot ROM's and the user has given a password.
struct WireWorld : ScriptWorld {
    WireWorld(const std::string& device, const Script& script, uint32_t baudrate = 38400)
        : ScriptWorld(device, script, baudrate) {
        TARGET_SetLinkState(LINK_BOOTROM);
        PASSWORD_SetAdrCount(0xFFC0);
        PASSWORD_SetAdrCompare(0xFFC1);
        PASSWORD_SetBytes(std::vector<uint8_t>{0xA1, 0xA2});
    }
};

} // namespace

TEST(Wire, DownloadTypeA) {
    WireWorld world(kDeviceA + "TimerInit = 1\nProductInfo = C0,4,1,\"5654\"",
                    join({kReset,
                          kMatchA,
                          kSumA,
                          {{"C0", "00 56 54 99"},
                           {"60", "60"},
                           {"FFC0 FFC1 A1A2", ""},
                           {"3A 02 0400 00 1122 C7", ""},
                           {"3A 02 0402 00 1A00 DE", ""},
                           {"3A 00 0000 01 FF", "4567"}}}));
    DEVPROPS_SetSpeed(16000000);
    const std::string path = world.addFile("a.hex", "text\r\n:020400001122C7\r\n:00000001FF\r\n");
    EXPECT_TRUE(download(path));
    EXPECT_EQ(world.deviation(), "");
    EXPECT_EQ(world.errors(), "");
    EXPECT_EQ(BOOT_GetState(), BOOT_RAMCODE);
    EXPECT_EQ(RUN_GetExitCode(), 0);
    EXPECT_EQ(world.log(), "Setting baudrate|Product info:|00 56 54 99 |"
                           "Product info comparison successful|Downloading RAM-Image started: " +
                               path + "|Downloading RAM-Image finished");
}

TEST(Wire, DownloadTypeAToABlankChipThatAnswersLate) {
    WireWorld world(kDeviceA,
                    join({kReset,
                          {{"rate 9600", ""},
                           {"5A", ""},
                           {"5A", ""},
                           {"5A", ""},
                           {"5A", "5A"},
                           {"1C", "1C"},
                           {"rate 115200", ""}},
                          kBlankSumA,
                          {{"60", "60"},
                           {"FFC0 FFC0" + repeat("FF", 255), ""},
                           {"3A 02 0400 00 1122 C7", ""},
                           {"3A 00 0000 01 FF", "0000"}}}),
                    115200);
    PASSWORD_Reset(); // a blank chip needs none
    EXPECT_TRUE(download(world.addFile("a.hex", ":020400001122C7\n:00000001FF"), true));
    EXPECT_EQ(world.deviation(), "");
    EXPECT_EQ(world.questions(), "");
}

TEST(Wire, DownloadTypeB) {
    const std::string image = "S0030000FC\nS315000001000102030405060708090A0B0C0D0E0F1000\n"
                              "S31500000120" +
                              repeat("A0", 16) + "00\nS70500000100F9\n";
    const Script tail = {{"10", "10"},
                         {"A1A2 00000000000000000000 BD", "10"},
                         {"00000100 0030 CF", "10"},
                         {"0102030405060708090A0B0C0D0E0F10", ""},
                         {repeat("FF", 16) + repeat("A0", 16) + "88", "10"}};
    WireWorld world(kDeviceB, join({kReset, kMatchB, kSumB, tail}));
    EXPECT_TRUE(download(world.addFile("b.s", image)));
    EXPECT_EQ(world.deviation(), "");
    EXPECT_EQ(world.errors(), "");
    EXPECT_EQ(BOOT_GetState(), BOOT_RAMCODE);
}

// What one operation does with one conversation. The state afterwards says whether the next
// operation resets the target again.
struct WireCase {
    std::string name;
    std::string device;
    std::function<Result<>()> run;
    Script script;
    bool done;
    std::string reason; // of the failure
    int state;
    std::string log = {};
};

static void check(const WireCase& c) {
    SCOPED_TRACE(c.name);
    WireWorld world(c.device, c.script);
    const Result<> result = c.run();
    EXPECT_EQ(bool(result), c.done);
    EXPECT_EQ(result ? "" : result.error().reason, c.reason);
    EXPECT_EQ(world.deviation(), "");
    EXPECT_EQ(world.errors(), "");
    EXPECT_EQ(BOOT_GetState(), c.state);
    if (!c.log.empty()) {
        EXPECT_EQ(world.log(), "Setting baudrate|" + c.log);
    }
}

TEST(Wire, BootRomCommands) {
    const Script a = join({kReset, kMatchA, kSumA});
    const Script b = join({kReset, kMatchB, kSumB});
    const Script frame = {{"FFC0 FFC1 A1A2", ""}};
    const std::string erased = "Erasing Chip started|Erasing Chip finished";
    const std::string rewritten = "Erasing Chip started|By its checksum 8000 the chip is blank|"
                                  "Erasing Chip finished";
    const std::string reported = "Erasing Chip started|Compared nothing: the boot ROM reported the "
                                 "erase (Blankcheck reads the chip)|Erasing Chip finished";
    const std::string notErased = "Erasing Chip started|Erasing Chip failed";
    const std::string byCommand = kDeviceA + "SprtFlashEraseCMD = 1";
    const std::string version1 = kDeviceB + "RewriteVersion = 1";
    const std::vector<WireCase> cases = {
        {"rewrite", kDeviceA, eraseChip, join({a, {{"30", "30C1"}, {"3A00000001FF", "8000"}}}),
         true, "", BOOT_SYNCED, rewritten},
        {"rewrite without sum", kDeviceA, eraseChip,
         join({a, {{"30", "30C1"}, {"3A00000001FF", "80"}}}), false, "", BOOT_SYNCED, notErased},
        {"erase", byCommand, eraseChip, join({a, {{"F0", "F0"}}, frame, {{"F1", "8000"}}}), true,
         "", BOOT_SYNCED, erased},
        {"erase leaves data", byCommand, eraseChip,
         join({a, {{"F0", "F0"}}, frame, {{"F1", "8001"}}}), false, "", BOOT_SYNCED, notErased},
        {"erase never ends", byCommand, eraseChip, join({a, {{"F0", "F0"}}, frame, {{"F1", ""}}}),
         false, "", BOOT_SYNCED, notErased},
        {"status", kDeviceA, slot(&BootRomProtocol::FlashStatus),
         join({a, {{"C3", "C3 00010203040506"}}}), true, "", BOOT_SYNCED,
         "Flash memory status:|00 01 02 03 04 05 06 "},
        {"status short", kDeviceA, slot(&BootRomProtocol::FlashStatus),
         join({a, {{"C3", "C3 0001"}}}), false, "", BOOT_SYNCED},
        {"read protect", kDeviceA, slot(&BootRomProtocol::ReadProtect),
         join({a, {{"FA", "FA"}, {"FFC0FFC1A1A2", "FB"}}}), true, "", BOOT_SYNCED,
         "Flash memory read protection command executed"},
        {"read protect refused", kDeviceA, slot(&BootRomProtocol::ReadProtect),
         join({a, {{"FA", "FA"}, {"FFC0FFC1A1A2", "00"}}}), false,
         "Flash memory read protection command failed", BOOT_SYNCED},
        {"B rewrite 0", kDeviceB, eraseChip, join({b, {{"40", "40 4F B1"}}}), true, "", BOOT_SYNCED,
         reported},
        {"B rewrite 1", version1, eraseChip, join({b, {{"40", "40"}, {"54", "54 4F 5D"}}}), true,
         "", BOOT_SYNCED, reported},
        {"B protect", kDeviceB, slot(&BootRomProtocol::ProtectChip),
         join({kReset, kMatchB, {{"60", "60"}, {"A1A2 00000000000000000000 BD", "60"}}}), true, "",
         BOOT_SYNCED},
    };
    for (const WireCase& c : cases) {
        check(c);
    }
}

TEST(Wire, FailedHandshakes) {
    const std::string product = kDeviceA + "ProductInfo = C0,4,1,\"5654\"";
    const std::string beyond = kDeviceA + "ProductInfo = C0,4,3,\"5654\"";
    const auto a = [] { return _BootHandshake(*_SelectProtocol()); };
    const Script at9600 = join({kReset, {{"rate 9600", ""}}});
    const Script synced = join({kReset, kMatchA, kSumA});
    const Script back = {{"rate 38400", ""}};
    const std::vector<WireCase> cases = {
        {"nobody", kDeviceA, a, join({at9600, Script(10, {"5A", ""}), back}), false,
         "Matching data failed", BOOT_UNSYNCED},
        {"no answer to the rate", kDeviceA, a, join({at9600, {{"5A", "5A"}, {"07", ""}}, back}),
         false, "", BOOT_UNSYNCED},
        {"short sum", kDeviceA, a, join({kReset, kMatchA, {{"90", "9012"}}}), false,
         "The chip does not send its checksum", BOOT_SYNCED},
        {"product silent", product, a, join({synced, {{"C0", "00 56"}}}), false,
         "The chip does not send its product info", BOOT_SYNCED},
        {"other product", product, a, join({synced, {{"C0", "00 56 55 99"}}}), false,
         "The chip is no D (product info: expected 5654, found 5655)", BOOT_SYNCED,
         "Product info:|00 56 55 99 |Product info comparison failed"},
        {"product text beyond the reply", beyond, a, join({synced, {{"C0", "00 56 54 56"}}}), false,
         "The chip is no D (product info: expected 5654, found 56)", BOOT_SYNCED,
         "Product info:|00 56 54 56 |Product info comparison failed"},
    };
    for (const WireCase& c : cases) {
        check(c);
    }
}

// Stray bytes, late echoes and what the application sends until the chip is in reset cost a try at
// the most; the last of these is the terminal's.
TEST(Wire, MatchGoesPastOtherBytes) {
    const Script reset = {{"DTR on", "4141"}, {"RTS on", ""}, {"DTR off", "42"}};
    const Script sum = {{"90", "901234"}};
    const std::vector<std::pair<std::string, Script>> cases = {
        {"stray in front of the echo",
         {{"rate 9600", ""}, {"5A", "FF5A"}, {"07", "07"}, {"rate 38400", ""}}},
        {"stray in the echo's place",
         {{"rate 9600", ""}, {"5A", "00"}, {"5A", "5A"}, {"07", "07"}, {"rate 38400", ""}}},
        {"late echo in front of the code's",
         {{"rate 9600", ""}, {"5A", ""}, {"5A", "5A5A"}, {"07", "5A07"}, {"rate 38400", ""}}},
    };
    for (const auto& [name, match] : cases) {
        SCOPED_TRACE(name);
        const WireWorld world(kDeviceA, join({reset, match, sum}));
        EXPECT_TRUE(_BootHandshake(*_SelectProtocol()));
        EXPECT_EQ(world.deviation(), "");
        EXPECT_EQ(TERMINAL_GetText(), "AAB");
    }
}

TEST(Wire, FailedDownloads) {
    const Script a = join({kReset, kMatchA, kSumA});
    struct Case {
        std::string name;
        bool typeA;
        std::string image;
        Script script;
        std::string errors;
    };
    const std::vector<Case> cases = {
        {"no file",
         true,
         "",
         {},
         "File not found (/nowhere/image: No such file or directory)|Error reading RAM-Immage "
         "file"},
        {"too high", true, ":0206000011 22C5", {}, "|RAM-Image does not fit into memory"},
        {"unordered",
         false,
         "S30600000100AA00\nS30600000100AA00",
         {},
         "|RAM-Image records overlap or are not in ascending order"},
        // What a boot ROM says of half an image must not count.
        {"half an image", true, ":020400001122C7\n:0204020011G2",
         join({a, {{"60", "60"}, {"FFC0FFC1A1A2", ""}, {"3A020400001122C7", "0000"}}}),
         "|Error parsing RAM-image"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        WireWorld world(c.typeA ? kDeviceA : kDeviceB, c.script);
        const std::string path =
            c.image.empty() ? "/nowhere/image" : world.addFile("image", c.image);
        const Result<> result = download(path);
        ASSERT_FALSE(result);
        EXPECT_EQ(world.deviation(), "");
        EXPECT_EQ(world.errors() + "|" + result.error().reason, c.errors);
        EXPECT_EQ(RUN_GetExitCode(), 1);
    }
}

TEST(Wire, ConnectAsksWhatItNeedsAndRefusesWhatCannotWork) {
    const std::string summary = "Could not download RAM image. Please check password";
    {
        // The user presses reset and gives no password.
        WireWorld world(kDeviceA, join({kReset, kMatchA, kSumA}));
        world.addFile("RamImage/a.hex", ":020400001122C7\n:00000001FF");
        TARGET_SetLinkState(LINK_IDLE);
        DEVPROPS_SetResetByPC(false);
        PASSWORD_Reset();
        PASSWORD_SetDialog([] { return 2; });
        EXPECT_EQ(TARGET_Connect(), 0);
        EXPECT_EQ(world.deviation(), "");
        EXPECT_EQ(world.questions(), "Target: Please reset target\nand then press enter...");
        EXPECT_EQ(world.errors(), summary);
        EXPECT_EQ(TARGET_State().LinkState, LINK_IDLE);
        EXPECT_EQ(BOOT_GetState(), BOOT_UNSYNCED);
    }
    {
        // A description without the time that the last answer may take.
        WireWorld world(kDeviceB + "TimeoutGetSUM = 0\n",
                        join({kReset,
                              kMatchB,
                              kSumB,
                              {{"10", "10"},
                               {"A1A2 00000000000000000000 BD", "10"},
                               {"00000010 0001 EF", "10"},
                               {"AA", ""},
                               {"56", ""}}}));
        world.addFile("RamImage/b.s", "S30600000010AA00");
        EXPECT_EQ(TARGET_Connect(), 0);
        EXPECT_EQ(world.deviation(), "");
        EXPECT_EQ(world.errors(), "The device description gives the chip no time to answer the "
                                  "download (TimeoutGetSUM)");
    }
    {
        // Unattended: nobody is asked to press reset, but what stops the run is said.
        WireWorld world(kDeviceB, join({kReset, kMatchB, kSumB}));
        world.addFile("RamImage/b.s", "S30600000100AA00");
        RUN_SetUnattended(true);
        DEVPROPS_SetResetByPC(false);
        PASSWORD_Reset();
        EXPECT_EQ(TARGET_Connect(), 0);
        EXPECT_EQ(world.deviation(), "");
        EXPECT_EQ(world.questions(), "Password: A password is needed to connect");
        EXPECT_EQ(world.errors(), summary);
    }
    {
        WireWorld world("Bank = 0,8000", {});
        EXPECT_EQ(TARGET_Connect(), 0);
        EXPECT_EQ(world.errors(), "Target::Unsuported RAM-Code protocoll");
        EXPECT_EQ(RUN_GetExitCode(), 1);
    }
    {
        WireWorld world(kDeviceB, {});
        EXPECT_EQ(TARGET_ReadProtect(), 1);
        EXPECT_EQ(world.errors(),
                  "Read Protect Chip is not supported by the boot ROM of this device");
        EXPECT_EQ(world.deviation(), "");
    }
}

// The error that is said is the one that the loss was met in, not one about the rate that was to be
// put back, nor one about what would have come next.
TEST(Wire, APortLostAtAChangeOfTheRateIsSaidOnce) {
    const std::string gone = " (COM1 is test://script: the device has gone)";
    Script unanswered = join({kReset, {{"rate 9600", ""}}});
    unanswered.insert(unanswered.end(), 10, {"5A", ""});
    unanswered.push_back({"rate 38400", "lost"});
    const std::pair<Script, std::string> cases[] = {
        {unanswered, "Matching data failed" + gone},
        {join({kReset, {{"rate 9600", "lost"}}}),
         "SIO::SIO_ChangeBaudrate: SetCommState failed" + gone},
        {join({kReset, {{"rate 9600", ""}, {"5A", "5A"}, {"07", "07"}, {"rate 38400", "lost"}}}),
         "SIO::SIO_ChangeBaudrate: SetCommState failed" + gone},
    };
    for (const auto& [script, errors] : cases) {
        WireWorld world(kDeviceA, script);
        world.addFile("RamImage/a.hex", ":020400001122C7\n:00000001FF");
        TARGET_SetLinkState(LINK_IDLE);
        EXPECT_EQ(TARGET_Connect(), 0);
        EXPECT_EQ(world.deviation(), "");
        EXPECT_EQ(world.errors(), errors);
    }
}

// The chip never answers the checksum command, and the user closes the program meanwhile.
TEST(Wire, EventsRunWhileTheBootRomIsAwaited) {
    WireWorld world(kDeviceB, join({kReset, kMatchB, {{"20", ""}}}));
    const Moment start = CLOCK_Now();
    const ClockThreadPtr user = CLOCK_StartThread([] {
        CLOCK_Sleep(700);
        EVENTS_Post(SIO_CloseAll);
    });
    EXPECT_FALSE(_BootHandshake(*_SelectProtocol()));
    EXPECT_LE(CLOCK_Now().us - start.us, 750'000);
    CLOCK_JoinThread(user);
    EXPECT_EQ(world.deviation(), "");
}

// Right after a boot-ROM command the boot ROM still awaits the next one, unless somebody has reset
// the chip meanwhile.
TEST(Wire, SyncedBootRomIsNotResetAgain) {
    const Script status = {{"90", "90 1234"}, {"C3", "C3 00000000000000"}};
    for (const Script& script : {status, join({{{"90", ""}}, kReset, kMatchA, status})}) {
        WireWorld world(kDeviceA, script);
        BOOT_SetState(BOOT_SYNCED);
        EXPECT_TRUE(_SelectProtocol()->FlashStatus());
        EXPECT_EQ(world.deviation(), "");
    }
}

TEST(Wire, PasswordFrameHasTheAddressesOfTheChip) {
    for (const auto& [length, frame] : std::vector<std::pair<std::string, std::string>>{
             {"RAMCodeAdrLen = 2", "0010 1000 A1A2"},
             {"RAMCodeAdrLen = 3", "000010 011000 A1A2"},
             {"", "000010 011000 A1A2"}}) {
        SCOPED_TRACE(length);
        WireWorld world("Bank = 8000,8000\nUARTRamcode = \"a.hex\", \"TYPE_A\"\n"
                        "Relocate = 10000,11000,100\n" +
                            length,
                        {{"90", "90 1234"}, {"FA", "FA"}, {frame, "FB"}});
        PASSWORD_SetAdrCount(0x10);
        PASSWORD_SetAdrCompare(0x10000);
        BOOT_SetState(BOOT_SYNCED);
        EXPECT_TRUE(_SelectProtocol()->ReadProtect());
        EXPECT_EQ(world.deviation(), "");
    }
}
