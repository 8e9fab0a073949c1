#include "platform/format.h"
#include "shell/checks.h"
#include "shell/command_ids.h"
#include "shell/command_table.h"
#include "shell/project.h"
#include "shell/shell_world.h"

#include <gtest/gtest.h>

using std::string_literals::operator""s;

namespace {

// Flash 0x8000 to 0xFFFF, a reset vector at 0xFFFE and another at 0xFFFC, and a password.
const std::string kVectors = "Device = \"V\"\nManufacturer = \"M\"\nBank = 8000, 8000\n"
                             "IVector = 0, \"NMI\", 16, FFFC, 1, \"RESET_Vector\", 16, FFFE\n";
const std::string kPassword = kVectors + "UARTRamcode = \"x\", \"TYPE_B\"\nIDLenMin = 4\n"
                                         "aIDAdr = 9000, 9001, 9002, 9003\n";

} // namespace

TEST(Checks, JudgeResetVectorAndPassword) {
    const struct {
        uint32_t address;
        std::vector<uint8_t> bytes;
        ResetVectorVerdict vector;
        PasswordVerdict password = PASSWORD_INCOMPLETE;
    } cases[] = {
        {0xFFFC, {}, RESET_VECTOR_NONE},
        {0xFFFC, {0xFF, 0xFF, 0xFF, 0xFF}, RESET_VECTOR_NONE},
        {0xFFFC, {0x00, 0x90, 0xFF, 0xFF}, RESET_VECTOR_MISSING},
        {0xFFFC, {0x00, 0x90}, RESET_VECTOR_MISSING},
        {0xFFFC, {0x00, 0x90, 0x00}, RESET_VECTOR_MISSING},
        {0xFFFC, {0x00, 0x90, 0x00, 0x80}, RESET_VECTOR_GOOD},
        {0xFFFC, {0xFF, 0xFF, 0xFF, 0x7F}, RESET_VECTOR_OUTSIDE},
        {0x9000, {1, 2, 3, 4}, RESET_VECTOR_NONE, PASSWORD_PLAUSIBLE},
        {0x9000, {5, 5, 5, 5}, RESET_VECTOR_NONE, PASSWORD_UNIFORM},
        {0x9000, {1, 2, 3}, RESET_VECTOR_NONE},
        {0x9004, {1}, RESET_VECTOR_NONE},
    };
    for (const auto& c : cases) {
        const ShellWorld world(kPassword);
        HEXDATA_AddData(c.address, c.bytes);
        EXPECT_EQ(CHECKS_ResetVector(), c.vector) << &c - cases;
        EXPECT_EQ(CHECKS_Password(), c.password) << &c - cases;
    }
    const ShellWorld typeA(kVectors);
    EXPECT_EQ(CHECKS_Password(), PASSWORD_PLAUSIBLE);
}

TEST(Checks, AskBeforeADoubtfulProgramIsWritten) {
    const std::vector<uint8_t> doubtful{0x00, 0x90};
    ShellWorld world(kPassword);
    ERROR_SetHandlers(
        {},
        [&](WindowHandle, const std::string& text, const std::string& caption, unsigned boxType) {
            EXPECT_EQ(boxType, unsigned{BOX_YES_NO | BOX_DEFAULT_SECOND});
            world.reports.push_back(caption + ": " + text);
            return world.reports.size() == 1 ? 0 : ANSWER_NO;
        },
        {});
    ShellWorld::load(0xFFFC, doubtful);
    CHECKS_Auto();
    EXPECT_EQ(world.reports,
              (std::vector<std::string>{
                  "Reset Vector: File does not contain a reset vector!\nContinue?",
                  "Password Warning: File does not contain all password bytes!\nContinue?"}));
}

TEST(Summary, TellsWhetherTheDataFitsTheSelectedBlocks) {
    ShellWorld world; // three blocks of 0x100 from 0
    ShellWorld::load(0x080, std::vector<uint8_t>(0x200));
    EXPECT_TRUE(HEXDATA_GetFits());
    DEVPROPS_SelectBlock(1, false); // the data starts and ends in selected blocks all the same
    SUMMARY_Refresh();
    EXPECT_FALSE(HEXDATA_GetFits());
    EXPECT_EQ(HEXDATA_GetChecksum(), 0xFF * 0x100);
    CHECKS_Auto();
    DEVPROPS_SelectBlock(0, false);
    DEVPROPS_SelectBlock(2, false);
    CHECKS_Program();
    EXPECT_EQ(world.reports, (std::vector<std::string>{"File does not fits into selected blocks",
                                                       "No block is selected"}));
}

