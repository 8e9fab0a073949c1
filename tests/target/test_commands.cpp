// Every command on the virtual chips: what it does to the chip, what it says, how it ends.

#include "bootrom/connect.h"
#include "device/image_fit.h"
#include "link/chip_record.h"
#include "notice/progress.h"
#include "notice/status.h"
#include "platform/format.h"
#include "shell/checks.h"
#include "shell/edit_history.h"
#include "shell/edit_operations.h"
#include "shell/image_origin.h"
#include "shell/program_files.h"
#include "shell/session.h"
#include "target/operation.h"
#include "target_world.h"

namespace {

const std::vector<std::string> kDevices = {"VT-A32",  "VT-A60",  "VT-A64R", "VT-A96",  "VT-AE16",
                                           "VT-B128", "VT-B256", "VT-B32R", "VT-B64S", "VT-BE32"};

// What a display shows of a command, looked at every millisecond: how far which bar came, what it
// counts, and the steps.
std::string shownBy(void (*command)()) {
    std::string shown;
    std::atomic<bool> runs{true};
    std::string last;
    ProgressView highest;
    const auto take = [&] {
        if (highest.max > 0) {
            shown += formatText("%s %d/%d%s%s|", highest.line1.c_str(), highest.pos, highest.max,
                                highest.byteCount ? " bytes" : "",
                                highest.showCancel ? "" : ", no Cancel");
        }
        highest = {};
    };
    const ClockThreadPtr user = CLOCK_StartThread([&] {
        while (runs) {
            const ProgressView view = PROGRESS_GetView();
            if (view.line1 != highest.line1) {
                take();
            }
            if (!view.closeRequest && view.hasRange && view.pos >= highest.pos) {
                highest = view;
            }
            if (view.step != last && !view.step.empty()) {
                shown += view.step + ";";
            }
            last = view.step;
            CLOCK_Sleep(1);
        }
    });
    command();
    runs = false;
    CLOCK_JoinThread(user);
    take();
    return shown;
}

// Cancels the next operation when it has run for a tenth of a second.
ClockThreadPtr cancelSoon() {
    return CLOCK_StartThread([] {
        CLOCK_Wait(CLOCK_After(5000), [] { return TARGET_State().Operation != 0; });
        CLOCK_Sleep(100);
        TARGET_Cancel();
    });
}

void downloadAgain(const char* image) {
    TARGET_Disconnect();
    TARGET_DownloadRamImage(FILES_ProgramFolder() + image);
}

void runAutoAndVerify() {
    TARGET_EraseSelectedBlocks();
    TARGET_Program(HEXDATA_GetFirstAddr(), HEXDATA_GetLastAddr());
    runVerify();
}

} // namespace

TEST(Commands, ShowHowFarTheyAre) {
    const std::tuple<const char*, void (*)(), const char*> cases[] = {
        {"VT-A32", [] { downloadAgain("RamImage/vt-a.hex"); },
         "Downloading RAM Image... 1091/1092 bytes|"},
        {"VT-B128", [] { downloadAgain("RamImage/vt-b.s"); },
         "Downloading RAM Image... 596/596 bytes|"},
        {"VT-B128", runAutoAndVerify,
         "Erasing blocks... 4/4|block 0 of 4;block 3 of 4;Programming chip... 428/500 bytes|block "
         "0 of 4;block 1 of 4;"
         "block 2 of 4;block 3 of 4;Getting CRC... 3/4|block 0 of 4;block 3 of 4;"
         "Verifying... 428/500 bytes|"},
        {"VT-B128", [] { TARGET_ReadBack(0, 0x3FF); },
         "block 0 of 4;Reading back... 768/1023 bytes|"},
        {"VT-B128", TARGET_BlankCheckChip,
         "block 0 of 4;block 1 of 4;block 2 of 4;block 3 of 4;Checking if blank... 3/4|"},
        {"VT-B128", TARGET_EraseBlocks, "Erasing blocks... 4/4|"},
        {"VT-AE16", TARGET_EraseBlocks, "block 0 of 1;Erasing blocks... 0/1, no Cancel|"},
        {"VT-AE16", TARGET_ProgramTarget,
         "block 0 of 1;Programming target... 16320/16384 bytes, no Cancel|"},
        {"VT-AE16", [] { TARGET_Program(HEXDATA_GetFirstAddr(), HEXDATA_GetLastAddr()); },
         "block 0 of 1;Programming chip... 492/500 bytes, no Cancel|Getting SUM... 1/2|"},
        {"VT-AE16", TARGET_BlankCheckBlocks, "block 0 of 1;Checking if blank... 0/1|"},
    };
    for (const auto& [device, command, shown] : cases) {
        SCOPED_TRACE(std::string(device) + " " + shown);
        WorldOptions options{.device = device, .chip = {}, .baudrate = 115200};
        options.chip.pacing = true;
        const TargetWorld world(options);
        EXPECT_EQ(TARGET_Connect(), 1);
        PROGRESS_Reset(); // what the connect has left
        EXPECT_EQ(shownBy(command), shown);
    }
}

