// What the data views cost: opening the list of 100,000 areas, and rows and lines a second.

#include "data/data_find.h"
#include "data/data_rows.h"

#include <benchmark/benchmark.h>
#include <vector>

namespace {

constexpr uint32_t kAreas = 100'000;
constexpr uint32_t kAreaLength = 32;
constexpr uint32_t kImageLength = 16 * 1024 * 1024;

void loadManyAreas() {
    HEXDATA_Reset();
    const std::vector<uint8_t> bytes(kAreaLength, 0x55);
    for (uint32_t area = 0; area < kAreas; ++area) {
        HEXDATA_AddData(area * 2 * kAreaLength, bytes);
    }
}

void loadOneArea() {
    HEXDATA_Reset();
    HEXDATA_AddData(0, std::vector<uint8_t>(kImageLength, 0x55));
}

void openHexList(benchmark::State& state) {
    loadManyAreas();
    for (auto _ : state) {
        benchmark::DoNotOptimize(HEXDATA_GetAreas());
        benchmark::DoNotOptimize(HEXLISTVIEW_MakeSummary());
    }
}

void makeHexListRows(benchmark::State& state) {
    loadManyAreas();
    const std::vector<AddressRange> areas = HEXDATA_GetAreas();
    HexListRow row;
    for (auto _ : state) {
        for (size_t index = 0; index < areas.size(); ++index) {
            HEXLISTVIEW_MakeRow(areas, index, row);
            benchmark::DoNotOptimize(row.hex.data());
        }
    }
    state.SetItemsProcessed(state.iterations() * kAreas);
}

void makeDumpLines(benchmark::State& state) {
    if (state.range(0) == 1) {
        loadOneArea();
    } else {
        loadManyAreas();
    }
    const AddressRange range = HEXDUMPVIEW_GetRange();
    const uint32_t lines = HEXDUMPVIEW_NumLines(range);
    DumpLine texts;
    for (auto _ : state) {
        for (uint32_t line = 0; line < lines; ++line) {
            HEXDUMPVIEW_MakeLine(range, line, texts);
            benchmark::DoNotOptimize(texts.hex.data());
        }
    }
    state.SetItemsProcessed(state.iterations() * lines);
}

void findNothing(benchmark::State& state) {
    if (state.range(0) == 1) {
        loadOneArea();
    } else {
        loadManyAreas();
    }
    const std::vector<AddressRange> areas = HEXDATA_GetAreas();
    const std::vector<uint8_t> pattern = {0x55, 0x55, 0x55, 0x56};
    for (auto _ : state) {
        benchmark::DoNotOptimize(DATAFIND_Next(areas, pattern, 0));
    }
    state.SetBytesProcessed(state.iterations() * HEXDATA_GetNumBytes());
}

} // namespace

BENCHMARK(openHexList)->Unit(benchmark::kMicrosecond);
BENCHMARK(makeHexListRows)->Unit(benchmark::kMillisecond);
BENCHMARK(makeDumpLines)->Arg(1)->Arg(kAreas)->Unit(benchmark::kMillisecond);
BENCHMARK(findNothing)->Arg(1)->Arg(kAreas)->Unit(benchmark::kMillisecond);