TEST(Menu, FollowsItsRules) {
    const ShellWorld world;
    const auto expectEnabled = [](std::initializer_list<int> ids, bool expected) {
        for (const int id : ids) {
            EXPECT_EQ(COMMAND_IsEnabled(id), expected) << id;
        }
    };
    expectEnabled({CMD_FILE_OPEN, CMD_EXIT, CMD_TARGET_ERASE_CHIP, CMD_VIEW_DEVICE}, true);
    expectEnabled({CMD_FILE_SAVE, CMD_VIEW_HEX_DUMP, CMD_TARGET_AUTO, CMD_EDIT_RELOCATE,
                   CMD_TARGET_START_APPLICATION, CMD_TARGET_PROTECT_CHIP, CMD_TARGET_FLASH_STATUS},
                  false);
    ShellWorld::load(0, {1});
    DEVPROPS_SetResetByPC(true);
    expectEnabled({CMD_FILE_SAVE, CMD_TARGET_AUTO, CMD_VIEW_HEX_DUMP, CMD_TARGET_START_APPLICATION},
                  true);
    const TargetBusy busy;
    expectEnabled({CMD_FILE_OPEN, CMD_FILE_SAVE, CMD_EXIT, CMD_TARGET_AUTO, CMD_RECENT_PROJECT_LAST,
                   CMD_TARGET_ERASE_CHIP},
                  false);
    expectEnabled({CMD_VIEW_HEX_DUMP, CMD_VIEW_DEVICE, CMD_HELP_ABOUT}, true);
}

TEST(Project, RestoresWhatItSaved) {
    const ShellWorld world;
    ShellWorld::select(kVectors);
    DEVPROPS_SetDevice(0);
    const std::string project =
        "\\\\\r\n\\\\ Calvorin project file\r\n\\\\\r\nPort = 7\r\nBaudrate = 31250\r\n"
        "Logging = 0\r\nDevice = \"V\"\r\nPasswordAdrCount = ABCD\r\n"
        "PasswordAdrCompare = 12\r\nPasswordFillFF = 0\r\nPasswordHexmode = 1\r\n"
        "Password = \"01FE\"\r\n";
    const std::string path = world.folder / "p.tpu";
    writeFile(path, project);
    EXPECT_EQ(PROJECT_Load(path), ProjectRead::whole);
    EXPECT_EQ(SIO_GetPort(), 7U);
    EXPECT_EQ(PASSWORD_GetAdrCount(), 0xABCDU);
    EXPECT_TRUE(PASSWORD_GetHexmode());
    namespace fs = std::filesystem;
    for (const std::string& programFile :
         {""s, "a \"b\".hex"s, "a\0b.hex"s, std::string(500, 'x'), "/dev/zero"s}) {
        fs::remove(path);
        PROJECT_Save(path, programFile);
        EXPECT_EQ(readFile(path), project) << "no File line";
    }
    // A password is its owner's, also where there was a file, with the same text or another.
    for (const uint32_t count : {0xABCDU, 0xABCDU, 0x1U}) {
        EXPECT_EQ(fs::status(path).permissions(), fs::perms::owner_read | fs::perms::owner_write);
        fs::permissions(path, fs::perms(0644));
        PASSWORD_SetAdrCount(count);
        PROJECT_Save(path, "");
    }
    PROJECT_Save(path, "a.hex");
    EXPECT_NE(readFile(path).find("Logging = 0\r\nFile = \"a.hex\"\r\nDevice = "),
              std::string::npos);
    SIO_SetPort(0);
    PROJECT_Save(path, "");
    EXPECT_EQ(PROJECT_Load(path), ProjectRead::whole) << "a port that was never chosen";
    SIO_SetDevice("tcp://host:1");
    PROJECT_Save(path, "");
    SIO_SetPort(3);
    EXPECT_EQ(PROJECT_Load(path), ProjectRead::whole);
    EXPECT_EQ(SIO_GetDevice(), "tcp://host:1") << readFile(path);
    SIO_SetPort(0);
    for (const uint32_t rate : {0U, 1'000'001U, 0x80000000U, 0xFFFFFFF6U}) {
        SIO_SetBaudrate(rate);
        PROJECT_Save(path, "");
        EXPECT_EQ(readFile(path).find("Baudrate"), std::string::npos) << rate;
    }
    PROJECT_Save(world.folder / "none" / "p.tpu", "");
    EXPECT_NE(world.log.find("p.tpu is not written: "), std::string::npos) << world.log;
    EXPECT_TRUE(world.reports.empty() && world.screen.questions.empty());
}

