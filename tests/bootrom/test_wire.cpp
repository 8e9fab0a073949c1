// What goes over the line while the program talks to a boot ROM, byte for byte.

#include "bootrom/connect.h"
#include "bootrom/download.h"
#include "bootrom/flash_commands.h"
#include "bootrom/handshake.h"
#include "link/password.h"
#include "link/target_link.h"
#include "link/target_state.h"
#include "support/script_world.h"

#include <algorithm>
#include <sstream>

namespace {

const std::string kDeviceA =
    "Bank = 8000,8000\nUARTRamcode = \"a.hex\", \"TYPE_A\"\nRam = 0200,0400\n"
    "RAMCodeAdrLen = 2\nPWArea = FFC0,20\nTimeoutGetSUM = 5000\n"
    "TimeoutEraseAll = 30000\n";
const std::string kDeviceB =
    "Bank = 0,8000\nUARTRamcode = \"b.s\", \"TYPE_B\"\nTimeoutGetSUM = 5000\n"
    "TimeoutEraseAll = 30000\n";

// "WHAT>ANSWER" a step, as ScriptStep has them; line calls with "_" for their space.
Script talk(const std::string& text) {
    Script script;
    std::istringstream steps(text);
    for (std::string step; steps >> step;) {
        std::ranges::replace(step, '_', ' ');
        const size_t mark = step.find('>');
        script.push_back({step.substr(0, mark), step.substr(mark + 1)});
    }
    return script;
}

const Script kReset = talk("DTR_on> RTS_on> DTR_off>");
const Script kMatchA = talk("rate_9600> 5A>5A 07>07 rate_38400>");
const Script kSumA = talk("90>901234");
const Script kMatchB = talk("86>86");
const Script kSumB = talk("20>201234BA");

Script join(std::initializer_list<Script> parts) {
    Script all;
    for (const Script& part : parts) {
        all.insert(all.end(), part.begin(), part.end());
    }
    return all;
}

Result<> download(const std::string& path) {
    return _DownloadRamImage(*_SelectProtocol(), path, false);
}

Result<> eraseChip() {
    return _EraseChip(*_SelectProtocol());
}

std::function<Result<>()> slot(Result<> (*BootRomProtocol::*member)()) {
    return [member] { return (_SelectProtocol()->*member)(); };
}

// The link is the boot ROM's and the user has given a password.
struct WireWorld : ScriptWorld {
    WireWorld(const std::string& device, const Script& script) : ScriptWorld(device, script) {
        TARGET_SetLinkState(LINK_BOOTROM);
        PASSWORD_SetAdrCount(0xFFC0);
        PASSWORD_SetAdrCompare(0xFFC1);
        PASSWORD_SetBytes(std::vector<uint8_t>{0xA1, 0xA2});
    }
};

} // namespace

TEST(Wire, DownloadTypeA) {
    WireWorld world(kDeviceA + "TimerInit = 1\nProductInfo = C0,4,1,\"5654\"",
                    join({kReset, kMatchA, kSumA,
                          talk("C0>00565499 60>60 FFC0FFC1A1A2> 3A020400001122C7> "
                               "3A020402001A00DE> 3A00000001FF>4567")}));
    DEVPROPS_SetSpeed(16000000);
    const std::string path = world.addFile("a.hex", "text\r\n:020400001122C7\r\n:00000001FF\r\n");
    EXPECT_TRUE(download(path));
    EXPECT_EQ(world.errors(), "");
    EXPECT_EQ(BOOT_GetState(), BOOT_RAMCODE);
    EXPECT_EQ(RUN_GetExitCode(), 0);
    EXPECT_EQ(world.log(), "Setting baudrate|Product info:|00 56 54 99 |"
                           "Product info comparison successful|Downloading RAM-Image started: " +
                               path + "|Downloading RAM-Image finished");
}

