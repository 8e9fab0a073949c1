// The last line of an unattended run, and the result of one that a fault of its own ends.

#include "notice/status.h"
#include "platform/process.h"
#include "shell/command_ids.h"
#include "shell/result.h"
#include "shell/run_words.h"
#include "shell/shell_world.h"
#include "shell/verdict.h"
#include "support/result_schema.h"

#include <gtest/gtest.h>
#include <regex>

namespace {

// Runs a command that leaves this exit code.
void runs(int command, int exitCode = 0) {
    VERDICT_CommandStarts(*COMMAND_Find(command));
    RUN_SetExitCode(exitCode);
    VERDICT_CommandEnds(command);
}

void isLeftOut(int command) {
    VERDICT_CommandEnds(command);
}

} // namespace

TEST(Verdict, SaysWhatWasDoneAndWhereItStopped) {
    const struct {
        std::function<void()> run;
        std::string done;
        std::string chip = "----";
    } cases[] = {
        {[] {
             runs(CMD_TARGET_AUTO);
             STATUS_SetText("Target CRC: 1A2B", STATUS_CHECKSUM);
             runs(CMD_TARGET_VERIFY);
             runs(CMD_EXIT);
         },
         "Passed: VT-1, TargetAuto, TargetVerify", "1A2B"},
        {[] {
             runs(CMD_TARGET_GET_CRC);
             STATUS_SetText("Target CRC: 1A2B", STATUS_CHECKSUM);
             runs(CMD_TARGET_ERASE_CHIP); // what was read before it says nothing any more
             runs(CMD_TARGET_VERIFY, 1);
             isLeftOut(CMD_TARGET_VERIFY);
             runs(CMD_EXIT, 1);
         },
         "Failed: VT-1, stopped in TargetVerify, done: TargetGetCRC, TargetEraseChip"},
        {[] {
             RUN_SetExitCode(1); // the file could not be loaded
             isLeftOut(CMD_TARGET_AUTO);
             isLeftOut(CMD_TARGET_VERIFY);
         },
         "Failed: VT-1, stopped before TargetAuto"},
        {RUN_Interrupt, "Failed: VT-1, stopped by the user"},
    };
    for (const auto& c : cases) {
        const ShellWorld world(kHead + "Bank = 100, 100, 200, 100, 300, 100\n");
        DEVPROPS_SelectBlock(2, false);
        ShellWorld::load(0x10, {1, 2, 3});
        RUN_SetUnattended(true);
        STATUS_SetText("Target CRC: ----", STATUS_CHECKSUM);
        VERDICT_Begin();
        c.run();
        EXPECT_EQ(std::regex_replace(VERDICT_Line(false), std::regex(", [0-9][.][0-9] s$"), ""),
                  c.done + ", blocks 0-1 3 of 4, 3 bytes, SUM of image FA09, of chip " + c.chip);
    }
    RUN_SetExitCode(1);
    EXPECT_EQ(VERDICT_Line(true), "Failed: refused before anything was begun");
    RUN_Reset();
}

TEST(Verdict, StandsInTheResultOfARunThatAnExceptionEnds) {
    const TempFolder folder;
    const auto run = [&folder] {
        RUNWORDS_Get().resultPath = folder / "result.json";
        PROCESS_ReportExceptions(RESULT_WriteFault);
        std::thread([] { throw std::bad_alloc(); }).join();
    };
    EXPECT_EXIT(run(), testing::ExitedWithCode(1), "the memory does not suffice");
    const nlohmann::json result = validResult(readFile(folder / "result.json"));
    EXPECT_EQ(result["verdict"], "failed");
    EXPECT_EQ(result["stage"], "fault");
    EXPECT_EQ(result["errors"][0], "the memory does not suffice");
}
