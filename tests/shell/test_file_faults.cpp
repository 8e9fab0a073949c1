// Every call on a file that a whole unattended run makes fails once with each error, and the run is
// killed in front of each of them: what the run leaves is the old file or the new one, and success
// is only said of what is there.
#include "device/device_parser.h"
#include "platform/event_queue.h"
#include "platform/files.h"
#include "shell/cmdline.h"
#include "shell/startup.h"
#include "sim/chip.h"
#include "sim/sim_port.h"
#include "sim/virtual_clock.h"
#include "support/fresh_process.h"
#include "support/temp_folder.h"

#include <cerrno>
#include <gtest/gtest.h>
#include <map>
#include <regex>
#include <sys/wait.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

constexpr char kDevice[] =
    "Device = \"SMALL\"\nManufacturer = \"M\"\nSerialSupport = 1\nBank = 0, 80, 80, 80\n"
    "Ram = 20000000, 2000\nUARTRamcode = \"b.s\", \"TYPE_B\"\nFLASHPageLen = 64\n"
    "SprtErase = 1\nTimeoutEraseBlock = 4000\nSprtEraseChip = 1\nTimeoutEraseAll = 9000\n"
    "TimeoutGetSUM = 3000\nSkipPasswordCheck = 1\n";
constexpr char kRamImage[] =
    "S30D2000000011223344556677886E\r\nS3092000000CA1B2C3D4E0\r\nS70520000000DA\r\n";
constexpr int kKilled = 86;

using Contents = std::map<std::string, std::string>;

class Runs {
public:
    Runs() { setenv("XDG_CONFIG_HOME", folder_.path().c_str(), 1); }
    ~Runs() { unsetenv("XDG_CONFIG_HOME"); }

    // The folder as before a run; logs are begun anew by each and only looked for.
    void layOut() const {
        for (const auto& entry : fs::directory_iterator(folder_.path())) {
            fs::remove_all(entry);
        }
        for (const char* const name : {"Device", "RamImage"}) {
            fs::create_directory(folder_ / name);
        }
        writeFile(folder_ / "Device" / "small.dev", kDevice);
        writeFile(folder_ / "RamImage" / "b.s", kRamImage);
        writeFile(folder_ / "app.hex", ":0400000001020304F2\n:00000001FF\n");
        writeFile(folder_ / "boot.mot", "S1040010AB40\nS9030000FC\n");
        writeFile(folder_ / "out.mot", "old\n");
        writeFile(folder_ / "Calvorin.tpu", "Port = 1\nDevice = \"SMALL\"\n");
        writeFile(folder_ / "tool.ini",
                  "[Settings PORTS]\nCOM1 = \"sim://faults\"\n"
                  "[Settings DEVICEPROPS]\nDevProps.aBlockSelect[2] = 1, 1\n");
    }
    Contents contents() const {
        Contents all;
        for (const auto& entry : fs::recursive_directory_iterator(folder_.path())) {
            const std::string name = entry.path().lexically_relative(folder_.path());
            const bool isLog = name.starts_with("tool.") && name != "tool.ini";
            if (entry.is_regular_file() && !isLog) {
                // Which program the next run starts with depends on how far this one came.
                all[name] =
                    std::regex_replace(readFile(entry.path()), std::regex("File = [^\n]*\n"), "");
            }
        }
        return all;
    }
    // The whole run in a process of its own; its exit code. `hook` is asked in front of each call.
    int run(const std::function<int()>& hook) const {
        const pid_t child = fork();
        if (child == 0) {
            EXPECT_NE(freopen(at("tool.out").c_str(), "w", stderr), nullptr);
            _exit(runHere(hook));
        }
        int status = 0;
        waitpid(child, &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    }
    std::string output() const { return readFile(folder_ / "tool.out"); }

private:
    std::string at(const std::string& name) const { return (folder_ / name).string(); }

    int runHere(const std::function<int()>& hook) const {
        freshProcess();
        const VirtualClock clock(1);
        FILES_SetProgramPath(folder_ / "tool");
        SIMPORT_Offer("faults", CHIP_Create(DEVICE_ParseText(kDevice).record.value(), {}));
        FILES_SetCallHook(hook);
        EVENTS_Open();
        if (STARTUP_Run({at("app.hex"), "-FileMerge" + at("boot.mot"), "-TargetAuto",
                         "-FileSaveAs" + at("out.mot"), "-Exit"})) {
            while (CMDLINE_IsRunning()) {
                EVENTS_Post([] {});
                EVENTS_WaitOne();
                CMDLINE_Poll();
            }
            STARTUP_Finish();
        }
        const int code = RUN_GetExitCode();
        STARTUP_Close();
        return code;
    }

    TempFolder folder_;
};

// What stands there after a run that met a fault and is neither as before nor as after a good one.
std::string halves(const Contents& found, const Contents& before, const Contents& after,
                   bool killed) {
    std::string wrong;
    for (const auto& [name, text] : found) {
        const bool known = before.contains(name) || after.contains(name);
        const bool old = before.contains(name) && before.at(name) == text;
        const bool fresh = after.contains(name) && after.at(name) == text;
        const bool goesWithTheNext = killed && name.find(".calvorin-") != std::string::npos;
        if (!old && !fresh && !goesWithTheNext) {
            wrong += name;
            wrong += known ? " is neither\n" + text : " is left\n";
        }
    }
    for (const auto& [name, text] : before) {
        wrong += found.contains(name) ? "" : name + " is gone\n";
    }
    return wrong;
}

} // namespace

TEST(FileFaults, LeaveTheOldFileOrTheNewOneAndNoSuccessThatIsNone) {
    const Runs runs;
    runs.layOut();
    const Contents before = runs.contents();
    EXPECT_EQ(runs.run({}), 0) << runs.output();
    const Contents after = runs.contents();
    ASSERT_NE(after.at("out.mot"), before.at("out.mot"));
    ASSERT_NE(after.at("Calvorin.tpu"), before.at("Calvorin.tpu"));
    // The exit code of a run whose call `at` fails with `error`; 0: it is killed there.
    const auto runWith = [&](int at, int error) {
        runs.layOut();
        int call = 0;
        const int code = runs.run([&call, at, error] {
            return call++ != at ? 0 : error != 0 ? error : (_exit(kKilled), 0);
        });
        const Contents found = runs.contents();
        SCOPED_TRACE("call " + std::to_string(at) + ": " +
                     (error == 0 ? "killed" : strerror(error)) + "\n" + runs.output());
        EXPECT_TRUE(code == 0 || code == (error == 0 ? kKilled : 1)) << code;
        EXPECT_TRUE(code != 1 || runs.output().find(strerror(error)) != std::string::npos);
        EXPECT_EQ(halves(found, before, after, error == 0), "");
        EXPECT_TRUE(code != 0 || found.at("out.mot") == after.at("out.mot"));
        if (code == kKilled) {
            EXPECT_EQ(runs.run({}), 0);
            EXPECT_EQ(runs.contents(), after);
        }
        return code;
    };
    int calls = 0;
    while (!HasFailure() && runWith(calls, 0) == kKilled) {
        ++calls;
    }
    ASSERT_GT(calls, 40);
    int failed = 0;
    for (const int error : {EIO, ENOSPC, EACCES, EMFILE}) {
        for (int at = 0; at < calls && !HasFailure(); ++at) {
            failed += runWith(at, error) == 1 ? 1 : 0;
        }
    }
    EXPECT_GT(failed, calls);
}
