#include "data/hexdata.h"
#include "data/image_copy.h"
#include "data/program_file.h"
#include "data/program_format.h"
#include "notice/run.h"
#include "persist/hex_text.h"
#include "platform/files.h"
#include "platform/format.h"
#include "support/hex_bytes.h"
#include "support/reports.h"
#include "support/seed.h"
#include "support/temp_folder.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <gtest/gtest.h>
#include <sstream>
#include <sys/wait.h>
#include <unistd.h>

using std::string_literals::operator""s;

namespace {

// The image as "10:AABB 40:CC".
std::string imageText() {
    std::string text;
    for (const AddressRange& area : HEXDATA_GetAreas()) {
        std::vector<uint8_t> bytes(area.size());
        HEXDATA_Copy(area.start, bytes, {});
        text += formatText(text.empty() ? "%X:" : " %X:", area.start) + HEXTEXT_FromBytes(bytes);
    }
    return text;
}

class ProgramFile : public testing::Test {
protected:
    ProgramFile() {
        FILES_SetProgramPath(folder / "tool"); // where the error log goes
        RUN_Reset();
        HEXDATA_Reset();
    }
    ~ProgramFile() override { FILES_SetProgramPath({}); }

    // What loading a file of this text leaves: the image or, after a fault, the report.
    std::string load(const std::string& text) {
        writeFile(path, text);
        const bool loaded = PROGRAMFILE_Load(path);
        const std::string report = reports.take();
        EXPECT_EQ(loaded, report.empty()) << text.substr(0, 80);
        EXPECT_TRUE(loaded || HEXDATA_IsEmpty()) << text.substr(0, 80);
        return loaded ? imageText() : report;
    }
    std::string saved(int type) {
        EXPECT_TRUE(PROGRAMFILE_Save(path, type));
        return readFile(path);
    }

    TempFolder folder;
    std::filesystem::path path = folder / "program";
    Reports reports;
};

constexpr char kData[] = ":0100100012DD\r\n"; // 0x12 at 0x10

} // namespace

TEST_F(ProgramFile, ReadsWellFormedFiles) {
    const std::pair<std::string, const char*> cases[] = {
        {kData, "10:12"},
        {":0100100012DD\n:0100200034AB\n", "10:12 20:34"},
        {":01000F00AA46\n:0100100012DD\n:0100110034BA\n:010012005697", "F:AA123456"},
        {":0100100012DD\r:0100200034ab\r", "10:12 20:34"},
        {":0100100012DD\n\r:0100200034AB", "10:12 20:34"},
        {":00000001FF\r\n:0100100012DD\r\n", "10:12"},
        {kData + "\x1A no more records"s, "10:12"},
        {":00001000F0\r\n"s + kData, "10:12"},
        {":020000040001F9\r\n"s + kData, "10010:12"},
        {":020000FF0001FE\n"s + kData, "10010:12"},
        {":020000021000EC\r\n"s + kData, "10010:12"},
        {":020000040001F9\r\n:020000021000EC\r\n"s + kData, "20010:12"},
        {":0400000300003800C1\r\n:04000005000000CD2A\r\n"s + kData, "10:12"},
        {":02FFFF001122CD", "FFFF:1122"},
        {":02000004FFFFFC\n:01FFFF0011F0\n", "FFFFFFFF:11"},
        {"S00600004844521B\r\nS1040010AB40\r\nS9030000FC\r\n", "10:AB"},
        {"S205123456abb3\nS30612345678AB3A", "123456:AB 12345678:AB"},
        {"S10300C03C\nS501FE\nSZ0201FC\nS10400C1AB8F\n", "C1:AB"},
    };
    for (const auto& [text, expected] : cases) {
        EXPECT_EQ(load(text), expected) << text.substr(0, 80);
        EXPECT_EQ(HEXDATA_GetFileType(), text[0] == 'S' ? FILETYPE_SRECORD : FILETYPE_INTEL);
    }
}