TEST(Wire, DownloadTypeB) {
    const std::string image = "S0030000FC\nS315000001000102030405060708090A0B0C0D0E0F1000\n"
                              "S31500000120" +
                              repeat("A0", 16) + "00\nS70500000100F9\n";
    WireWorld world(kDeviceB, join({kReset, kMatchB, kSumB,
                                    talk("10>10 A1A200000000000000000000BD>10 000001000030CF>10 "
                                         "0102030405060708090A0B0C0D0E0F10> " +
                                         repeat("FF", 16) + repeat("A0", 16) + "88>10")}));
    EXPECT_TRUE(download(world.addFile("b.s", image)));
    EXPECT_EQ(world.errors(), "");
    EXPECT_EQ(BOOT_GetState(), BOOT_RAMCODE);
}

// What one operation does with one conversation behind the reset and the matching, and that none
// but a failure of the matching has the next operation reset the target again.
struct WireCase {
    const char* name;
    std::string device;
    std::function<Result<>()> run;
    std::string talk;
    bool done;
    std::string reason = {}; // of the failure
    std::string log = {};
    int state = BOOT_SYNCED;
};

static void check(const WireCase& c, const Script& before) {
    SCOPED_TRACE(c.name);
    WireWorld world(c.device, join({before, talk(c.talk)}));
    const Result<> result = c.run();
    EXPECT_EQ(bool(result), c.done);
    EXPECT_EQ(result ? "" : result.error().reason, c.reason);
    EXPECT_EQ(world.errors(), "");
    EXPECT_EQ(BOOT_GetState(), c.state);
    if (!c.log.empty()) {
        EXPECT_EQ(world.log(), "Setting baudrate|" + c.log);
    }
}

TEST(Wire, BootRomCommands) {
    const std::string start = "Erasing Chip started|";
    const std::string notErased = start + "Erasing Chip failed";
    const std::string reported = start + "Compared nothing: the boot ROM reported the erase "
                                         "(Blankcheck reads the chip)|Erasing Chip finished";
    const std::string byCommand = kDeviceA + "SprtFlashEraseCMD = 1";
    const auto status = slot(&BootRomProtocol::FlashStatus);
    const auto protect = slot(&BootRomProtocol::ReadProtect);
    const WireCase typeA[] = {
        {"rewrite", kDeviceA, eraseChip, "30>30C1 3A00000001FF>8000", true, "",
         start + "By its checksum 8000 the chip is blank|Erasing Chip finished"},
        {"rewrite without sum", kDeviceA, eraseChip, "30>30C1 3A00000001FF>80", false, "",
         notErased},
        {"data is left", byCommand, eraseChip, "F0>F0 FFC0FFC1A1A2> F1>8001", false, "", notErased},
        {"never ends", byCommand, eraseChip, "F0>F0 FFC0FFC1A1A2> F1>", false, "", notErased},
        {"status", kDeviceA, status, "C3>C300010203040506", true, "",
         "Flash memory status:|00 01 02 03 04 05 06 "},
        {"status short", kDeviceA, status, "C3>C30001", false},
        {"read protect", kDeviceA, protect, "FA>FA FFC0FFC1A1A2>FB", true, "",
         "Flash memory read protection command executed"},
        {"read protect refused", kDeviceA, protect, "FA>FA FFC0FFC1A1A2>00", false,
         "Flash memory read protection command failed"},
    };
    for (const WireCase& c : typeA) {
        check(c, join({kReset, kMatchA, kSumA}));
    }
    const WireCase typeB[] = {
        {"rewrite 0", kDeviceB, eraseChip, "20>201234BA 40>404FB1", true, "", reported},
        {"protect", kDeviceB, slot(&BootRomProtocol::ProtectChip),
         "60>60 A1A200000000000000000000BD>60", true},
    };
    for (const WireCase& c : typeB) {
        check(c, join({kReset, kMatchB}));
    }
}

