#include "device/image_checksum.h"
#include "notice/status.h"
#include "persist/ini.h"
#include "platform/event_queue.h"
#include "platform/files.h"
#include "shell/cmdline_commands.h"
#include "shell/command_handler.h"
#include "shell/shell_world.h"
#include "shell/startup.h"

#include <gtest/gtest.h>
#include <regex>

namespace {

// Two devices and some program files; "@" in texts and arguments is its folder.
struct RunsWorld : ShellWorld {
    RunsWorld() {
        DEVICE_Clear();
        const std::string name = "Manufacturer = \"M\"\nDevice = ";
        addFile("a.dev", name + "\"LOW\"\nBank = 0, 100\nIDLenMax = 4\n");
        addFile("b.dev", name + "\"HIGH\"\nBank = 8000, 100\nIDLenMax = 8\nSprtCRC = 1\n");
        write("app.hex", kAppHex);
        write("boot.mot", "S1040010AB40\nS9030000FC\n");
        write("cut.mot", "S1040010AB40\nS104001");
    }
    std::string inFolder(const std::string& text) const {
        return std::regex_replace(text, std::regex("@"), folder.path().string());
    }
    void write(const std::string& name, const std::string& text) const {
        writeFile(folder / name, inFolder(text));
    }
    std::string read(const std::string& name) const { return readFile(folder / name); }
    // From start to end as the program does it; the exit code.
    int run(std::vector<std::string> arguments) const {
        for (std::string& argument : arguments) {
            argument = inFolder(argument);
        }
        EVENTS_Open();
        if (STARTUP_Run(arguments)) {
            while (CMDLINE_IsRunning()) {
                CMDLINE_Poll();
            }
            STARTUP_Finish();
        }
        const int code = RUN_GetExitCode();
        STARTUP_Close();
        return code;
    }
};

constexpr char kPorts[] = "[Settings PORTS]\nCOM1 = \"@/none\"\n";
constexpr char kBadSettings[] = "[Settings DEVICEPROPS]\nDevProps.Device = x\n";
constexpr char kAppProject[] = "Port = 1\nFile = \"@/app.hex\"\nDevice = \"HIGH\"\n";

} // namespace

TEST(Startup, TheNextRunStartsWithWhatSucceeded) {
    const struct {
        const char* project;
        std::vector<std::string> arguments;
        int exitCode;
        const char* remembered; // the program file; none: settings and project stay as they are
        const char* settings = kPorts;
    } cases[] = {
        {kAppProject, {"-Exit"}, 0, "@/app.hex"},
        {kAppProject, {"-FileSaveAs@/out.mot", "-Exit"}, 0, "@/out.mot"},
        {kAppProject, {"-FileSaveAs@/none/out.mot", "-Exit"}, 1, "@/app.hex"},
        {kAppProject, {"@/app.hex", "-FileMerge@/boot.mot", "-Exit"}, 0, "@/app.hex"},
        {kAppProject, {"-FileMerge@/gone.mot", "-Exit"}, 1, "@/app.hex"},
        {kAppProject, {"-EditRelocate20", "-FileMerge@/cut.mot", "-Exit"}, 1, ""},
        {kAppProject, {"gone.hex", "-FileSaveAs@/out.mot", "-Exit"}, 1, nullptr},
        {kAppProject, {"-TargetGetCRC", "-Exit"}, 1, nullptr}, // there is no port
        {kAppProject, {"-OptionsTargetDeviceHIHG", "-Exit"}, 1, nullptr},
        {kAppProject, {"--isolated", "@/boot.mot", "-FileSaveAs@/out.mot", "-Exit"}, 0, nullptr},
        {kAppProject, {"--isolated", "-FileSaveAs@/out.mot", "-Exit"}, 1, nullptr},
        {"File = \"@/gone.hex\"\n", {"-FileSaveAs@/out.mot", "-Exit"}, 1, nullptr},
        {"File = \"@/gone.hex\"\n", {"@/boot.mot", "-Exit"}, 0, "@/boot.mot"},
        {"Device = \"HIHG\"\nPort = 1\n", {"@/boot.mot", "-EditRelocate20", "-Exit"}, 1, nullptr},
        {"Prot = 3\nDevice = \"HIGH\"\n", {"@/boot.mot", "-EditRelocate20", "-Exit"}, 1, nullptr},
        {kAppProject, {"@/app.hex", "-EditRelocate20", "-Exit"}, 1, nullptr, kBadSettings},
        {"Prot = 3\n", {"--isolated", "@/boot.mot", "-EditRelocate20", "-Exit"}, 0, nullptr},
    };
    for (const auto& c : cases) {
        const RunsWorld world;
        world.write("Calvorin.tpu", c.project);
        world.write("tool.ini", c.settings);
        SCOPED_TRACE(std::string(c.project) + c.arguments.front());
        EXPECT_EQ(world.run(c.arguments), c.exitCode);
        if (c.remembered == nullptr) {
            EXPECT_EQ(world.read("Calvorin.tpu"), world.inFolder(c.project));
            EXPECT_EQ(world.read("tool.ini"), world.inFolder(c.settings));
            const bool began = SESSION_Get().commandBegun;
            EXPECT_EQ(began, RUN_IsIsolated());
            EXPECT_EQ(FILES_Exists(world.folder / "tool.log"), !began);
            EXPECT_FALSE(began && FILES_Exists(world.folder / "tool.err"));
            continue;
        }
        const std::string line = world.inFolder(std::string("File = \"") + c.remembered + "\"");
        EXPECT_EQ(world.read("Calvorin.tpu").find(*c.remembered != '\0' ? line : "File") !=
                      std::string::npos,
                  *c.remembered != '\0')
            << world.read("Calvorin.tpu");
        EXPECT_NE(world.read("tool.ini").find("DevProps.Device = "), std::string::npos);
    }
}

