// The device descriptions that come with the program, and the loader images that they name.
#include "sim/chip_bench.h"

namespace {

std::vector<std::string> recordsOf(const std::string& file) {
    std::string text;
    FILES_ReadAll(std::string(CALVORIN_DEVICES "/RamImage/") + file, text);
    std::vector<std::string> lines;
    for (size_t at = 0; at < text.size();) {
        const size_t end = text.find('\n', at);
        lines.push_back(text.substr(at, end - at));
        at = end + 1;
    }
    return lines;
}

uint8_t sumOf(const std::vector<uint8_t>& bytes) {
    uint8_t sum = 0;
    for (const uint8_t byte : bytes)
        sum = static_cast<uint8_t>(sum + byte);
    return sum;
}

// The loader of a TYPE_A device as the chip is to receive it, from the file.
void downloadTypeA(Bench& bench) {
    CHIP_SetHostRate(*bench.chip, 9600);
    bench.exchange("5A");
    bench.exchange("28");
    bench.exchange("60");
    const bool wide = bench.description.RAMCodeAdrLen > 2;
    char address[16];
    std::snprintf(address, sizeof address, wide ? "%06X" : "%04X", bench.description.PWAreaStart);
    bench.exchange(std::string(address) + address + repeated("FF", 255));
    for (const std::string& line : recordsOf(bench.description.RamcodeFile)) {
        if (line == ":00000001FF" && bench.description.TimerInit != 0)
            bench.exchange("3A 02 01C6 00 1000 27");
        bench.exchange("3A" + line.substr(1));
    }
}

void downloadTypeB(Bench& bench) {
    std::string data;
    for (const std::string& line : recordsOf(bench.description.RamcodeFile)) {
        EXPECT_EQ(sumOf(bytesOf(line.substr(2))), 0xFF) << line;
        if (line[1] != '3')
            continue;
        const uint32_t address = static_cast<uint32_t>(std::stoul(line.substr(4, 8), nullptr, 16));
        const size_t offset = address - bench.description.RamStart;
        ASSERT_LE(data.size(), 2 * offset) << "records out of order";
        data += repeated("FF", static_cast<int>(offset - data.size() / 2));
        data += line.substr(12, line.size() - 14);
    }
    char header[32];
    std::snprintf(header, sizeof header, "%08X%04zX", bench.description.RamStart, data.size() / 2);
    const auto chk = [](const std::string& hex) {
        char text[4];
        std::snprintf(text, sizeof text, "%02X", static_cast<uint8_t>(-sumOf(bytesOf(hex))));
        return hex + text;
    };
    bench.exchange("86");
    bench.exchange("10" + repeated("FF", 12) + "0C");
    bench.exchange(chk(header));
    bench.exchange(chk(data));
}

} // namespace

TEST(Devices, EveryLoaderImageStarts) {
    const auto files = FILES_List(CALVORIN_DEVICES "/Device", ".dev");
    EXPECT_GE(files.size(), 10U);
    for (const std::filesystem::path& path : files) {
        SCOPED_TRACE(path);
        Bench bench(path.stem());
        EXPECT_EQ(bench.description.Device, path.stem());
        bench.reset(true);
        if (bench.description.RamcodeType == RAMCODE_TYPE_B)
            downloadTypeB(bench);
        else
            downloadTypeA(bench);
        EXPECT_EQ(bench.exchange(frame("00")), frame("00 56543130 8000"));
        EXPECT_EQ(bench.violations(), "");
    }
}
