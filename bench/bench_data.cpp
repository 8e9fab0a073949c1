// The memory image and the program files: bytes a second of the checksums, of reading and of
// writing, for one large area and for many small ones.
#include "data/hexdata.h"
#include "data/program_file.h"
#include "data/program_format.h"

#include <benchmark/benchmark.h>
#include <cstdlib>
#include <filesystem>
#include <random>

namespace {

constexpr uint32_t kLarge = 16 << 20;   // bytes
constexpr uint32_t kManyAreas = 100000; // of 32 bytes each, 32 bytes apart
constexpr uint32_t kRecord = 32;        // bytes

std::vector<uint8_t> randomBytes(size_t count) {
    std::mt19937 random(1);
    std::vector<uint8_t> bytes(count);
    for (uint8_t& byte : bytes) {
        byte = static_cast<uint8_t>(random());
    }
    return bytes;
}

void fillImage(bool manyAreas) {
    HEXDATA_Reset();
    const std::vector<uint8_t> bytes =
        randomBytes(manyAreas ? size_t{kManyAreas} * kRecord : kLarge);
    if (!manyAreas) {
        HEXDATA_AddData(0, bytes);
        return;
    }
    for (uint32_t i = 0; i < kManyAreas; ++i) {
        HEXDATA_AddData(2 * kRecord * i, std::span(bytes).subspan(size_t{kRecord} * i, kRecord));
    }
}

void countBytes(benchmark::State& state, uint64_t bytes) {
    state.SetBytesProcessed(static_cast<int64_t>(bytes) * state.iterations());
}

using Calculation = void (*)(uint32_t, uint32_t, bool&, uint8_t);

void checksum(benchmark::State& state, Calculation calculate, bool manyAreas) {
    fillImage(manyAreas);
    const uint32_t range = HEXDATA_GetLastAddr() + 1;
    for (auto _ : state) {
        bool restart = true;
        calculate(0, range, restart, 0xFF);
        benchmark::DoNotOptimize(HEXDATA_GetChecksum());
    }
    countBytes(state, range);
}

// A name in the temporary folder that no other run uses.
std::filesystem::path scratchFile() {
    std::string name = (std::filesystem::temp_directory_path() / "calvorin-bench-XXXXXX").string();
    return mkdtemp(name.data());
}

void programFile(benchmark::State& state, int type, bool manyAreas, bool reading) {
    const std::filesystem::path folder = scratchFile();
    const std::filesystem::path file = folder / "program";
    fillImage(manyAreas);
    const uint32_t bytes = HEXDATA_GetNumBytes();
    bool good = PROGRAMFILE_Save(file, type);
    for (auto _ : state) {
        good = (reading ? PROGRAMFILE_Load(file) : PROGRAMFILE_Save(file, type)) && good;
    }
    if (!good || HEXDATA_GetNumBytes() != bytes) {
        state.SkipWithError("the file was not read or written");
    }
    countBytes(state, bytes);
    std::filesystem::remove_all(folder);
}

void addInReverse(benchmark::State& state) {
    const std::vector<uint8_t> record(kRecord, 0x5A);
    for (auto _ : state) {
        HEXDATA_Reset();
        for (uint32_t address = kLarge; address > 0; address -= kRecord) {
            HEXDATA_AddData(address - kRecord, record);
        }
    }
    countBytes(state, kLarge);
}

} // namespace

BENCHMARK_CAPTURE(checksum, sum, HEXDATA_CalcSum, false);
BENCHMARK_CAPTURE(checksum, crc, HEXDATA_CalcCRC, false);
BENCHMARK_CAPTURE(checksum, crc_many_areas, HEXDATA_CalcCRC, true);
BENCHMARK_CAPTURE(programFile, read_intel, FILETYPE_INTEL, false, true);
BENCHMARK_CAPTURE(programFile, read_srecord, FILETYPE_SRECORD, false, true);
BENCHMARK_CAPTURE(programFile, write_intel, FILETYPE_INTEL, false, false);
BENCHMARK_CAPTURE(programFile, write_srecord, FILETYPE_SRECORD, false, false);
BENCHMARK_CAPTURE(programFile, read_intel_many_areas, FILETYPE_INTEL, true, true);
BENCHMARK_CAPTURE(programFile, write_intel_many_areas, FILETYPE_INTEL, true, false);
BENCHMARK(addInReverse);
