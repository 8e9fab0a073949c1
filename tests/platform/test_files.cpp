#include "platform/files.h"
#include "support/temp_folder.h"

#include <csignal>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace fs = std::filesystem;
using namespace std::string_literals;

namespace {

// What a replacement has had written to the disk: "file" and "folder", with the contents then.
std::string synced;
fs::path watched;

std::ptrdiff_t entries(const TempFolder& folder) {
    return std::distance(fs::directory_iterator(folder.path()), {});
}

// Ends the process with 0 when `holds`; the test's own process goes on as it is.
void leave(bool holds) {
    _exit(holds ? 0 : 1);
}

// From here on the process has a system without files that have no name.
void refuseUnnamedFiles() {
    sock_filter filter[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_openat, 0, 3),
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, args[2])),
        BPF_JUMP(BPF_JMP | BPF_JSET | BPF_K, O_TMPFILE & ~O_DIRECTORY, 0, 1),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | EOPNOTSUPP),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    };
    const sock_fprog program{std::size(filter), filter};
    prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
    prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program);
}

} // namespace

// In the system's place.
extern "C" int fsync(int descriptor) {
    struct stat file {};
    fstat(descriptor, &file);
    synced += S_ISDIR(file.st_mode) ? "folder " + readFile(watched)
                                    : "file of " + std::to_string(file.st_size) + ", ";
    return static_cast<int>(syscall(SYS_fsync, descriptor));
}

TEST(Files, ReplacesAFileInOneStepOrNotAtAll) {
    const TempFolder folder;
    writeFile(folder / "true.tpu", "old");
    fs::permissions(folder / "true.tpu", fs::perms::owner_all);
    fs::create_symlink("true.tpu", folder / "link.tpu");
    const auto dieHalfway = [&folder] {
        FileReplacer file;
        leave(file.open(folder / "link.tpu").ok() && file.write("half of the ne").ok() &&
              kill(getpid(), SIGKILL) == 0);
    };
    EXPECT_EXIT(dieHalfway(), testing::KilledBySignal(SIGKILL), "");
    EXPECT_EQ(entries(folder), 2) << "nothing is left behind";
    EXPECT_EQ(readFile(folder / "true.tpu"), "old");
    watched = folder / "true.tpu";
    for (const bool unnamed : {true, false}) {
        const auto replace = [&] {
            if (!unnamed) {
                refuseUnnamedFiles();
            }
            synced.clear();
            const bool replaced =
                FILES_Replace(folder / "link.tpu", unnamed ? "one" : "new").ok() &&
                FILES_Replace(folder / "link.tpu", unnamed ? "one" : "new").ok();
            EXPECT_EQ(synced, unnamed ? "file of 3, folder one" : "file of 3, folder new");
            leave(replaced && !testing::Test::HasFailure());
        };
        EXPECT_EXIT(replace(), testing::ExitedWithCode(0), "");
    }
    EXPECT_EQ(readFile(folder / "true.tpu"), "new");
    fs::create_hard_link(folder / "true.tpu", folder / "same");
    ASSERT_TRUE(FILES_Replace(folder / "true.tpu", "new").ok());
    EXPECT_EQ(fs::hard_link_count(folder / "same"), 2U) << "nothing to replace";
    fs::remove(folder / "same");
    EXPECT_EQ(fs::status(folder / "true.tpu").permissions(), fs::perms::owner_all);
    EXPECT_TRUE(fs::is_symlink(folder / "link.tpu"));
    EXPECT_EQ(entries(folder), 2);
}

// What cannot be replaced without losing something is written over.
TEST(Files, WritesEveryFileThatTheUserMayWrite) {
    const TempFolder folder;
    constexpr uid_t kOther = 65534;
    const std::string longest(255, 'x');
    const fs::path shut = folder / "shut";
    fs::create_directory(shut);
    for (const char* name : {"theirs", "open", "one", "shut/file"}) {
        writeFile(folder / name, "old and longer");
        fs::permissions(folder / name, fs::perms(0666));
    }
    fs::permissions(folder.path(), fs::perms(0777));
    fs::create_hard_link(folder / "one", folder / "two");
    fs::permissions(shut, fs::perms(0555));
    const auto replaceAll = [&](const std::vector<std::string>& names, uid_t user) {
        const bool changed = user == geteuid() || (setgid(user) == 0 && setuid(user) == 0);
        for (const std::string& name : names) {
            EXPECT_EQ(FILES_Replace(folder / name, "new").reason, "") << name;
        }
        leave(changed && !testing::Test::HasFailure());
    };
    EXPECT_EXIT(replaceAll({longest}, geteuid()), testing::ExitedWithCode(0), "");
    EXPECT_EQ(FILES_Replace(folder / (longest + "x"), "new").reason, "File name too long");
    ASSERT_TRUE(FILES_Replace(folder / "one", "new").ok());
    EXPECT_EQ(readFile(folder / "two"), "new");
    if (geteuid() == 0) { // others' files need others
        ASSERT_EQ(chown((folder / "theirs").c_str(), kOther, kOther), 0);
        EXPECT_EXIT(replaceAll({"theirs"}, 0), testing::ExitedWithCode(0), "");
        EXPECT_EXIT(replaceAll({"open", "shut/file"}, kOther), testing::ExitedWithCode(0), "");
    } else {
        EXPECT_EXIT(replaceAll({"shut/file"}, geteuid()), testing::ExitedWithCode(0), "");
    }
    for (const std::string& name : std::vector{longest, "one"s, "shut/file"s}) {
        EXPECT_EQ(readFile(folder / name), "new") << name;
    }
    if (geteuid() == 0) {
        const std::pair<const char*, uid_t> owners[] = {{"theirs", kOther}, {"open", 0}};
        for (const auto& [name, owner] : owners) {
            struct stat file {};
            ASSERT_EQ(stat((folder / name).c_str(), &file), 0);
            EXPECT_EQ(file.st_uid, owner) << name;
            EXPECT_EQ(file.st_mode & 0777, 0666U) << name;
            EXPECT_EQ(readFile(folder / name), "new") << name;
        }
    }
    fs::permissions(shut, fs::perms(0755));
}

TEST(Files, SaysWhatCannotBeReadOrWritten) {
    const TempFolder folder;
    std::string text;
    writeFile(folder / "large", "");
    fs::resize_file(folder / "large", uintmax_t{1} << 31);
    EXPECT_EQ(FILES_ReadAll(folder / "large", text).reason, "File too large");
    EXPECT_EQ(FILES_ReadAll("/dev/zero", text).reason, "File too large");
    EXPECT_EQ(FILES_ReadAll(folder / "none", text).status, FileStatus::notFound);
    EXPECT_EQ(FILES_ReadAll(folder.path(), text).status, FileStatus::failed);
    EXPECT_EQ(FILES_ReadAll(folder.path(), text).reason, "Is a directory");
    EXPECT_EQ(FILES_Replace(folder / "no/such/place", "x").status, FileStatus::notFound);
    EXPECT_EQ(FILES_Replace(folder.path(), "x").status, FileStatus::failed);
    EXPECT_EQ(FILES_Replace("/dev/full", "x").reason, "No space left on device");
}

TEST(Files, ListsByExtensionInOrder) {
    const TempFolder folder;
    for (const char* name : {"b.dev", "a.dev", "c.txt"}) {
        writeFile(folder / name, "");
    }
    EXPECT_EQ(FILES_List(folder.path(), ".dev"),
              (std::vector<fs::path>{folder / "a.dev", folder / "b.dev"}));
    EXPECT_TRUE(FILES_List(folder / "none", ".dev").empty());
}
