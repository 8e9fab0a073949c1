// Port servers of others: ser2net in front of a pseudo-terminal, and one of pyserial's that reaches
// the virtual chip's own as a client. Skipped where they are not installed.
#include "e2e/bench_world.h"
#include "e2e/hex_files.h"

#include <gtest/gtest.h>
#include <regex>

namespace {

bool succeeds(const std::string& command) {
    return std::system((command + " >/dev/null 2>&1").c_str()) == 0;
}

void programThrough(const ProgramFolder& bench, const std::string& port) {
    writeFile(bench.folder / "calvorin.ini", "[Settings PORTS]\r\nCOM1 = \"" + port + "\"\r\n");
    // Three processes hand each byte on, and the boot ROM waits 30 ms: on a busy machine a connect
    // may need another try. Nothing behind it may.
    const Strings line = onDevice("VT-B128", {"-TargetAuto", "-TargetVerify", "--retries", "2"});
    const RunResult result = bench.run(withFile(bench, srecords(0, randomBytes(700, 1)), line));
    EXPECT_EQ(result.exitCode, 0) << result.err;
}

std::string firstLine(const Process& process) {
    waitFor([&process] { return process.out().find('\n') != std::string::npos; }, 5000);
    return process.out().substr(0, process.out().find('\n'));
}

} // namespace

TEST(PortServers, Ser2net) {
    if (!succeeds("command -v ser2net")) {
        GTEST_SKIP() << "ser2net is not installed";
    }
    const ProgramFolder bench;
    VirtualTarget target(bench.folder, "VT-B128");
    const std::string port = std::to_string(20000 + getpid() % 10000);
    const std::string configuration = bench.folder / "ser2net.yaml";
    std::string example = readFile(builtFolder() / "examples" / "ser2net.yaml");
    example = std::regex_replace(example, std::regex(",3001"), ",127.0.0.1," + port);
    writeFile(configuration, std::regex_replace(example, std::regex("/dev/ttyUSB0"),
                                                (bench.folder / "port").string()));
    const Process server({"/usr/bin/env", "ser2net", "-n", "-d", "-u", "-c", configuration, "-P",
                          bench.folder / "pid"},
                         bench.folder / "server");
    ASSERT_TRUE(
        waitFor([&port] { return succeeds("bash -c ': </dev/tcp/127.0.0.1/" + port + "'"); }, 5000))
        << server.err();
    programThrough(bench, "rfc2217://127.0.0.1:" + port);
    target.stop();
    EXPECT_NE(target.summary().find("violations 0"), std::string::npos) << target.summary();
    EXPECT_NE(target.summary().find("erases 1"), std::string::npos) << target.summary();
}

TEST(PortServers, Pyserial) {
    const std::string python =
        succeeds("/usr/bin/python3 -c 'import serial'") ? "/usr/bin/python3" : "python3";
    if (!succeeds(python + " -c 'import serial'")) {
        GTEST_SKIP() << "pyserial is not installed";
    }
    const ProgramFolder bench;
    VirtualTarget target(bench.folder, "VT-B128", {"--tcp", "0"});
    const Process server({"/usr/bin/env", python, builtFolder() / "port_server.py", target.port()},
                         bench.folder / "server");
    const std::string port = firstLine(server);
    ASSERT_FALSE(port.empty()) << server.err();
    programThrough(bench, "rfc2217://127.0.0.1:" + port);
    EXPECT_EQ(target.stop(), 0) << target.summary();
    EXPECT_NE(target.summary().find("erases 1"), std::string::npos) << target.summary();
}