TEST(Wire, FailedHandshakes) {
    const std::string product = kDeviceA + "ProductInfo = C0,4,1,\"5654\"";
    const std::string beyond = kDeviceA + "ProductInfo = C0,4,3,\"5654\"";
    const auto a = [] { return _BootHandshake(*_SelectProtocol()); };
    const std::string synced = "5A>5A 07>07 rate_38400> 90>901234 ";
    const WireCase cases[] = {
        {"nobody", kDeviceA, a, repeat("5A> ", 10) + "rate_38400>", false, "Matching data failed",
         "", BOOT_UNSYNCED},
        {"no answer to the rate", kDeviceA, a, "5A>5A 07> rate_38400>", false, "", "",
         BOOT_UNSYNCED},
        {"product silent", product, a, synced + "C0>0056", false,
         "The chip does not send its product info"},
        {"product text beyond the reply", beyond, a, synced + "C0>00565456", false,
         "The chip is no D (product info: expected 5654, found 56)",
         "Product info:|00 56 54 56 |Product info comparison failed"},
    };
    for (const WireCase& c : cases) {
        check(c, join({kReset, talk("rate_9600>")}));
    }
}

// Stray bytes, late echoes and what the application sends until the chip is in reset cost a try at
// the most; the last of these is the terminal's.
TEST(Wire, MatchGoesPastOtherBytes) {
    const Script reset = talk("DTR_on>4141 RTS_on> DTR_off>42 rate_9600>");
    const std::pair<const char*, const char*> cases[] = {
        {"stray in front of the echo", "5A>FF5A 07>07"},
        {"stray in the echo's place", "5A>00 5A>5A 07>07"},
        {"late echo in front of the code's", "5A> 5A>5A5A 07>5A07"},
    };
    for (const auto& [name, match] : cases) {
        SCOPED_TRACE(name);
        const WireWorld world(kDeviceA, join({reset, talk(match), talk("rate_38400>"), kSumA}));
        EXPECT_TRUE(_BootHandshake(*_SelectProtocol()));
        EXPECT_EQ(TERMINAL_GetText(), "AAB");
    }
}

TEST(Wire, FailedDownloads) {
    const std::tuple<const char*, std::string, const char*, Script, const char*> cases[] = {
        {"no file", kDeviceA, "", talk(""),
         "File not found (/nowhere/image: No such file or directory)|Error reading RAM-Immage "
         "file"},
        {"too high", kDeviceA, ":0206000011 22C5", talk(""), "|RAM-Image does not fit into memory"},
        {"unordered", kDeviceB, "S30600000100AA00\nS30600000100AA00", talk(""),
         "|RAM-Image records overlap or are not in ascending order"},
        // What a boot ROM says of half an image must not count.
        {"half an image", kDeviceA, ":020400001122C7\n:0204020011G2",
         join({kReset, kMatchA, kSumA, talk("60>60 FFC0FFC1A1A2> 3A020400001122C7>0000")}),
         "|Error parsing RAM-image"},
    };
    for (const auto& [name, device, image, script, errors] : cases) {
        SCOPED_TRACE(name);
        WireWorld world(device, script);
        const bool missing = *image == '\0';
        const Result<> result =
            download(missing ? "/nowhere/image" : world.addFile("image", image));
        ASSERT_FALSE(result);
        EXPECT_EQ(world.errors() + "|" + result.error().reason, errors);
        EXPECT_EQ(RUN_GetExitCode(), 1);
    }
}

TEST(Wire, ConnectAsksWhatItNeedsAndRefusesWhatCannotWork) {
    const std::string summary = "Could not download RAM image. Please check password";
    const Script syncedB = join({kReset, kMatchB, kSumB});
    const Script unanswered = talk("10>10 A1A200000000000000000000BD>10 000000100001EF>10 AA> 56>");
    const auto noPassword = [] {
        DEVPROPS_SetResetByPC(false);
        PASSWORD_Reset();
        PASSWORD_SetDialog([] { return 2; });
    };
    const auto unattended = [] {
        DEVPROPS_SetResetByPC(false);
        PASSWORD_Reset();
        RUN_SetUnattended(true);
    };
    const std::tuple<std::string, Script, void (*)(), const char*, std::string> cases[] = {
        {kDeviceA, join({kReset, kMatchA, kSumA}), noPassword,
         "Target: Please reset target\nand then press enter...", summary},
        // Nobody is asked to press reset, but what stops the run is said.
        {kDeviceB, syncedB, unattended, "Password: A password is needed to connect", summary},
        // A description without the time that the last answer may take.
        {kDeviceB + "TimeoutGetSUM = 0\n", join({syncedB, unanswered}), [] {}, "",
         "The device description gives the chip no time to answer the download (TimeoutGetSUM)"},
        {"Bank = 0,8000", talk(""), [] {}, "", "Target::Unsuported RAM-Code protocoll"},
    };
    for (const auto& [device, script, prepare, questions, errors] : cases) {
        SCOPED_TRACE(errors);
        WireWorld world(device, script);
        world.addFile("RamImage/a.hex", ":020400001122C7\n:00000001FF");
        world.addFile("RamImage/b.s", "S30600000010AA00");
        TARGET_SetLinkState(LINK_IDLE);
        prepare();
        EXPECT_EQ(TARGET_Connect(), 0);
        EXPECT_EQ(world.questions(), questions);
        EXPECT_EQ(world.errors(), errors);
        EXPECT_EQ(RUN_GetExitCode(), 1);
        EXPECT_EQ(TARGET_State().LinkState, LINK_IDLE);
        EXPECT_EQ(BOOT_GetState(), BOOT_UNSYNCED);
    }
}