TEST(Commands, ProgramVerifyReadAndEraseEveryDevice) {
    for (const std::string& device : kDevices) {
        SCOPED_TRACE(device);
        TargetWorld world({.device = device, .chip = {}});
        TARGET_BlankCheckChip();
        EXPECT_TRUE(world.hasLogged("Blank check finished"));
        runAuto();
        EXPECT_TRUE(world.chipHoldsProgram());
        EXPECT_TRUE(world.hasLogged("Programming finished") ||
                    world.hasLogged("Programming target finished"));
        runVerify();
        EXPECT_TRUE(world.hasLogged("Verifying finished"));
        EXPECT_TRUE(world.hasLogged("Programming Chip started") ||
                    world.hasLogged(formatText("Programming 0x%06X - 0x%06X started",
                                               HEXDATA_GetFirstAddr(), HEXDATA_GetLastAddr())));
        const std::string sum = formatText("%04X", TARGET_GetCrc(true));
        const char* const kind = DEVICE_GetSprtCRC() != 0 ? "CRC" : "SUM";
        EXPECT_EQ(world.questions().back(), formatText("Get %s: %s = ", kind, kind) + sum);
        TARGET_ReadBack(DEVICE_GetFlashStart(), DEVICE_GetFlashStart() + 0x3FF);
        EXPECT_EQ(HEXDATA_GetNumBytes(), 0x400U);
        EXPECT_TRUE(world.chipHoldsProgram() || HEXDATA_GetLastAddr() < DEVICE_GetFlashEnd());
        EXPECT_EQ(world.allErrors(), "");
        EXPECT_EQ(RUN_GetExitCode(), 0);

        TARGET_BlankCheckBlocks();
        EXPECT_EQ(world.errors().size(), 1U); // where the program begins
        EXPECT_EQ(RUN_GetExitCode(), 1);
        TARGET_EraseBlocks();
        TARGET_BlankCheckBlocks();
        EXPECT_EQ(world.questions().back(), "Blank check blocks: Selected blocks are blank");
        EXPECT_EQ(TARGET_EraseChip(true), 0);
        EXPECT_TRUE(world.chipIsBlank());
        EXPECT_EQ(world.errors().size(), 1U);
        EXPECT_EQ(world.violations(), "");
    }
}

TEST(Commands, OnlySelectedBlocksAreErased) {
    TargetWorld world({.device = "VT-B64S", .chip = {}});
    const std::vector<uint8_t> mark = {1, 2, 3};
    world.putFlash(0x8000, mark);
    world.putFlash(0xC000, mark);
    PASSWORD_SetBytes(std::vector<uint8_t>(12, 0xFF));
    DEVPROPS_SelectBlock(0, false);
    EXPECT_EQ(TARGET_EraseChip(true), 0); // idle, and the boot ROM cannot: the selected blocks
    EXPECT_EQ(world.questions().back(), "Erasing Blocks: Blocks have been\nsuccessfully erased");
    EXPECT_EQ(world.flash(0x8000, 3), mark);
    EXPECT_EQ(world.flash(0xC000, 3), std::vector<uint8_t>(3, 0xFF));
    EXPECT_EQ(TARGET_EraseChip(true), 0); // the loader runs: every block
    EXPECT_TRUE(world.chipIsBlank());
    EXPECT_EQ(world.violations(), "");
}

