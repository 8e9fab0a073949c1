#include "shell/console.h"

#include "notice/log.h"
#include "notice/progress.h"
#include "platform/event_queue.h"
#include "platform/format.h"
#include "platform/process.h"
#include "shell/account.h"
#include "shell/progress_line.h"

#include <mutex>

namespace {

constexpr int kTickMs = 100;
constexpr int kPlainTickMs = 1000;
constexpr char kEraseLine[] = "\r\x1b[K";

std::mutex consoleMutex;
std::string liveLine; // what the terminal shows now, without a line end
ProgressRate rate;
ProgressSteps steps;
bool isTerminal = false;

void print(const std::string& text) {
    constexpr std::string_view kNote = "Note: ";
    if (text.starts_with(kNote)) {
        ACCOUNT_Note(text.substr(kNote.size()));
    }
    const std::lock_guard lock(consoleMutex);
    const std::string erase = liveLine.empty() ? "" : kEraseLine;
    if (!PROGRESS_IsOpen()) {
        liveLine.clear(); // of an operation that has ended since the last tick
    }
    PROCESS_WriteError(erase + text + "\n" + liveLine);
}

void showLiveLine(const std::string& line) {
    const std::lock_guard lock(consoleMutex);
    if (line != liveLine) {
        PROCESS_WriteError(kEraseLine + line);
        liveLine = line;
    }
}

void tick() {
    if (!PROGRESS_IsOpen()) {
        showLiveLine("");
        rate = {};
        return;
    }
    const ProgressView view = PROGRESS_GetView();
    const double bytesPerSecond = PROGRESSLINE_Rate(rate, view);
    showLiveLine(PROGRESSLINE_Format(view, bytesPerSecond, PROCESS_TerminalWidth()));
}

// Where lines only follow each other.
void plainTick() {
    if (!PROGRESS_IsOpen()) {
        rate = {};
        steps = {};
        return;
    }
    const ProgressView view = PROGRESS_GetView();
    const double bytesPerSecond = PROGRESSLINE_Rate(rate, view);
    if (PROGRESSLINE_IsDue(steps, view)) {
        print(view.caption + PROGRESSLINE_Figures(view, bytesPerSecond));
    }
}

// Every line but the errors, which the notifier prints; the log has made it fit to be shown.
void showLogLine(const std::string&, const std::string& text) {
    if (!text.starts_with("Error: ")) {
        print(text);
    }
}

void start() {
    LOG_SetObserver(showLogLine);
    isTerminal = PROCESS_ErrorIsTerminal() && !PROCESS_TerminalIsDumb();
    EVENTS_SetTicker(isTerminal ? kTickMs : kPlainTickMs, isTerminal ? tick : plainTick);
}

void stop() {
    EVENTS_SetTicker(0, {});
    LOG_SetObserver({});
    if (isTerminal) {
        showLiveLine("");
    }
}

std::string withoutLineEnds(const std::string& text) {
    return text.substr(0, text.find_last_not_of("\r\n") + 1);
}

} // namespace

FrontEnd CONSOLE_FrontEnd() {
    FrontEnd frontEnd;
    frontEnd.start = start;
    frontEnd.stop = stop;
    return frontEnd;
}

void CONSOLE_PrintError(const std::string& text) {
    constexpr char kRed[] = "\x1b[31m";
    constexpr char kPlain[] = "\x1b[0m";
    const bool colour = isTerminal && !PROCESS_NoColour();
    const std::string message = "Error: " + formatPrintable(withoutLineEnds(text), LineEnds::stay);
    print(colour ? kRed + message + kPlain : message);
}

void CONSOLE_PrintLine(const std::string& text) {
    print(formatPrintable(text, LineEnds::shown));
}
