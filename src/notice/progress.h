// The progress of a running target operation: shared words that any thread writes, the wait for the
// operation's end, and what a display shows of them. No windows; a front end watches and draws.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

using CancelHandler = std::function<void()>;

// What a display shows at one moment.
struct ProgressView {
    std::string caption;
    std::string line1;   // the current step
    std::string line2;   // "%d of %d bytes" and the note
    std::string line3;   // "Elapsed time: 1:07", minutes and seconds
    std::string step;    // of the operation that line 1 names: "block 3 of 8"; may be empty
    std::string barText; // instead of the percentage while barTextMode is set
    bool barTextMode = false;
    bool hasRange = false; // false: keep showing what line 1, line 2 and the bar showed
    int32_t min = 0;
    int32_t max = 0;
    int32_t pos = 0;
    uint32_t elapsedMs = 0;
    bool showClock = false;
    bool byteCount = false; // pos counts bytes
    bool busyCursor = false;
    bool showCancel = true;
    bool closeRequest = false;
};

// Told on the user-interface thread when a display is to appear, and on any thread when something
// changed that it cannot leave to its next tick (bar text, Cancel button, close request).
struct ProgressObserver {
    std::function<void(void* parent)> opened;
    std::function<void()> changed;
};
void PROGRESS_SetObserver(ProgressObserver observer);

// User-interface thread. Starts a new progress: caption, clock from zero, Cancel shown, state
// reset.
void PROGRESS_Open(std::string_view caption, void* parent);
// User-interface thread. Sets line 1 and the cancel handler, then processes events until
// PROGRESS_Done; returns at once when it has been called since the last reset.
void PROGRESS_Run(std::string_view text, CancelHandler cancelHandler);

// The following may be called on any thread.
void PROGRESS_Reset(); // range, position, requests, note, step and bar text; not caption, line 1
                       // and clock
void PROGRESS_Done();  // ends PROGRESS_Run; the waiting thread wakes at once
bool PROGRESS_IsDone();
void PROGRESS_Close();  // the display goes away
bool PROGRESS_IsOpen(); // between PROGRESS_Open and PROGRESS_Close
void PROGRESS_SetText(std::string_view text);
void PROGRESS_SetMin(int32_t value);
void PROGRESS_SetMax(int32_t value);
void PROGRESS_SetPos(int32_t value);
void PROGRESS_SetNote(std::string_view text);
void PROGRESS_SetStep(std::string_view text);
void PROGRESS_HideByteCount();
void PROGRESS_SetCancelHandler(CancelHandler cancelHandler);
void PROGRESS_BusyCursor(bool on);
void PROGRESS_StartClock();
void PROGRESS_HideClock();
void PROGRESS_SetBarTextMode(bool on);
void PROGRESS_SetBarText(std::string_view text);
void PROGRESS_ShowCancel(bool show);
// The user pressed Cancel: calls the cancel handler, if there is one.
void PROGRESS_Cancel();

// How many were opened so far, and for how long they were open all together.
struct ProgressTotal {
    unsigned openings = 0;
    uint32_t ms = 0;
};
ProgressTotal PROGRESS_Total();

// What a display shows now.
ProgressView PROGRESS_GetView();
// The part of `whole` that is done: whole * (pos - min) / (max - min).
int PROGRESS_Share(const ProgressView& view, int whole);
int PROGRESS_Percent(const ProgressView& view);