TEST(Commands, AutoLeavesDeselectedBlocksAlone) {
    const std::string common =
        "Version = 100\nManufacturer = \"M\"\nDevice = \"OWN\"\nBank = 0,4000, 4000,4000\n"
        "UARTRamcode = \"vt-b.s\", \"TYPE_B\"\nFLASHPageLen = 128\nSkipPasswordCheck = 1\n"
        "TimeoutEraseAll = 9000\nTimeoutEraseBlock = 5000\nTimeoutGetSUM = 5000\n"
        "SprtEraseChip = 1\n";
    const std::tuple<const char*, bool, const char*, const char*> cases[] = {
        {"SprtErase = 1", true, "", "Programming: All bytes\nwritten successfully"},
        {"SprtCRC = 0", true, "Auto writes the whole chip, but a block is deselected", ""},
        {"FLASHIsEE = 1", true, "Auto writes the whole chip, but a block is deselected", ""},
        {"FLASHIsEE = 1", false, "",
         "Deselected Blocks: Auto writes the whole chip, deselected blocks too!\nContinue?"},
    };
    for (const auto& [flags, unattended, error, question] : cases) {
        SCOPED_TRACE(flags);
        WorldOptions options;
        options.device = "OWN";
        options.description = common + flags + "\n";
        options.chip.password = std::vector<uint8_t>(12, 0xAA);
        TargetWorld world(options);
        world.screen.answer = ANSWER_NO;
        const std::vector<uint8_t> mark = {1, 2, 3};
        world.putFlash(0x4000, mark);
        HEXDATA_Clear();
        HEXDATA_AddData(0, std::vector<uint8_t>{0x10, 0x20});
        DEVPROPS_SelectBlock(1, false);
        HEXDATA_SetFits(DEVICE_ImageFits());
        RUN_SetUnattended(unattended);
        CHECKS_Auto();
        EXPECT_EQ(world.allErrors(), error);
        EXPECT_EQ(world.questions().empty() ? "" : world.questions().back(), question);
        EXPECT_EQ(world.flash(0x4000, 3), mark);
    }
}

TEST(Commands, WorkOnNoBlockFails) {
    TargetWorld world({.device = "VT-B128", .chip = {}});
    for (const DeviceBlock& block : DEVICE_Blocks()) {
        DEVPROPS_SelectBlock(block.index, false);
    }
    TARGET_EraseBlocks();
    TARGET_BlankCheckBlocks();
    TARGET_GetCrc(true);
    TARGET_Program(0, 1);
    TARGET_ProtectBlocks();
    CHECKS_Auto();
    EXPECT_EQ(world.errors(), std::vector<std::string>(6, "No block is selected"));
    EXPECT_EQ(SIMPORT_Writes(world.line), 0U);
}

TEST(Commands, ProtectAsksFirst) {
    TargetWorld world({.device = "VT-A96", .chip = {}});
    world.screen.answer = ANSWER_NONE;
    TARGET_ProtectBlocks();
    TARGET_ProtectChip();
    EXPECT_EQ(TARGET_ReadProtect(), 1);
    DEVICE_FindByName("VT-B64S"); // by its boot ROM
    TARGET_ProtectChip();
    EXPECT_EQ(SIMPORT_Writes(world.line), 0U);
    EXPECT_EQ(world.questions().size(), 4U);
    DEVICE_FindByName("VT-A96");
    world.screen.answer = ANSWER_OK;
    DEVPROPS_SelectBlock(0, false);
    TARGET_ProtectBlocks();
    SIMPORT_WithChip(world.line, [](Chip& chip) {
        EXPECT_FALSE(CHIP_IsBlockProtected(chip, 0));
        EXPECT_TRUE(CHIP_IsBlockProtected(chip, 1));
    });
    EXPECT_TRUE(CHIPRECORD_Get().size() == 1 && CHIPRECORD_Get()[0].facts.isProtected);
    EXPECT_EQ(CHIPRECORD_Get()[0].range.start, DEVICE_Blocks()[1].range.start);
    TARGET_EraseBlocks(); // protected now
    EXPECT_EQ(world.allErrors(), "Error erasing sector");
    EXPECT_TRUE(world.hasLogged("Erasing Blocks failed"));
}

TEST(Commands, BootRomCommandsLeaveTheLinkIdle) {
    {
        TargetWorld world({.device = "VT-A96", .chip = {}});
        world.screen.answer = ANSWER_OK;
        EXPECT_EQ(TARGET_Connect(), 1);
        EXPECT_EQ(TARGET_FlashStatus(), 0);
        EXPECT_TRUE(world.hasLogged("Flash memory status:"));
        EXPECT_EQ(TARGET_State().LinkState, LINK_IDLE);
        EXPECT_EQ(TARGET_ReadProtect(), 0);
        SIMPORT_WithChip(world.line, [](Chip& chip) { EXPECT_TRUE(CHIP_IsReadProtected(chip)); });
        EXPECT_EQ(world.allErrors(), "");
        EXPECT_EQ(world.violations(), "");
    }
    ChipOptions locked;
    locked.password = std::vector<uint8_t>(12, 0x33);
    TargetWorld world({.device = "VT-B64S", .chip = locked});
    world.screen.answer = ANSWER_OK;
    TARGET_EraseBlocks(); // the checksum of a blank chip is known from here on
    TARGET_Program(HEXDATA_GetFirstAddr(), HEXDATA_GetLastAddr()); // and is wrong from here on
    TARGET_ProtectChip();
    EXPECT_TRUE(world.hasLogged("Protecting Chip finished"));
    for (const ChipStretch& stretch : CHIPRECORD_Get()) {
        EXPECT_TRUE(stretch.facts.isProtected);
    }
    EXPECT_EQ(TARGET_FlashStatus(), 1);
    EXPECT_EQ(world.allErrors(),
              "Flash Memory Status is not supported by the boot ROM of this device");
}

