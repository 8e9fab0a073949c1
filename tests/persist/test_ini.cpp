#include "notice/log.h"
#include "notice/run.h"
#include "persist/ini.h"
#include "platform/files.h"
#include "support/reports.h"
#include "support/temp_folder.h"

#include <array>
#include <cerrno>
#include <gtest/gtest.h>
#include <limits>

using std::string_literals::operator""s;

namespace {

// A program folder with a settings file, loaded.
class Ini : public testing::Test {
protected:
    Ini() {
        FILES_SetProgramPath(folder / "tool");
        LOG_SetObserver([this](const std::string&, const std::string& text) { log += text; });
    }
    ~Ini() override {
        LOG_SetObserver({});
        FILES_SetProgramPath({});
    }

    void load(const std::string& text) {
        writeFile(folder / "tool.ini", text);
        INI_Load();
    }
    // A number that is 77 where there is none.
    static int32_t read(const char* section, const char* key) {
        int32_t value = 77;
        INI_ReadInt(section, key, value);
        return value;
    }
    static std::string port(const char* key) {
        std::string device = "none";
        INI_ReadText("Settings PORTS", key, device);
        return device;
    }
    // The file as it is after a save.
    std::string file() const {
        INI_Save();
        return readFile(folder / "tool.ini");
    }
    // A report of the settings file with its path in front.
    std::string inFile(const std::string& rest) const {
        return (folder / "tool.ini").string() + rest;
    }

    // What was reported about the settings file since the last call: "line N: MESSAGE".
    std::string takeFault() {
        const std::string where = inFile(" is faulty in ");
        EXPECT_TRUE(log.starts_with(where)) << log;
        const std::string fault = log.substr(std::min(where.size(), log.size())) + ": ";
        log.clear();
        return fault + reports.take();
    }

    TempFolder folder;
    Reports reports;
    std::string log;
};

} // namespace

TEST_F(Ini, WritesEachFormUnderItsSectionLineTheLastOneFirst) {
    INI_Load();
    INI_WriteRect("Settings LOG", "Rect", {-4, -4, 800, 600});
    EXPECT_EQ(file(), "[Settings LOG]\r\nRect = -4, -4, 800, 600\r\n");

    INI_WriteInt("Settings MAINFRAME", "ShowLog", 1);
    INI_WriteInt("Settings MAINFRAME", "ShowDevice", 0);
    INI_WriteInt("Settings MAINFRAME", "ShowLog", -2);
    INI_WriteIntArray("Settings LOG", "Header", std::array{10, 20, 30});
    INI_WriteString("Settings LOG", "Value", std::array<uint8_t, 2>{0x01, 0xAB});
    EXPECT_EQ(file(), "[Settings LOG]\r\nValue=\"01AB\"\r\nHeader[3] = 10, 20, 30\r\n"
                      "Rect = -4, -4, 800, 600\r\n"
                      "[Settings MAINFRAME]\r\nShowLog = -2\r\nShowDevice = 0\r\n");

    INI_Load();
    INI_WriteInt("Settings MAINFRAME", "ShowDevice", 0); // as it stands, so it stays there
    int32_t rect[4] = {};
    std::array<int32_t, 5> header = {1, 2, 3, 4, 5};
    std::array<uint8_t, 3> bytes = {9, 9, 9};
    INI_ReadRect("Settings LOG", "Rect", rect);
    INI_ReadIntArray("Settings LOG", "Header", header);
    INI_ReadString("Settings LOG", "Value", bytes);
    EXPECT_EQ(std::to_array(rect), (std::array{-4, -4, 800, 600}));
    EXPECT_EQ(header, (std::array{10, 20, 30, 4, 5}));
    EXPECT_EQ(bytes, (std::array<uint8_t, 3>{1, 0xAB, 0}));
    EXPECT_EQ(read("Settings MAINFRAME", "ShowLog"), -2);

    INI_WriteInt("Settings MAINFRAME", "ShowLog", std::numeric_limits<int32_t>::min());
    EXPECT_EQ(file().find("ShowLog = -2\r\nShowDevice = 0\r\n"), file().size() - 30)
        << "what could not be read back is not written";
    INI_DeleteKey("Settings LOG", "Header");
    EXPECT_EQ(file().find("Header"), std::string::npos);
    EXPECT_EQ(reports.take(), "");
}

TEST_F(Ini, FindsSectionsAndKeysInFilesWrittenByHand) {
    load("");
    INI_WriteInt("New", "Key", 1);
    EXPECT_EQ(file(), "//\r\n// Calvorin ini file\r\n//\r\n\r\n[New]\r\nKey = 1\r\n");

    load("Key = 1\n[settings log]\nKey = 2\n[Settings LOG]\n\n  Key\t=\t3\n[Other]\nLast = 4");
    EXPECT_EQ(read("Settings LOG", "Key"), 3);
    EXPECT_EQ(read("Settings LOG", "Last"), 77) << "the section ends at the next one";
    read("Other", "La");
    EXPECT_EQ(takeFault(), "line 8: Expected '=', got 's'") << "a key is the beginning of a line";

    load("[A]\n[B]");
    INI_WriteInt("B", "Key", 5);
    EXPECT_EQ(file(), "[A]\n[B]\r\nKey = 5\r\n");
}