TEST(Startup, AnAcceptedSheetIsSavedAtOnce) {
    for (const int answer : {kDialogCancel, kDialogOk}) {
        const ShellWorld world;
        writeFile(world.folder / "tool.ini", "");
        INI_Load();
        EVENTS_Open();
        FRONTEND_Get().optionsSheet = [answer] {
            DEVPROPS_SetResetByPC(true);
            return answer;
        };
        COMMAND_Options();
        const std::string saved = readFile(world.folder / "tool.ini");
        EXPECT_EQ(saved.find("DevProps.ResetByPC = 1") != std::string::npos, answer == kDialogOk);
    }
}

TEST(Startup, OpensTheLogBeforeAnythingIsLogged) {
    RunsWorld world;
    world.write("tool.ini",
                "[Settings MAINFRAME]\nShowLog = 1\n[Settings PORTS]\nCOM1 = \"/none\"\n");
    FRONTEND_Get().hasWindows = true;
    FRONTEND_Get().openView = [&world](View) { world.log += "(view)"; };
    world.run({"none.hex"});
    EXPECT_TRUE(world.log.starts_with("(view)Opening none.hex")) << world.log;
}

// The project's file is opened before the project names the device.
TEST(Startup, JudgesTheProjectsFileByTheProjectsDevice) {
    const struct {
        const char* inSettings;
        std::string inProject;
        bool fits;
    } cases[] = {{"0", "LOW", true}, {"1", "LOW", true}, {"0", "HIGH", false}};
    for (const auto& c : cases) {
        const RunsWorld world;
        world.write("Calvorin.tpu", "File = \"@/app.hex\"\nDevice = \"" + c.inProject + "\"\n");
        world.write("tool.ini", std::string("[Settings DEVICEPROPS]\nDevProps.Device = ") +
                                    c.inSettings + "\nDevProps.aBlockSelect[1] = 1\n" + kPorts);
        EVENTS_Open();
        EXPECT_TRUE(STARTUP_Run({}));
        EXPECT_EQ(HEXDATA_GetFits(), c.fits) << c.inSettings << c.inProject;
        EXPECT_EQ(HEXDATA_GetChecksum(), DEVICE_CalcImageChecksum(!c.fits));
        EXPECT_EQ(PASSWORD_GetLimits().MaxLen, c.fits ? 4U : 8U);
        EXPECT_EQ(STATUS_GetText(STATUS_DEVICE), "MCU: " + c.inProject);
        STARTUP_Close();
    }
}
