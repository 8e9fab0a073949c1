// The built calvorin-sim, run as a process of its own and driven over its line.
#include "persist/hex_text.h"
#include "platform/serial_port.h"
#include "sim/chip_bench.h"
#include "support/temp_folder.h"

#include <csignal>
#include <cstdio>
#include <sys/wait.h>
#include <unistd.h>

namespace {

class SimProcess {
public:
    explicit SimProcess(std::vector<std::string> arguments) {
        int ends[2];
        EXPECT_EQ(pipe(ends), 0);
        arguments.insert(arguments.begin(), CALVORIN_BIN "/calvorin-sim");
        std::vector<char*> raw;
        for (std::string& argument : arguments)
            raw.push_back(argument.data());
        raw.push_back(nullptr);
        process_ = fork();
        if (process_ == 0) {
            dup2(ends[1], STDOUT_FILENO);
            close(ends[0]);
            execv(raw[0], raw.data());
            _exit(127);
        }
        close(ends[1]);
        output_ = fdopen(ends[0], "r");
    }
    ~SimProcess() {
        if (process_ > 0)
            end();
        if (output_ != nullptr)
            std::fclose(output_);
    }
    SimProcess(const SimProcess&) = delete;
    SimProcess& operator=(const SimProcess&) = delete;

    std::string readLine() {
        char line[4096];
        if (std::fgets(line, sizeof line, output_) == nullptr)
            return {};
        std::string text = line;
        if (text.ends_with('\n'))
            text.pop_back();
        return text;
    }
    void signal(int number) const { kill(process_, number); }
    // The exit code after SIGTERM.
    int end() {
        int status = -1;
        signal(SIGTERM);
        waitpid(process_, &status, 0);
        process_ = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

private:
    pid_t process_ = -1;
    FILE* output_ = nullptr;
};

std::string exchange(SerialPort& port, const std::string& hex, size_t count) {
    EXPECT_TRUE(port.write(bytesOf(hex)));
    std::vector<uint8_t> answer(count);
    answer.resize(port.read(answer, CLOCK_After(5000), {}));
    return HEXTEXT_FromBytes(answer);
}

SerialPortPtr openPort(const std::string& device, uint32_t rate) {
    std::string error;
    SerialPortPtr port = SERIALPORT_Open(device, error);
    EXPECT_TRUE(port) << device << ": " << error;
    if (port) {
        EXPECT_TRUE(port->configure({rate, 8, 0, 0}).has_value());
    }
    return port;
}

const std::string kBlankB = repeated("FF", 12) + "0C";

} // namespace

TEST(SimProgram, PseudoTerminal) {
    TempFolder folder;
    const std::string link = folder / "port";
    writeFile(folder / "in.bin", "\x01\x02");
    SimProcess sim({"--device", "VT-B128", "--devices", CALVORIN_DEVICES "/Device", "--link", link,
                    "--flash-in", folder / "in.bin", "--flash-out", folder / "out.bin",
                    "--transcript", folder / "log", "--password", "0102030405060708090A0B0C"});
    EXPECT_TRUE(sim.readLine().starts_with("/dev/pts/"));
    {
        const SerialPortPtr port = openPort(link, 38400);
        ASSERT_TRUE(port);
        EXPECT_EQ(exchange(*port, "86", 1), "86");
        EXPECT_EQ(exchange(*port, "10", 1), "10");
        EXPECT_EQ(exchange(*port, "0102030405060708090A0B0C B2", 1), "10");
        EXPECT_EQ(exchange(*port, "20000000 0001 DF", 1), "10");
        EXPECT_EQ(exchange(*port, "FF 01", 1), "10");
        EXPECT_EQ(exchange(*port, frame("03 00000000 0300"), 16), frame("03 00000000 0300 0102FF"));
    }
    // The host has gone and another comes: a matching byte is all it needs.
    const SerialPortPtr port = openPort(link, 115200);
    ASSERT_TRUE(port);
    EXPECT_EQ(exchange(*port, "86", 1), "86");
    EXPECT_EQ(sim.end(), 0);
    const std::string flash = readFile(folder / "out.bin");
    EXPECT_EQ(flash.size(), 0x20000U);
    EXPECT_EQ(flash.substr(0, 3), "\x01\x02\xFF");
    EXPECT_NE(readFile(folder / "log").find("chip: 86"), std::string::npos);
    EXPECT_FALSE(std::filesystem::exists(std::filesystem::symlink_status(link)));
}

TEST(SimProgram, PacesThePseudoTerminal) {
    SimProcess sim({"--device", "VT-B128", "--devices", CALVORIN_DEVICES "/Device", "--pace"});
    const SerialPortPtr port = openPort(sim.readLine(), 2400);
    ASSERT_TRUE(port);
    exchange(*port, "86", 1);
    const Moment start = CLOCK_Now();
    EXPECT_EQ(exchange(*port, "10" + kBlankB, 2), "1010");
    // Fourteen bytes there and one back, 4167 us each.
    const int64_t took = CLOCK_Now().us - start.us;
    EXPECT_GE(took, 62000);
    EXPECT_LT(took, 300000);
}

TEST(SimProgram, TcpPortSeesLinesAndRate) {
    SimProcess sim({"--device", "VT-A32", "--devices", CALVORIN_DEVICES "/Device", "--tcp", "0"});
    const SerialPortPtr port = openPort(sim.readLine(), 9600);
    ASSERT_TRUE(port);
    EXPECT_TRUE(port->setDtr(true));
    EXPECT_TRUE(port->setRts(true));
    EXPECT_TRUE(port->setDtr(false));
    CLOCK_Sleep(100);
    EXPECT_EQ(exchange(*port, "5A", 1), "5A");
    EXPECT_EQ(exchange(*port, "1C", 1), "1C");
    EXPECT_TRUE(port->configure({115200, 8, 0, 0}).has_value());
    EXPECT_EQ(exchange(*port, "90", 3), "908000");
    // What no chip should have to put up with shows in the exit code.
    EXPECT_TRUE(port->write(bytesOf("99")));
    CLOCK_Sleep(100);
    EXPECT_EQ(sim.end(), 3);
}