// The error that is said is the one that the loss was met in, not one about the rate that was to be
// put back, nor one about what would have come next.
TEST(Wire, APortLostAtAChangeOfTheRateIsSaidOnce) {
    const std::string gone = " (COM1 is test://script: the device has gone)";
    const std::string rate = "SIO::SIO_ChangeBaudrate: SetCommState failed" + gone;
    const std::pair<std::string, std::string> cases[] = {
        {"rate_9600> " + repeat("5A> ", 10) + "rate_38400>lost", "Matching data failed" + gone},
        {"rate_9600>lost", rate},
        {"rate_9600> 5A>5A 07>07 rate_38400>lost", rate},
    };
    for (const auto& [script, errors] : cases) {
        WireWorld world(kDeviceA, join({kReset, talk(script)}));
        world.addFile("RamImage/a.hex", ":020400001122C7\n:00000001FF");
        TARGET_SetLinkState(LINK_IDLE);
        EXPECT_EQ(TARGET_Connect(), 0);
        EXPECT_EQ(world.errors(), errors);
    }
}

// The chip never answers the checksum command, and the user closes the program meanwhile.
TEST(Wire, EventsRunWhileTheBootRomIsAwaited) {
    WireWorld world(kDeviceB, join({kReset, kMatchB, talk("20>")}));
    const Moment start = CLOCK_Now();
    const ClockThreadPtr user = CLOCK_StartThread([] {
        CLOCK_Sleep(700);
        EVENTS_Post(SIO_CloseAll);
    });
    EXPECT_FALSE(_BootHandshake(*_SelectProtocol()));
    EXPECT_LE(CLOCK_Now().us - start.us, 750'000);
    CLOCK_JoinThread(user);
}

// Right after a boot-ROM command the boot ROM still awaits the next one, unless somebody has reset
// the chip meanwhile.
TEST(Wire, SyncedBootRomIsNotResetAgain) {
    const Script status = talk("90>901234 C3>C300000000000000");
    for (const Script& script : {status, join({talk("90>"), kReset, kMatchA, status})}) {
        WireWorld world(kDeviceA, script);
        BOOT_SetState(BOOT_SYNCED);
        EXPECT_TRUE(_SelectProtocol()->FlashStatus());
    }
}

TEST(Wire, PasswordFrameHasTheAddressesOfTheChip) {
    const std::pair<std::string, std::string> cases[] = {
        {"RAMCodeAdrLen = 2", "00101000"},
        {"RAMCodeAdrLen = 3", "000010011000"},
        {"", "000010011000"},
    };
    for (const auto& [length, addresses] : cases) {
        SCOPED_TRACE(length);
        WireWorld world("Bank = 8000,8000\nUARTRamcode = \"a.hex\", \"TYPE_A\"\n"
                        "Relocate = 10000,11000,100\n" +
                            length,
                        talk("90>901234 FA>FA " + addresses + "A1A2>FB"));
        PASSWORD_SetAdrCount(0x10);
        PASSWORD_SetAdrCompare(0x10000);
        BOOT_SetState(BOOT_SYNCED);
        EXPECT_TRUE(_SelectProtocol()->ReadProtect());
    }
}