TEST_F(ProgramFile, NamesTheLineOfTheFirstFault) {
    const std::string anyCase = "Expected Hex character : 0..9, A..F";
    const std::pair<std::string, std::string> cases[] = {
        {"", "Can not identify file type"},
        {" :00000001FF", "Can not identify file type"},
        {":0100100012DD :", "Error in line 1: Expected CR or LF"},
        {kData + "\0"s + kData, "Error in line 2: Unexpected character"},
        {kData + "\r\n"s + kData, "Error in line 2: Unexpected character"},
        {kData + "S9030000FC"s, "Error in line 2: Unexpected character"},
        {kData + ":0100110012DD\r\n"s, "Error in line 2: CheckSum error !"},
        {kData + ":01001G0012DD\r\n"s, "Error in line 2: " + anyCase},
        {kData + ":01001100"s, "Error in line 2: " + anyCase},
        {":0100000601F8", "Error in line 1: Unknown record !"},
        {":0100000400FB", "Error in line 1: Record too short !"},
        // Records that continue each other up to what an earlier one holds.
        {":010012005697\n:01000F00AA46\n"s + kData + ":0100110034BA\n:010012005697\n",
         "Error in line 5: Multiple definitions for same address !"},
        {":020000040001F9\n\n:0100100012DD\n:0100100012DD\n"s,
         "Error in line 3: Multiple definitions for same address !"},
        {":02000004FFFFFC\n:02000002FFFFFE\n"s + kData,
         "Error in line 3: Data beyond address 0xFFFFFFFF !"},
        {"S", "Error in line 1: Unexpected character"},
        {"S1040010AB4", "Error in line 1: " + anyCase},
        // Read in more than one piece: it ends where digits of an earlier one stood.
        {repeat("S00600004844521B\r\n", 3700) + "S1040010AB4", "Error in line 3701: " + anyCase},
        {"S1040010AB40x", "Error in line 1: Expected CR or LF"},
        {"S2031234B6", "Error in line 1: Record too short !"},
        {"S307FFFFFFFF0102F9", "Error in line 1: Data beyond address 0xFFFFFFFF !"},
    };
    for (const auto& [text, expected] : cases) {
        EXPECT_EQ(load(text), expected) << text.substr(0, 80);
    }
}

TEST_F(ProgramFile, AsksAboutWrongSRecordChecksums) {
    const std::string text = "S1040010AB40\nS1040011EEFD\nS1040012AB3E\n";
    const std::string question = "Checksum error !: Continue and ignore ?";
    EXPECT_EQ(load(text), "10:AB 12:AB");
    reports.answer = ANSWER_YES;
    EXPECT_EQ(load(text), "10:ABEEAB");
    RUN_SetUnattended(true);
    reports.answer = ANSWER_NONE;
    EXPECT_EQ(load(text), "Error in line 2: CheckSum error !");
    RUN_SetAcceptDamaged(true);
    EXPECT_EQ(load(text), "10:AB 12:AB");
    EXPECT_EQ(reports.questions,
              (std::vector<std::string>{question, question, question + " (line 2)"}));
}

TEST_F(ProgramFile, NotesAHexFileWithoutItsEndRecord) {
    const std::pair<std::string, bool> cases[] = {
        {kData, true},
        {kData + ":00000001FF\r\n"s, false},
        {":00000001FF\r\n"s + kData, false},
        {"S1040010AB40\r\n", false}, // its files may do without
    };
    for (const auto& [text, noted] : cases) {
        load(text);
        const std::string note =
            "Note: " + path.string() + " has no end record, it may have been cut off";
        EXPECT_EQ(reports.take(reports.log, '\n'), noted ? note : "") << text;
    }
}

TEST_F(ProgramFile, MergesAndClearsAfterAFault) {
    EXPECT_EQ(load(kData), "10:12");
    writeFile(path, "S1040020CD0E");
    EXPECT_TRUE(PROGRAMFILE_Merge(path));
    EXPECT_EQ(imageText(), "10:12 20:CD");
    EXPECT_TRUE(PROGRAMFILE_Merge(folder / "missing"));
    EXPECT_FALSE(PROGRAMFILE_Load(folder / "missing"));
    const std::string missing =
        "File not found (" + (folder / "missing").string() + ": No such file or directory)";
    EXPECT_EQ(reports.take(), missing + "\n" + missing);
    writeFile(path, "nonsense");
    EXPECT_FALSE(PROGRAMFILE_Merge(path));
    EXPECT_EQ(imageText(), "10:12 20:CD") << "nothing was touched so far";
    {
        const ImageBeside beside;
        writeFile(path, "S1040010CD1E\nS1040010CD1E");
        EXPECT_FALSE(PROGRAMFILE_Merge(path));
        writeFile(path, kData);
        EXPECT_TRUE(PROGRAMFILE_Merge(path));
    }
    EXPECT_EQ(imageText(), "10:12 20:CD") << "a file beside it changes nothing";
    EXPECT_EQ(HEXDATA_GetFileType(), FILETYPE_SRECORD);
    writeFile(path, "S1040030CDFE\nS1");
    EXPECT_FALSE(PROGRAMFILE_Merge(path));
    EXPECT_TRUE(HEXDATA_IsEmpty());
}