TEST(Project, StopsAtTheFirstFault) {
    const std::pair<std::string, const char*> cases[] = {
        {"Port = 0\n", "Expected a value >= 1"},
        {"Port : 3\n", "Expected '=', got ':'"},
        {"Port = \n", "Expecting a number"},
        {"Speed = 3\n", "Unknown identifier: Speed"},
        {"Password = \"ABC\"\n", "Odd length is illegal"},
        {"Password = \"" + std::string(516, '0') + "\"\n", "HexString too long"},
        {"Device = V\n", "Expected a text in double quotes"},
        {"PortDevice = \"x\"\n", "A port is named by its path or URL"},
        {"# x\n\0\n"s, "Unexpected NUL byte"},
    };
    for (const auto& [statement, fault] : cases) {
        ShellWorld world;
        const std::string path = world.folder / "p.tpu";
        writeFile(path, "# comment\n\\\\\nBaudrate = 9600 and more\n" + statement + "Port = 5\n");
        EXPECT_EQ(PROJECT_Load(path), ProjectRead::partly) << statement;
        EXPECT_EQ(world.screen.questions,
                  std::vector{std::string("Error reading project file: ") + fault});
        EXPECT_EQ(SIO_GetBaudrate(), 9600U); // what was read before stays applied
        EXPECT_EQ(SIO_GetPort(), 0U);
    }
    const ShellWorld world;
    const std::string none = world.folder / "none.tpu";
    EXPECT_EQ(PROJECT_Load(none), ProjectRead::failed);
    EXPECT_EQ(world.log, none + ": No such file or directory");
    EXPECT_EQ(world.reports, std::vector<std::string>{"Read file failed (" + none +
                                                      ": No such file or directory)"});
}

TEST(Project, KeepsWhatItCouldNotRead) {
    ShellWorld world;
    ShellWorld::select(kVectors); // "V"
    DEVPROPS_SelectBlock(1, false);
    const std::string path = world.folder / "p.tpu";
    const std::string kept = path + ".bad";
    const struct {
        const char* text;
        bool isKept;
        const char* device;
    } cases[] = {{"Port = 3\n\nPort = x\nDevice = \"V\"\n", true, "VT-1"},
                 {"Device = \"W\"\nPort = 3\n", true, "VT-1"},
                 {"Port = 3\nDevice = \"V\"\n", false, "V"}};
    for (const auto& c : cases) {
        DEVPROPS_SetDevice(0);
        DEVPROPS_SelectBlock(0, false);
        writeFile(path, c.text);
        std::filesystem::remove_all(kept);
        std::filesystem::create_directories(kept + "/in the way");
        PROJECT_Open(path);
        EXPECT_EQ(DEVICE_GetName(), c.device);
        EXPECT_EQ(DEVPROPS_IsBlockSelected(0), DEVPROPS_GetDevice() != 0)
            << "of another device all are";
        EXPECT_EQ(SIO_GetPort(), 3U);
        EXPECT_EQ(SESSION_Get().projectPath, path);
        PROJECT_SaveCurrent();
        EXPECT_EQ(readFile(path) == c.text, c.isKept) << "what cannot be kept is not written over";
        const auto isNoted = [&](const std::string& what) {
            return world.log.ends_with(
                formatText("Note: the project %s could not be read to its end; %s", path.c_str(),
                           what.c_str()));
        };
        EXPECT_EQ(isNoted("it stays as it is, without the values of this run (" + kept +
                          ": Is a directory)"),
                  c.isKept)
            << world.log;
        std::filesystem::remove_all(kept);
        PROJECT_SaveCurrent();
        EXPECT_EQ(isNoted("it is kept as " + kept), c.isKept) << world.log;
        EXPECT_EQ(FILES_Exists(kept), c.isKept);
        EXPECT_EQ(c.isKept ? readFile(kept) : c.text, c.text);
        EXPECT_TRUE(readFile(path).starts_with("\\\\\r\n"));
    }
    PROJECT_Open(world.folder / "none.tpu");
    FRONTEND_Get().chooseFile = [&world](const FileRequest&) {
        return FileChoice{world.folder / "none" / "q.tpu", 0};
    };
    PROJECT_SaveAsDialog();
    EXPECT_EQ(SESSION_Get().projectPath, path) << "the last that could be opened or saved";
    std::string title;
    FRONTEND_Get().setTitle = [&title](const std::string& text) { title = text; };
    FRONTEND_Get().chooseFile = [&world](const FileRequest&) {
        return FileChoice{world.folder / "other.tpu", 0};
    };
    PROJECT_SaveAsDialog();
    EXPECT_EQ(SESSION_Get().projectPath, world.folder / "other.tpu");
    EXPECT_FALSE(title.empty());
}
