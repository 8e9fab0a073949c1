// A chip that answers anything at all, and a healthy one behind a spoilt line.
#include "bootrom/connect.h"
#include "fuzz/fuzz.h"
#include "shell/command_handler.h"
#include "support/test_line.h"
#include "support/world.h"
#include "sweep/sweep.h"
#include "target/commands.h"

namespace {

constexpr int64_t kEnough = 600'000'000; // us, which no command of these small devices takes

} // namespace

// The first byte chooses device and command; after that, each write of the program is answered by
// as many bytes as the next byte says.
std::string fuzzAnswers(std::span<const uint8_t> bytes) {
    if (bytes.empty()) {
        return "";
    }
    const auto take = [&bytes]() -> uint8_t {
        const uint8_t first = bytes.empty() ? 0 : bytes.front();
        bytes = bytes.subspan(bytes.empty() ? 0 : 1);
        return first;
    };
    const uint8_t choice = take();
    WorldOptions options;
    options.device = choice % 2 == 0 ? "VT-A32" : "VT-B128";
    options.port = "test://fuzz";
    options.openPort = false;
    World world(std::move(options));
    TestLines lines{{"fuzz"}};
    lines["fuzz"].heard = [&](const std::string&, bool isData) {
        std::string answer;
        for (size_t count = isData ? take() % 40 : 0; count > 0; --count) {
            answer += static_cast<char>(take());
        }
        lines["fuzz"].send(answer);
    };
    SIO_SetConfig({1, 38400, 0});
    const int64_t begun = CLOCK_Now().us;
    const bool connected = TARGET_Connect() == 1;
    const bool done = connected && TARGET_EraseChip(false) == 0;
    const int64_t took = CLOCK_Now().us - begun;
    const bool told = done || !world.errors().empty() || !world.questions().empty();
    freshProcess(); // the line goes before the world
    return took > kEnough ? "takes " + std::to_string(took) + " us" : told ? "" : "fails unsaid";
}

// Device, command, direction, byte (16 bits) and fault.
std::string fuzzSpoiltLine(std::span<const uint8_t> bytes) {
    if (bytes.size() < 6) {
        return "";
    }
    const SweepDevice& device = SWEEP_Devices()[bytes[0] % SWEEP_Devices().size()];
    const SweepCommand& command = SWEEP_Commands()[bytes[1] % SWEEP_Commands().size()];
    const char* const direction = bytes[2] % 2 == 0 ? "rx" : "tx";
    const LineFault& fault = kLineFaults[bytes[5] % std::size(kLineFaults)];
    static std::map<std::string, CleanRun> known;
    const auto [clean, isNew] = known.try_emplace(std::string(device.name) + command.name);
    if (isNew) {
        clean->second = JUDGE_Clean(device.name, command.name);
    }
    const size_t passed = clean->second.stages[bytes[2] % 2 == 0 ? 1 : 0].size();
    if (!clean->second.isOffered || passed == 0 || (fault.onlyTx && bytes[2] % 2 == 0)) {
        return "";
    }
    const uint64_t where = (bytes[3] << 8 | bytes[4]) % passed;
    const SweepCase sweepCase{device.name, command.name, direction, where, fault.name};
    const std::string wrong = JUDGE_Case(sweepCase, clean->second).wrong;
    return wrong.empty() ? "" : sweepCase.text() + ": " + wrong;
}
