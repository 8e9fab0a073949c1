#include "notice/progress.h"

#include "platform/clock.h"
#include "platform/event_queue.h"
#include "platform/format.h"

#include <atomic>
#include <mutex>

namespace {

// The numbers are words that any thread writes and a display reads at its next tick.
std::atomic<int32_t> minimum{0};
std::atomic<int32_t> maximum{0};
std::atomic<int32_t> position{0};
std::atomic<bool> closeRequest{false};
std::atomic<bool> doneFlag{false};
std::atomic<bool> isOpen{false};
std::atomic<unsigned> openings{0};
std::atomic<bool> showClock{false};
std::atomic<bool> busyCursor{false};
std::atomic<bool> noByteCount{false};
std::atomic<bool> barTextMode{false};
std::atomic<bool> showCancel{true};
std::atomic<uint32_t> startTick{0};
std::atomic<uint32_t> openTick{0};
std::atomic<uint32_t> openMs{0}; // of those that are closed

std::mutex textMutex;
std::string caption;
std::string line1;
std::string note;
std::string step;
std::string barText;
CancelHandler cancelHandler;
ProgressObserver progressObserver;

// The difference of two positions, which may be addresses beyond the signed range.
int32_t distance(int32_t from, int32_t to) {
    return static_cast<int32_t>(static_cast<uint32_t>(to) - static_cast<uint32_t>(from));
}

void setText(std::string& target, std::string_view text) {
    const std::lock_guard lock(textMutex);
    target = text;
}

std::string getText(const std::string& source) {
    const std::lock_guard lock(textMutex);
    return source;
}

// What was open until now counts as open no more.
void endCount() {
    if (isOpen.exchange(false)) {
        openMs += CLOCK_Tick() - openTick;
    }
}

void notifyChanged() {
    std::function<void()> changed;
    {
        const std::lock_guard lock(textMutex);
        changed = progressObserver.changed;
    }
    if (changed) {
        changed();
    }
}

} // namespace

void PROGRESS_SetObserver(ProgressObserver newObserver) {
    const std::lock_guard lock(textMutex);
    progressObserver = std::move(newObserver);
}

void PROGRESS_Open(std::string_view newCaption, void* parent) {
    setText(caption, newCaption);
    PROGRESS_StartClock();
    PROGRESS_Reset();
    showCancel = true;
    endCount();
    ++openings;
    openTick = CLOCK_Tick();
    isOpen = true;
    std::function<void(void*)> opened;
    {
        const std::lock_guard lock(textMutex);
        opened = progressObserver.opened;
    }
    if (opened) {
        opened(parent);
    }
}

void PROGRESS_Run(std::string_view text, CancelHandler handler) {
    setText(line1, text);
    PROGRESS_SetCancelHandler(std::move(handler));
    while (!doneFlag) {
        EVENTS_WaitOne();
    }
}

void PROGRESS_Reset() {
    minimum = 0;
    maximum = 0;
    position = 0;
    closeRequest = false;
    doneFlag = false;
    noByteCount = false;
    barTextMode = false;
    setText(note, "");
    setText(step, "");
    setText(barText, "");
}

void PROGRESS_Done() {
    doneFlag = true;
    EVENTS_Post([] {}); // what PROGRESS_Run waits for
}

bool PROGRESS_IsDone() {
    return doneFlag;
}

void PROGRESS_Close() {
    endCount();
    closeRequest = true;
    notifyChanged();
}

bool PROGRESS_IsOpen() {
    return isOpen;
}

ProgressTotal PROGRESS_Total() {
    return {openings, openMs + (isOpen ? CLOCK_Tick() - openTick : 0)};
}

void PROGRESS_SetText(std::string_view text) {
    setText(line1, text);
}

void PROGRESS_SetMin(int32_t value) {
    minimum = value;
}

void PROGRESS_SetMax(int32_t value) {
    maximum = value;
}

void PROGRESS_SetPos(int32_t value) {
    position = value;
}

void PROGRESS_SetNote(std::string_view text) {
    setText(note, text);
}

void PROGRESS_SetStep(std::string_view text) {
    setText(step, text);
}

void PROGRESS_HideByteCount() {
    noByteCount = true;
}

void PROGRESS_SetCancelHandler(CancelHandler handler) {
    const std::lock_guard lock(textMutex);
    cancelHandler = std::move(handler);
}

void PROGRESS_BusyCursor(bool on) {
    busyCursor = on;
}

void PROGRESS_StartClock() {
    startTick = CLOCK_Tick();
    showClock = true;
    busyCursor = true;
}

void PROGRESS_HideClock() {
    showClock = false;
    busyCursor = false;
}

void PROGRESS_SetBarTextMode(bool on) {
    barTextMode = on;
}

void PROGRESS_SetBarText(std::string_view text) {
    setText(barText, text);
    notifyChanged();
}

void PROGRESS_ShowCancel(bool show) {
    showCancel = show;
    notifyChanged();
}

void PROGRESS_Cancel() {
    CancelHandler handler;
    {
        const std::lock_guard lock(textMutex);
        handler = cancelHandler;
    }
    if (handler) {
        handler();
    }
}

ProgressView PROGRESS_GetView() {
    ProgressView view;
    view.caption = getText(caption);
    view.line1 = getText(line1);
    view.step = getText(step);
    view.barText = getText(barText);
    view.min = minimum;
    view.max = maximum;
    view.pos = position;
    view.hasRange = distance(view.min, view.max) > 0;
    view.byteCount = !noByteCount;
    view.barTextMode = barTextMode;
    view.showClock = showClock;
    view.busyCursor = busyCursor;
    view.showCancel = showCancel;
    view.closeRequest = closeRequest;
    if (view.byteCount) {
        view.line2 = formatText("%d of %d bytes", distance(view.min, view.pos),
                                distance(view.min, view.max));
    }
    view.line2 += getText(note);
    if (view.showClock) {
        view.elapsedMs = CLOCK_Tick() - startTick;
        view.line3 = formatText("Elapsed time: %u:%02u", view.elapsedMs / 60'000,
                                view.elapsedMs / 1000 % 60);
    }
    return view;
}

int PROGRESS_Share(const ProgressView& view, int whole) {
    if (!view.hasRange) {
        return 0;
    }
    return static_cast<int>(int64_t{distance(view.min, view.pos)} * whole /
                            distance(view.min, view.max));
}

int PROGRESS_Percent(const ProgressView& view) {
    return PROGRESS_Share(view, 100);
}