// The run changes C, D, F and G, deletes H, leaves the others alone; somebody edits the file
// meanwhile.
TEST_F(Ini, LeavesWhatIsEditedDuringTheRun) {
    load("[S]\nA=1\nB = 1\nC = 1\nD = 1\nE = 1\nH = 1\n[Settings PORTS]\nCOM1 = \"/a\"\n");
    for (const char* key : {"A", "B"}) {
        INI_WriteInt("S", key, 1);
    }
    for (const char* key : {"C", "D", "F", "G"}) {
        INI_WriteInt("S", key, 2);
    }
    INI_DeleteKey("S", "H");
    EXPECT_EQ(readFile(folder / "tool.ini").find('2'), std::string::npos) << "saved key by key";
    writeFile(folder / "tool.ini", "// mine\n[S]\nA=1\nB = 3\nC = 1\nD = 3\nG = 3\nH = 1\n"
                                   "[Settings PORTS]\nCOM1 = \"/b\"\nCOM2 = \"/c\"\n");
    const std::string merged = "// mine\n[S]\nF = 2\r\nC = 2\r\nA=1\nB = 3\nD = 3\nG = 3\n"
                               "[Settings PORTS]\nCOM1 = \"/b\"\nCOM2 = \"/c\"\n";
    EXPECT_EQ(file(), merged);
    for (const char* key : {"B", "D", "E"}) { // and after a first save
        INI_WriteInt("S", key, 4);
    }
    INI_WriteInt("S", "H", 4);
    INI_WriteInt("S", "C", 4);
    EXPECT_EQ(read("S", "B"), 4) << "the run goes on with its own";
    const std::string again = file();
    EXPECT_TRUE(again.find("B = 3\nD = 3") != std::string::npos &&
                again.find("C = 4\r\nH = 4\r\nF = 2") != std::string::npos)
        << again;
}

TEST_F(Ini, AnIsolatedRunSeesThePortsAndSavesNothing) {
    RUN_SetIsolated(true);
    const std::string text =
        "[S]\nKey = x\n[Settings PORTS]\nCOM1 = \"/a\"\nCOM2 = 5\n[T]\nKey = 6\n";
    load(text);
    EXPECT_EQ(read("S", "Key") + read("T", "Key"), 2 * 77);
    EXPECT_EQ(port("COM1"), "/a");
    EXPECT_EQ(port("COM2"), "none");
    EXPECT_EQ(takeFault(), "line 5: Expected a text in double quotes");
    INI_WriteInt("S", "Key", 8);
    EXPECT_EQ(read("S", "Key"), 8) << "within the run";
    EXPECT_EQ(file(), text);
    RUN_SetIsolated(false);
}

TEST_F(Ini, ReportsWhatCannotBeReadAndKeepsWhatCameBefore) {
    load("[S]\r\nInt = x\r\nRect = 1, 2; 3, 4\r\nArray[5] = 7, 8\r\nOdd=\"123\"\r\n"
         "Long=\"010203\"\r\nBad=\"01xx\"\r\nOpen=\"01\r\n");
    EXPECT_EQ(read("S", "Int"), 77);
    EXPECT_EQ(takeFault(), "line 2: Expecting a number");
    int32_t rect[4] = {9, 9, 9, 9};
    INI_ReadRect("S", "Rect", rect);
    EXPECT_EQ(takeFault(), "line 3: Expected ',', got ';'");
    EXPECT_EQ(std::to_array(rect), (std::array{1, 2, 9, 9}));
    std::array<int32_t, 3> array = {9, 9, 9};
    INI_ReadIntArray("S", "Array", array);
    EXPECT_EQ(takeFault(), "line 4: Expected ',', got '\r'");
    EXPECT_EQ(array, (std::array{7, 8, 9}));
    const std::array faults = {"line 5: Odd length is illegal", "line 6: HexString too long",
                               "line 7: Not a hex value",
                               "line 8: Expected a text in double quotes"};
    for (size_t i = 0; const char* key : {"Odd", "Long", "Bad", "Open"}) {
        std::array<uint8_t, 2> bytes = {9, 9};
        INI_ReadString("S", key, bytes);
        EXPECT_EQ(takeFault(), faults[i++]);
        EXPECT_EQ(bytes[0], key[0] == 'B' ? 1 : 0) << "what came before the fault";
    }
}