TEST_F(ProgramFile, WritesTheRecordsThatTheAddressesNeed) {
    // The lines up to the second data byte, without the last line, in both formats.
    const std::tuple<uint32_t, uint32_t, const char*, const char*> cases[] = {
        {0, 0, "", ""},
        {0x1000, 40, ":201000000000 :081020000000 ", "S123100000000 S10B102000000 "},
        {0x20000, 32, ":020000022000 :200000000000 ", "S224020000000 "},
        {0x200000, 32, ":020000040020 :200000000000 ", "S224200000000 "},
        {0xFF00, 64, ":20FF00000000 :020000020FF2 :200000000000 ", "S123FF0000000 S123FF2000000 "},
        {0xFFE0, 64, ":020000020FFE :200000000000 :200020000000 ", "S123FFE000000 S224010000000 "},
        {0xFFF0, 32, ":020000020FFF :200000000000 ", "S22400FFF0000 "},
        {0xFFFFF0, 32, ":0200000400FF :20FFF0000000 ", "S32500FFFFF00 "},
        {0xFFFFFFFE, 2, ":02000004FFFF :02FFFE000000 ", "S307FFFFFFFE0 "},
    };
    const auto heads = [this](int type) {
        std::string text;
        std::istringstream lines(saved(type));
        for (std::string line; std::getline(lines, line);) {
            text += line.substr(0, 13) + ' ';
        }
        return text;
    };
    for (const auto& [start, count, intel, motorola] : cases) {
        HEXDATA_Clear();
        HEXDATA_AddData(start, std::vector<uint8_t>(count));
        EXPECT_EQ(heads(FILETYPE_INTEL), intel + ":00000001FF\r "s);
        EXPECT_EQ(heads(FILETYPE_SRECORD), motorola + "S9030000FC\r "s);
    }
    HEXDATA_Clear();
    for (const uint32_t address : {0xFFF00u, 0x120000u, 0x140000u}) {
        HEXDATA_AddData(address, std::vector<uint8_t>{0xAB});
    }
    EXPECT_EQ(saved(FILETYPE_INTEL), ":02000002FFF00D\r\n:01000000AB54\r\n:020000020000FC\r\n"
                                     ":020000040012E8\r\n:01000000AB54\r\n:020000040014E6\r\n"
                                     ":01000000AB54\r\n:00000001FF\r\n");
}

TEST_F(ProgramFile, AnOldFileOutlivesARefusedSave) {
    writeFile(path, "old");
    const std::filesystem::path blank = folder / "new";
    const std::tuple<std::filesystem::path, int, std::string> cases[] = {
        {path, 3, "INTERNAL Error: Unknown file type ..."},
        {blank, 3, "INTERNAL Error: Unknown file type ..."},
        {folder / "no" / "such", FILETYPE_INTEL,
         "File not found (" + (folder / "no" / "such").string() + ": No such file or directory)"},
        {folder.path(), FILETYPE_INTEL,
         "OnFileOpen: Invalid file handle (" + folder.path().string() + ": Is a directory)"},
    };
    for (const auto& [target, type, message] : cases) {
        EXPECT_FALSE(PROGRAMFILE_Save(target, type));
        EXPECT_EQ(reports.take(), message);
    }
    EXPECT_EQ(readFile(path), "old");
    EXPECT_EQ(std::filesystem::file_size(blank), 0u);
}

TEST_F(ProgramFile, AProtectedFileIsNotReplaced) {
    writeFile(path, "old");
    std::filesystem::permissions(path, std::filesystem::perms(0444));
    std::filesystem::permissions(folder.path(), std::filesystem::perms::all);
    const uid_t user = geteuid();
    ASSERT_EQ(seteuid(user == 0 ? 65534 : user), 0); // nothing is protected from root
    EXPECT_FALSE(PROGRAMFILE_Save(path, FILETYPE_INTEL));
    ASSERT_EQ(seteuid(user), 0);
    EXPECT_EQ(reports.take(),
              "OnFileOpen: Invalid file handle (" + path.string() + ": Permission denied)");
    EXPECT_EQ(readFile(path), "old");
}