TEST(Commands, DownloadAndStart) {
    ChipOptions talkative;
    talkative.applicationText = "Hello";
    talkative.applicationEcho = true;
    TargetWorld world({.device = "VT-A32", .chip = talkative});
    TARGET_DownloadRamImage((world.folder() / "RamImage" / "vt-a.hex").string());
    EXPECT_EQ(world.questions().back(), "Download RAM-Image: All bytes\nwritten successfully");
    EXPECT_FALSE(PROGRESS_IsOpen());
    EXPECT_EQ(TARGET_State().LinkState, LINK_IDLE);
    EXPECT_EQ(BOOT_GetState(), BOOT_UNSYNCED);

    EXPECT_EQ(TARGET_Connect(), 1);
    const uint64_t before = SIMPORT_BytesToChip(world.line);
    EXPECT_EQ(TARGET_TerminalSend('x'), LINK_RAMCODE);
    EXPECT_FALSE(TARGET_TerminalWrite(std::vector<uint8_t>{'x'}));
    const Moment start = CLOCK_Now();
    TARGET_StartApplication();
    EXPECT_EQ(CLOCK_Now().us - start.us, 650'000) << "with the pause of the disconnect";
    CLOCK_Sleep(100);
    EXPECT_NE(TARGET_TerminalSend('y'), 0);
    CLOCK_Sleep(100);
    EXPECT_EQ(world.terminal, "Helloy");
    EXPECT_GE(SIMPORT_BytesToChip(world.line), before + 1);
    EXPECT_EQ(world.allErrors(), "");
}

TEST(Commands, ChecksumDecidesAboutProgramming) {
    for (const auto& [device, error] :
         {std::pair<const char*, std::string>{"VT-B128", "CRC-error (image 93ED, chip 650A)"},
          {"VT-A96", "SUM-error (image 658E, chip 8A4E)"}}) {
        SCOPED_TRACE(device);
        TargetWorld world({.device = device, .chip = {}});
        world.setFaults({{FaultKind::lostWrite, ChipStep::any, 2}});
        runAuto();
        EXPECT_EQ(world.allErrors(), error);
        EXPECT_TRUE(world.hasLogged("Programming failed"));
        EXPECT_EQ(RUN_GetExitCode(), 1);
        // A checksum that could not be had is a failure, even where an old one would fit.
        world.setFaults(
            {{FaultKind::noReply, ChipStep::crc}, {FaultKind::noReply, ChipStep::frameSum}});
        runAuto();
        EXPECT_EQ(world.errors().back(), "Timeout error");
        EXPECT_EQ(world.errors().size(), 2U);
        EXPECT_FALSE(world.hasLogged("Programming finished"));
        EXPECT_EQ(STATUS_GetText(STATUS_CHECKSUM), "Target " + error.substr(0, 3) + ": ----");
    }
}

// Whoever waits for the command must find the failure already reported: in the log, on the screen,
// in the exit code. The screen may be the user-interface thread's, which is waiting.
TEST(Commands, ReportComesBeforeTheCommandGoesOn) {
    const std::tuple<ChipFault, std::string, int> cases[] = {
        {{FaultKind::errorReply, ChipStep::read, 1, 0x40, 2},
         "Error writing on address 40\nContents: 36",
         LINK_RAMCODE},
        {{FaultKind::noReply, ChipStep::read, 1}, "Timeout error", LINK_IDLE},
        {{FaultKind::slow, ChipStep::read, 5, 0, 500}, "Action canceled", LINK_RAMCODE}, // the last
    };
    for (const auto& [fault, error, linkState] : cases) {
        SCOPED_TRACE(error);
        const std::string beginning = error.substr(0, 13);
        TargetWorld world({.device = "VT-B128", .chip = {}});
        runAuto();
        world.setFaults({fault});
        bool shown = false;
        bool commandReturned = false;
        ERROR_SetHandlers(
            [&](WindowHandle, const std::string& text, const std::string&, int) {
                EXPECT_EQ(text.substr(0, 13), beginning);
                EXPECT_TRUE(EVENTS_PostAndWait([&] {
                    CLOCK_Sleep(3000); // the user reads
                    shown = !commandReturned;
                }));
                EXPECT_EQ(TARGET_State().Operation, OP_VERIFY);
                EXPECT_FALSE(PROGRESS_IsDone());
            },
            {}, RUN_SetExitCode);
        const ClockThreadPtr canceller =
            fault.kind == FaultKind::slow ? cancelSoon() : ClockThreadPtr();
        runVerify();
        commandReturned = true;
        CLOCK_JoinThread(canceller);
        EXPECT_TRUE(shown);
        EXPECT_EQ(RUN_GetExitCode(), 1);
        EXPECT_EQ(TARGET_State().LinkState, linkState);
        TARGET_Stop();
        ERROR_SetHandlers({}, {}, {});
    }
}

// Also where none is offered: it may have been pressed just before.
TEST(Commands, EveryWriteEndsWithACancel) {
    for (void (*const command)() : {TARGET_EraseBlocks, TARGET_ProgramTarget}) {
        WorldOptions options{.device = "VT-AE16", .chip = {}};
        options.chip.pacing = true;
        const TargetWorld world(options);
        EXPECT_EQ(TARGET_Connect(), 1);
        const Moment start = CLOCK_Now();
        const ClockThreadPtr canceller = cancelSoon();
        command();
        CLOCK_JoinThread(canceller);
        EXPECT_LT(CLOCK_Now().us - start.us, 300'000);
        EXPECT_EQ(world.allErrors(), "Action canceled");
    }
}

TEST(Commands, AReadBackThatFailsLeavesTheImage) {
    TargetWorld world({.device = "VT-B128", .chip = {}});
    world.setFaults({{FaultKind::noReply, ChipStep::read, 2}});
    SESSION_Get().image.kind = ImageKind::file;
    const std::vector<AddressRange> loaded = HEXDATA_GetAreas();
    const uint32_t start = DEVICE_GetFlashStart();
    EDIT_ReadBack(start, start + 0x3FF);
    EXPECT_EQ(world.errors().size(), 1U);
    EXPECT_EQ(HEXDATA_GetAreas(), loaded);
    EXPECT_EQ(SESSION_Get().image.kind, ImageKind::file);

    world.setFaults({});
    std::vector<View> opened;
    FRONTEND_Get().openView = [&opened](View view) { opened.push_back(view); };
    EDIT_ReadBack(start, start + 0x3FF);
    EXPECT_EQ(opened, (std::vector{View::hexList, View::hexDump}));
    EXPECT_EQ(HEXDATA_GetAreas(), std::vector{AddressRange::of(start, 0x400)});
    EXPECT_EQ(ORIGIN_Text(), "Read back");
    HISTORY_Undo();
    EXPECT_EQ(HEXDATA_GetAreas(), loaded);
    HISTORY_Redo();
    EXPECT_EQ(ORIGIN_ProgramFile(), "");
    int asked = 0;
    FRONTEND_Get().chooseFile = [&asked](const FileRequest&) {
        ++asked;
        return std::optional<FileChoice>();
    };
    PROGRAM_SaveCurrent();
    EXPECT_EQ(asked, 1);
}

TEST(Commands, ClosingTheFrameEndsARunningCommand) {
    TargetWorld world({.device = "VT-B128", .chip = {}});
    world.setFaults({{FaultKind::slow, ChipStep::eraseBlock, 0, 0, 4000}});
    EXPECT_EQ(TARGET_Connect(), 1);
    const Moment start = CLOCK_Now();
    auto closer = CLOCK_StartThread([] {
        CLOCK_Sleep(1000);
        EVENTS_Post([] { TARGET_Exit(); });
    });
    TARGET_EraseBlocks();
    CLOCK_JoinThread(closer);
    EXPECT_LT(CLOCK_Now().us - start.us, 2'000'000);
    TARGET_Init(nullptr, {});
    TARGET_Stop(); // which says nothing
    EXPECT_EQ(std::ranges::count(world.log(), "Disconnected"), 1);
    EXPECT_FALSE(world.hasLogged("Erasing Blocks finished"));
    EXPECT_EQ(world.allErrors(), "");
}
