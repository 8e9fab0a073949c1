// The built calvorin-sim, run as a process of its own and driven over its line.
#include "e2e/bench_world.h"
#include "platform/serial_port.h"
#include "sim/chip_bench.h"

namespace {

std::string exchange(SerialPort& port, const std::string& hex, size_t count) {
    EXPECT_TRUE(port.write(bytesOfHex(hex)));
    std::vector<uint8_t> answer(count);
    answer.resize(port.read(answer, CLOCK_After(30'000), {}));
    return HEXTEXT_FromBytes(answer);
}

SerialPortPtr openPort(const std::string& device, uint32_t rate) {
    std::string error;
    SerialPortPtr port = SERIALPORT_Open(device, error);
    EXPECT_TRUE(port && port->configure({rate, 8, 0, 0})) << device << ": " << error;
    return port;
}

} // namespace

TEST(SimProgram, PseudoTerminal) {
    const TempFolder files;
    const std::string link = files / "port";
    writeFile(files / "in.bin", "\x01\x02");
    VirtualTarget sim(files, "VT-B128",
                      {"--flash-in", files / "in.bin", "--transcript", files / "log", "--pace"});
    EXPECT_TRUE(sim.port().starts_with("/dev/pts/"));
    SerialPortPtr port = openPort(link, 2400);
    ASSERT_TRUE(port);
    EXPECT_EQ(exchange(*port, "86", 1), "86");
    EXPECT_EQ(exchange(*port, "10", 1), "10");
    const Moment start = CLOCK_Now();
    EXPECT_EQ(exchange(*port, repeat("FF", 12) + "0C", 1), "10");
    // Thirteen bytes there and one back, 4167 us each.
    const int64_t took = CLOCK_Now().us - start.us;
    EXPECT_GE(took, 58000);
    EXPECT_LT(took, 3000000); // not in another unit, however busy the machine is
    EXPECT_EQ(exchange(*port, "20000000 0001 DF", 1), "10");
    EXPECT_EQ(exchange(*port, "FF 01", 1), "10");
    // The host goes and another comes: a matching byte is all it needs.
    port.reset();
    port = openPort(link, 115200);
    ASSERT_TRUE(port);
    EXPECT_EQ(exchange(*port, "86", 1), "86");
    // What no chip should have to put up with shows in the exit code.
    EXPECT_EQ(exchange(*port, "99 20", 4).substr(0, 2), "20");
    EXPECT_EQ(sim.stop(), 3);
    EXPECT_NE(sim.summary().find("violations 1\n"), std::string::npos) << sim.summary();
    const std::string flash = sim.flash();
    EXPECT_EQ(flash.size(), 0x20000U);
    EXPECT_EQ(flash.substr(0, 3), "\x01\x02\xFF");
    EXPECT_NE(readFile(files / "log").find("chip: 86"), std::string::npos);
    EXPECT_FALSE(std::filesystem::exists(std::filesystem::symlink_status(link)));

    const TempFolder others;
    const VirtualTarget running(others, "VT-B128", {"--start-app", "--app-every", "10"});
    port = openPort(running.port(), 115200);
    ASSERT_TRUE(port);
    EXPECT_EQ(exchange(*port, "00", 4).size(), 8U) << "four bytes of the application's text";
}

TEST(SimProgram, ReplacesOnlyLinksThatItMade) {
    namespace fs = std::filesystem;
    const TempFolder files;
    const fs::path link = files / "port";
    const Strings command{builtFolder() / "calvorin-sim", "--device", "VT-B128", "--devices",
                          builtFolder() / "Device",       "--link",   link};
    fs::create_symlink("/dev/pts/0", link); // a user's own
    Process refused(command, files / "refused");
    EXPECT_EQ(refused.wait(), 1);
    EXPECT_NE(refused.err().find("port: File exists, not made by calvorin-sim"), std::string::npos);
    EXPECT_EQ(fs::read_symlink(link), "/dev/pts/0");
    fs::remove(link);
    { const VirtualTarget killed(files, "VT-B128"); }
    EXPECT_TRUE(fs::is_symlink(link)) << "left over";
    Process first(command, files / "first");
    EXPECT_TRUE(waitFor([&first] { return !first.out().empty(); }));
    Process second(command, files / "second");
    EXPECT_TRUE(waitFor([&second] { return !second.out().empty(); }));
    first.signal(SIGTERM);
    EXPECT_EQ(first.wait(), 0);
    EXPECT_TRUE(fs::exists(link)) << "the other's link stays";
    second.signal(SIGTERM);
    EXPECT_EQ(second.wait(), 0);
    EXPECT_FALSE(fs::is_symlink(link));
}
