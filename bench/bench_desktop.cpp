// What large programs cost in the real frame, drawn off screen: opening a file until list and dump
// have been painted, and a repaint of a view after it was scrolled, with the allocations it makes.

#include "data/hexdata.h"
#include "data/program_file.h"
#include "data/program_format.h"
#include "platform/event_queue.h"
#include "platform/files.h"
#include "shell/front_end.h"
#include "shell/program_files.h"
#include "shell/session.h"
#include "ui/desktop.h"
#include "ui/frame.h"

#include <QAbstractScrollArea>
#include <QApplication>
#include <QMainWindow>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QScrollBar>
#include <atomic>
#include <benchmark/benchmark.h>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <new>
#include <random>
#include <string>
#include <vector>

namespace {

std::atomic<int64_t> allocations = 0;

} // namespace

void* operator new(size_t size) {
    ++allocations;
    if (void* memory = std::malloc(size)) {
        return memory;
    }
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}

void operator delete(void* memory, size_t) noexcept {
    std::free(memory);
}

namespace {

namespace fs = std::filesystem;

constexpr int64_t kOneArea = 1;
constexpr int64_t kFewAreas = 1'000;
constexpr int64_t kManyAreas = 100'000;
constexpr uint32_t kAreaLength = 32;
constexpr uint32_t kImageLength = 16 * 1024 * 1024;

// The frame with both views of the data, over a program folder of its own.
class Desktop {
public:
    Desktop() {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        application_ = std::make_unique<QApplication>(argc_, argv_);
        fs::create_directories(folder_);
        FILES_SetProgramPath(folder_ / "tool");
        EVENTS_Open();
        FRONTEND_Set(DESKTOP_Create());
        Session& session = SESSION_Get();
        session.frameRect[2] = 800;
        session.frameRect[3] = 600;
        session.showHexListView = 1;
        FRONTEND_Get().start();
        FRONTEND_Get().showFrame(true);
        processAll();
    }
    ~Desktop() {
        EVENTS_Close();
        FRONTEND_Get().stop();
        application_.reset();
        std::error_code none;
        fs::remove_all(folder_, none);
    }
    Desktop(const Desktop&) = delete;
    Desktop& operator=(const Desktop&) = delete;

    static void processAll() {
        while (EVENTS_ProcessOne()) {
        }
    }

    std::string writeProgram(int64_t areas) const {
        HEXDATA_Reset();
        const uint32_t length = areas == kOneArea ? kImageLength : kAreaLength;
        const std::vector<uint8_t> bytes(length, 0x55);
        for (int64_t area = 0; area < areas; ++area) {
            HEXDATA_AddData(static_cast<uint32_t>(area) * 2 * kAreaLength, bytes);
        }
        std::string path = folder_ / (std::to_string(areas) + ".hex");
        if (!PROGRAMFILE_Save(path, FILETYPE_INTEL)) {
            std::abort(); // nothing that is measured then means anything
        }
        return path;
    }

private:
    int argc_ = 1;
    char name_[6] = "bench";
    char* argv_[2] = {name_, nullptr};
    const fs::path folder_ =
        fs::temp_directory_path() / ("bench_desktop." + std::to_string(std::random_device()()));
    std::unique_ptr<QApplication> application_;
};

void openProgram(benchmark::State& state) {
    const Desktop desktop;
    const std::string path = desktop.writeProgram(state.range(0));
    for (auto _ : state) {
        HEXDATA_Clear();
        PROGRAM_Open(path);
        Desktop::processAll();
        benchmark::DoNotOptimize(FRAME_Get()->grab()); // everything has been painted
    }
}

void scrollViews(benchmark::State& state) {
    const Desktop desktop;
    PROGRAM_Open(desktop.writeProgram(state.range(0)));
    Desktop::processAll();
    int64_t repaints = 0;
    const int64_t before = allocations;
    for (auto _ : state) {
        for (QMdiSubWindow* window : FRAME_Get()->findChild<QMdiArea*>()->subWindowList()) {
            for (auto* area : window->findChildren<QAbstractScrollArea*>()) {
                QScrollBar* bar = area->verticalScrollBar();
                bar->setValue((bar->value() + 997) % (bar->maximum() + 1));
                area->viewport()->repaint();
                ++repaints;
            }
        }
    }
    state.SetItemsProcessed(repaints);
    state.counters["allocations"] =
        static_cast<double>(allocations - before) / static_cast<double>(repaints);
}

} // namespace

BENCHMARK(openProgram)->Arg(kOneArea)->Arg(kManyAreas)->Unit(benchmark::kMillisecond);
BENCHMARK(scrollViews)
    ->Arg(kOneArea)
    ->Arg(kFewAreas)
    ->Arg(kManyAreas)
    ->Unit(benchmark::kMillisecond);