TEST_F(ProgramFile, SaysWhyReadingOrWritingBrokeOff) {
    const auto breakingOff = [this](bool (*run)(const std::filesystem::path&),
                                    int callsThatSucceed) {
        int calls = 0;
        FILES_SetCallHook([&] { return ++calls > callsThatSucceed ? EIO : 0; });
        EXPECT_FALSE(run(path));
        FILES_SetCallHook({});
        return reports.take();
    };
    writeFile(path, repeat(kData, 10'000));
    EXPECT_EQ(breakingOff(PROGRAMFILE_Load, 2), // opening and one piece
              "Error in line 1: Error reading file (Input/output error)");
    EXPECT_TRUE(HEXDATA_IsEmpty());
    const std::string before = readFile(path);
    const auto save = [](auto& file) { return PROGRAMFILE_Save(file, FILETYPE_INTEL); };
    EXPECT_EQ(breakingOff(save, 5), // to where the new file is written
              "Error writing file (" + path.string() + ": Input/output error)");
    EXPECT_EQ(readFile(path), before);
}

// Large enough for the thread that reads and writes beside the conversion: each of the calls on
// files fails once, or the process ends in front of it.
TEST_F(ProgramFile, ALargeFileIsWholeOrTheOldOne) {
    TestRandom random;
    std::vector<uint8_t> bytes(1 << 19);
    std::ranges::generate(bytes, [&] { return static_cast<uint8_t>(random()); });
    HEXDATA_AddData(0, bytes);
    const std::string whole = saved(FILETYPE_SRECORD);
    const std::string image = imageText();
    writeFile(folder / "in", whole);
    std::atomic<int> left;
    const auto fails = [&left] { return left-- == 0 ? EIO : 0; };
    const auto ends = [&left] { return left-- == 0 ? (_exit(1), 0) : 0; };
    int refused = 0;
    for (int at = 0, status = 1; status != 0; ++at) {
        SCOPED_TRACE(at);
        writeFile(path, "old");
        left = at;
        if (const pid_t child = fork(); child == 0) {
            FILES_SetCallHook(ends);
            _exit(PROGRAMFILE_Save(path, FILETYPE_SRECORD) ? 0 : 1);
        } else {
            waitpid(child, &status, 0);
        }
        EXPECT_TRUE(readFile(path) == whole || (status != 0 && readFile(path) == "old"));

        writeFile(path, "old");
        left = at;
        FILES_SetCallHook(fails);
        const bool isSaved = PROGRAMFILE_Save(path, FILETYPE_SRECORD);
        left = at;
        const bool isLoaded = PROGRAMFILE_Load(folder / "in");
        FILES_SetCallHook({});
        const std::string report = reports.take();
        refused += (isSaved ? 0 : 1) + (isLoaded ? 0 : 1);
        EXPECT_TRUE(readFile(path) == whole || (!isSaved && readFile(path) == "old"));
        EXPECT_TRUE(imageText() == image || (!isLoaded && HEXDATA_IsEmpty()));
        EXPECT_EQ(report.find(strerror(EIO)) == std::string::npos, isSaved && isLoaded) << report;
        HEXDATA_Clear();
        HEXDATA_AddData(0, bytes);
    }
    EXPECT_GT(refused, 15);
}

TEST_F(ProgramFile, RandomImagesReadBackEqualInBothFormats) {
    TestRandom random;
    for (int round = 0; round < 60; ++round) {
        HEXDATA_Clear();
        const int areas = static_cast<int>(random() % 40);
        for (int i = 0; i < areas; ++i) {
            // As many small addresses as large ones: the formats change with the magnitude.
            const auto start = static_cast<uint32_t>(random()) >> (random() % 28);
            std::vector<uint8_t> bytes(
                std::min<uint64_t>(1 + random() % 300, (uint64_t{1} << 32) - start));
            std::ranges::generate(bytes, [&] { return static_cast<uint8_t>(random()); });
            reports.answer = ANSWER_OK;
            HEXDATA_AddData(start, bytes);
        }
        const std::string before = imageText();
        for (const int type : {FILETYPE_INTEL, FILETYPE_SRECORD}) {
            ASSERT_EQ(load(saved(type)), before) << "round " << round << " type " << type;
        }
    }
}
