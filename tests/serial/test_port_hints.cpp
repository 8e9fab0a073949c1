// Who has a port and which there are, on a system laid out in a folder around a pseudo-terminal.

#include "notice/log.h"
#include "persist/ini.h"
#include "platform/files.h"
#include "platform/port_state.h"
#include "platform/serial_port.h"
#include "serial/port_hints.h"
#include "support/reports.h"
#include "support/temp_folder.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

class PortHints : public testing::Test {
protected:
    PortHints() {
        grantpt(farEnd_);
        unlockpt(farEnd_);
        const std::string terminal = ptsname(farEnd_);
        device = (folder / "ttyBench").string();
        fs::create_symlink(terminal, device);
        adapter = folder / "tty" / fs::path(terminal).filename() / "device";
        fs::create_directories(adapter);
        fs::create_directories(folder / "locks");
        fs::create_directories(folder / "proc");
        PORTSTATE_SetFolders(
            {folder / "proc", folder / "tty", {folder / "none", folder / "locks"}});
        FILES_SetProgramPath(folder / "calvorin");
        writeFile(folder / "calvorin.ini",
                  "[Settings PORTS]\r\nCOM2 = \"" + device + "\"\r\nCOM4 = \"rfc2217://h:1\"\r\n");
        INI_Load();
    }
    ~PortHints() override {
        PORTSTATE_SetFolders({});
        FILES_SetProgramPath({});
        close(farEnd_);
    }
    void addProcess(int id, const std::string& name, const std::string& opened) const {
        const fs::path process = folder / "proc" / std::to_string(id);
        fs::create_directories(process / "fd");
        writeFile(process / "comm", name + "\n");
        fs::create_symlink(opened, process / "fd" / "7");
    }
    // Why the device cannot be opened, with the hint; empty when it can.
    std::string refusal() const {
        std::string reason;
        return TTYPORT_Open(device, reason)
                   ? ""
                   : reason + "; " + HINT_Text(PORTHINT_OfFailure(device, reason));
    }

    TempFolder folder;
    fs::path adapter;
    std::string device;

private:
    int farEnd_ = posix_openpt(O_RDWR | O_NOCTTY);
};

} // namespace

TEST_F(PortHints, ALockFileIsHonouredWhileItsProgramLives) {
    EXPECT_EQ(refusal(), "");
    addProcess(4711, "minicom", "/dev/null");
    const std::string binary("\x67\x12\x00\x00", 4); // 4711
    for (const auto& [text, holds] : {std::pair<std::string, bool>{"      4711\n", true},
                                      {binary, true},
                                      {"      4712\n", false},
                                      {std::to_string(getpid()), false},
                                      {"nobody", false}}) {
        writeFile(folder / "locks" / "LCK..ttyBench", text);
        const std::string file = (folder / "locks" / "LCK..ttyBench").string();
        EXPECT_EQ(refusal(), holds ? "in use by another program; The port is held by minicom "
                                     "(process 4711), lock file " +
                                         file + ". End that first"
                                   : "")
            << text;
    }
}

TEST_F(PortHints, AHolderIsNamedWithAndWithoutALock) {
    const Reports screen;
    addProcess(12, "cat", "/dev/null");
    addProcess(34, "screen", device);
    addProcess(getpid(), "calvorin", device);
    addProcess(56, "calvorin-sim", device); // which is the other end of the pseudo-terminal
    fs::create_directories(folder / "proc" / "56" / "fdinfo");
    writeFile(folder / "proc" / "56" / "fdinfo" / "3",
              "flags:\t0100002\ntty-index:\t" + fs::canonical(device).filename().string() + "\n");
    const SerialPortPtr first = [this] {
        std::string reason;
        return TTYPORT_Open(device, reason);
    }();
    ASSERT_TRUE(first);
    PORTHINT_NoteOpened(device);
    EXPECT_EQ(screen.log,
              Reports::Texts{"Note: " + HINT_Text({Cause::portShared, "screen (process 34)"})});
    EXPECT_EQ(refusal(), "in use by another program; The port is held by screen (process 34). End "
                         "that first");
}

TEST_F(PortHints, ASlowAdapterIsNoted) {
    for (const auto& [ms, noted] : {std::pair{"1\n", 0}, {"2\n", 0}, {"16\n", 1}}) {
        const Reports screen;
        writeFile(adapter / "latency_timer", ms);
        PORTHINT_NoteOpened(device);
        ASSERT_EQ(screen.log.size(), static_cast<size_t>(noted)) << ms;
        if (noted != 0) {
            EXPECT_EQ(screen.log.front(),
                      "Note: " +
                          HINT_Text({Cause::slowAdapter, "16 ms; `echo 1 | sudo tee " +
                                                             (adapter / "latency_timer").string() +
                                                             "` sets it to 1"}));
        }
    }
}

TEST_F(PortHints, AMissingPortIsToldOfTheOthers) {
    for (const auto& [tty, type] : {std::pair{"ttyS0", "0\n"}, {"ttyUSB7", ""}, {"ttyX9", "4\n"}}) {
        fs::create_directories(folder / "tty" / tty / "device");
        if (*type != '\0') {
            writeFile(folder / "tty" / tty / "type", type);
        }
    }
    fs::remove_all(adapter);
    for (const auto& [reason, hint] :
         {std::pair<const char*, Hint>{"No such file or directory",
                                       {Cause::portMissing, "COM2 (" + device +
                                                                "), COM4 (rfc2217://h:1), COM12 "
                                                                "(/dev/ttyUSB7), /dev/ttyX9"}},
          {"permission denied; the group dialout would give it", {Cause::portDenied, device}}}) {
        EXPECT_EQ(HINT_Text(PORTHINT_OfFailure(device, reason)), HINT_Text(hint));
    }
    EXPECT_EQ(PORTHINT_OfFailure("rfc2217://h:1", "nothing listens").cause, Cause::none);
}