TEST_F(Ini, FilesThatAreNoSettingsAreReportedAndKept) {
    const std::string good = "[S]\r\nKey = 5\r\n";
    const std::string large = good + std::string(kIniCapacity - good.size(), 'x');
    load(large);
    EXPECT_EQ(reports.take(),
              inFile(": a settings file holds fewer than 30000 bytes; it is not used"));
    INI_WriteInt("S", "Key", 6);
    EXPECT_EQ(file(), large);

    load(large.substr(0, kIniCapacity - 1));
    INI_WriteInt("S", "Key", 6);
    EXPECT_EQ(reports.take(), "");
    INI_WriteInt("S", "Key", 66);
    EXPECT_EQ(reports.take(),
              inFile(": no room for \"Key\", a settings file holds fewer than 30000 bytes"));
    EXPECT_EQ(read("S", "Key"), 6) << "a refused write changes nothing";

    load("[S]\r\nA\0 = 1\r\n\0B = 2\r\n"s);
    EXPECT_EQ(takeFault(), "line 2: NUL byte, left out");
    EXPECT_EQ(read("S", "B"), 2);

    INI_WriteInt("S", "New", 1);
    writeFile(folder / "tool.ini", large.substr(0, kIniCapacity - 1)); // meanwhile
    INI_Save();
    EXPECT_EQ(reports.take(),
              inFile(": no room for \"New\", a settings file holds fewer than 30000 bytes"));

    FILES_SetCallHook([calls = 0]() mutable { return calls++ == 2 ? EIO : 0; });
    INI_Load();
    FILES_SetCallHook({});
    EXPECT_EQ(reports.take(), "Read file failed (" + inFile(": Input/output error)"));

    std::filesystem::remove(folder / "tool.ini");
    std::filesystem::create_directory(folder / "tool.ini");
    INI_Load();
    INI_WriteInt("S", "B", 3); // nowhere to go, and no message
    INI_Save();
    EXPECT_EQ(reports.take(), inFile(": Is a directory"));
}

// What is a slip of a name is noted; what is a name of another kind, or matches, is not.
TEST_F(Ini, NotesNamesThatAreNearlyOurs) {
    load("[PORTS]\ncom1 = \"a\"\n[Settings PORTS]\r\n  com2= \"b\"\nCOM 3 = \"c\"\nCOM04 = \"d\"\n"
         "COM5 = \"e\"\nCOM16 = \"f\"\nNAME1 = \"g\"\n// com7\n[Settings PORT]\n[Settings "
         "LOGVIEW]\n[Settings PORT123]\n[My Settings PORTS]\n[tings PORTS]\n"
         "rect = 1\n[Settings DEVICEPROPS]\nDevProps.speed = 1\nDevProps.aBlockSelect[1] = 1\n");
    const std::string path = "Note: " + inFile(", line ");
    EXPECT_EQ(log, path + "1: [PORTS] is not read, the section is [Settings PORTS]" + path +
                       "4: com2 is not read, the key is COM2" + path +
                       "5: COM 3 is not read, the key is COM3" + path +
                       "6: COM04 is not read, the key is COM4" + path +
                       "11: [Settings PORT] is not read, the section is [Settings PORTS]" + path +
                       "18: DevProps.speed is not read, the key is DevProps.Speed");
}

// The settings of an installed program are the user's, the ports beside it those of all users.
TEST_F(Ini, LooksForPortsBesideAnInstalledProgram) {
    namespace fs = std::filesystem;
    fs::create_directories(folder / "lib/calvorin");
    fs::create_directories(folder / "bin");
    writeFile(folder / "lib/calvorin/tool", "");
    fs::create_symlink("../lib/calvorin/tool", folder / "bin/tool");
    FILES_SetProgramPath(folder / "lib/calvorin/tool");
    setenv("XDG_CONFIG_HOME", folder.path().c_str(), 1);
    setenv("XDG_STATE_HOME", (folder / "state").c_str(), 1);
    const fs::path common = folder / "lib/calvorin/tool.ini";
    writeFile(common, "[Settings PORTS]\nCOM1 = \"common\"\nCOM2=\"common\"\ncom3 = "
                      "\"x\"\n[S]\nKey = 3\n[Settings DEVICEPROPS]\nDevProps.speed = 1\n");
    fs::create_directories(folder / "calvorin");
    writeFile(folder / "calvorin/tool.ini", "[Settings PORTS]\nCOM10 = \"ten\"\nCOM1 = \"own\"\n");
    INI_Load();
    EXPECT_EQ(port("COM1") + port("COM2") + port("COM3"), "owncommonnone");
    EXPECT_EQ(log, "Note: " + common.string() + ", line 4: com3 is not read, the key is COM3");
    EXPECT_EQ(read("S", "Key"), 77);
    const std::string before = readFile(common);
    INI_WriteInt("S", "Key", 4);
    INI_Save();
    EXPECT_NE(readFile(folder / "calvorin/tool.ini").find("Key = 4"), std::string::npos);
    EXPECT_EQ(readFile(common), before);
    FILES_MakeKeptFolders();
    EXPECT_TRUE(fs::is_directory(folder / "state/calvorin"));
    EXPECT_EQ(FILES_KeptFile(Kept::state, "log"), folder / "state/calvorin/tool.log");
    // A copied folder is portable, whatever it is called.
    FILES_SetProgramPath(folder / "lib/other/tool");
    fs::copy(folder / "lib/calvorin", folder / "lib/other");
    EXPECT_EQ(FILES_KeptFile(Kept::state, "log"), folder / "lib/other/tool.log");
}
