#include "target/worker.h"

#include "bootrom/download.h"
#include "link/chip_record.h"
#include "link/target_link.h"
#include "link/target_state.h"
#include "notice/error.h"
#include "notice/log.h"
#include "notice/progress.h"
#include "notice/run.h"
#include "notice/status.h"
#include "platform/clock.h"
#include "platform/event_queue.h"
#include "serial/sio.h"
#include "serial/sio_line.h"
#include "serial/sio_log.h"
#include "serial/terminal_history.h"
#include "target/reply.h"

#include <algorithm>
#include <atomic>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

namespace {

constexpr int kTerminalBytesPerTurn = 101;
constexpr int kPollPauseMs = 200; // between two questions whether the loader is still there
constexpr int kDisconnectPauseMs = 100;
constexpr int kExitPauseMs = 100;

// Posting an operation, cancelling, and taking note of either exclude each other: a Cancel then
// belongs to exactly one command, and ends it exactly once.
std::mutex control;
// Guarded by it: what is posted, and the result of what was completed.
std::optional<Operation> handedOver;
std::optional<uint16_t> completed;

ClockThreadPtr thread; // the user-interface thread's
std::atomic<bool> workerRuns{false};
std::atomic<bool> quiet{false};
void* window = nullptr;
TerminalReceiver terminal;
std::atomic<bool> keyNoted{false}; // the terminal shows why keys are not sent

bool cancelIsSet() {
    return TARGET_State().Cancel != 0 || RUN_IsInterrupted();
}

bool failureNoted = false; // the history says why bytes were not sent; the user interface's

// To a chip in its boot ROM a key would be a command: some erase it.
void refuseKey() {
    constexpr std::string_view note = "not sent: the chip is in its boot ROM until Start "
                                      "Application or a reset";
    if (keyNoted.exchange(true)) {
        return;
    }
    TERMHISTORY_Note(note);
    if (terminal) {
        std::ranges::for_each("\n[" + std::string(note) + "]\n",
                              [](char c) { terminal(static_cast<uint8_t>(c)); });
    }
}

bool writeTyped(std::span<const uint8_t> bytes) {
    if (SIO_IsOpen() && !SIO_IsLost()) {
        TERMHISTORY_Add(TerminalSource::sent, bytes); // before the chip can answer it
    }
    const bool written = SIO_Write(bytes);
    if (!written && !failureNoted) {
        TERMHISTORY_Note("not sent: " + SIO_GetRefusal());
    }
    failureNoted = !written;
    return written;
}

void passOnReceivedBytes() {
    const TargetState& state = TARGET_State();
    SIO_WaitReadable([&state] { return state.LinkState != LINK_IDLE || state.Stop != 0; });
    for (int i = 0; i < kTerminalBytesPerTurn; ++i) {
        uint8_t byte = 0;
        if (state.LinkState != LINK_IDLE || SIO_Read(&byte, 1, 0) == 0) {
            return;
        }
        BOOT_NoteUnaskedByte();
        keyNoted = false;
        TERMHISTORY_Add(TerminalSource::received, {&byte, 1});
        if (terminal) {
            terminal(byte);
        }
    }
}

// The end of an operation or of the link, reported before anyone who waits for it goes on: an error
// must not be overtaken by the next command or by the end of the run. The done signal is given in
// the same breath as the operation is cleared, so that it cannot end the wait for a later one.
void reportAndRelease(const Failure& failure, bool linkFailed, bool resetBoot) {
    ERROR_Out(nullptr, failureText(failure), 1, failureHint(failure));
    if (linkFailed) {
        CHIPRECORD_Forget(); // another chip may be there when it answers again
    }
    TargetState& state = TARGET_State();
    bool dropped = false;
    {
        const std::lock_guard lock(control);
        if (linkFailed) {
            state.Identified = 0;
            dropped = TARGET_LeaveLinkState(LINK_RAMCODE, LINK_IDLE);
        }
        state.Operation = 0;
        state.Cancel = 0;
        if (resetBoot || dropped) {
            _BootReset();
        } else {
            PROGRESS_Done();
        }
    }
    if (dropped) {
        CLOCK_Sleep(kDisconnectPauseMs);
    }
}

// Hands over the result of a completed operation; whether it counts. A Cancel that came before this
// moment still ends it.
bool takeCompletion(uint16_t result) {
    TargetState& state = TARGET_State();
    const std::lock_guard lock(control);
    if (cancelIsSet()) {
        return false;
    }
    completed = result;
    state.Operation = 0;
    PROGRESS_Done();
    return true;
}

Operation takePosted() {
    const std::lock_guard lock(control);
    return *handedOver;
}

void serveOperation() {
    const Result<uint16_t> result = runOperation(takePosted());
    if (result && takeCompletion(*result)) {
        return;
    }
    if (TARGET_State().Stop != 0) {
        return; // the program ends; whoever waits is released with the thread
    }
    const Failure failure = result ? Failure{TERR_CANCELLED} : result.error();
    const bool linkFailed = failure.code == TERR_TIMEOUT;
    if (result || cancelIsSet()) {
        reportAndRelease({TERR_CANCELLED}, linkFailed, false);
    } else {
        reportAndRelease(failure, linkFailed, true);
    }
}

Result<Reply> poll() {
    const SioLogPoll folded;
    return exchange(kIdentify);
}

// A loader that does not identify itself cannot be worked with: the link ends, whatever it said.
void identify() {
    TargetState& state = TARGET_State();
    const Result<Reply> reply = poll();
    if (reply) {
        state.PacketSize = state.PageLen != 0 ? state.PageLen.load() : reply->value;
        TARGET_SetIdentified();
        return;
    }
    if (state.LinkState != LINK_RAMCODE || state.Stop != 0 || RUN_IsInterrupted()) {
        return; // the link was taken away meanwhile
    }
    Failure failure = reply.error();
    {
        const std::lock_guard lock(control);
        if (state.Identified.exchange(0) == 0) { // from here on nothing is posted any more
            failure.hint = {Cause::loaderSilent, loaderSentText()};
        }
    }
    reportAndRelease(failure, true, false);
}

void serveLoader() {
    const TargetState& state = TARGET_State();
    if (state.Operation != 0) {
        serveOperation();
    } else if (!RUN_IsInterrupted()) {
        identify();
    }
    const Condition hasWork = [&state] {
        return state.Operation != 0 || state.Stop != 0 || state.LinkState != LINK_RAMCODE;
    };
    if (RUN_IsInterrupted()) { // there is nothing left to ask the loader
        CLOCK_Wait(kNever, hasWork);
    } else if (state.LinkState == LINK_RAMCODE) {
        // A byte that nobody has asked for and a line that is lost are looked into at once.
        SIO_WaitReadable([&hasWork] { return hasWork() || SIO_IsLost(); },
                         CLOCK_After(kPollPauseMs));
    }
    if (hasWork() || RUN_IsInterrupted()) {
        SIO_FlushLog(); // the polls end here
    }
}

void runTurn() {
    const TargetState& state = TARGET_State();
    switch (state.LinkState) {
    case LINK_IDLE:
        passOnReceivedBytes();
        break;
    case LINK_RAMCODE:
        serveLoader();
        break;
    default:
        CLOCK_Wait(kNever, [&state] { return state.LinkState != LINK_BOOTROM || state.Stop != 0; });
        break;
    }
}

void runWorker() {
    TargetState& state = TARGET_State();
    PROGRESS_SetText("Waiting for identification...");
    while (state.Stop == 0) {
        runTurn();
    }
    {
        const std::lock_guard lock(control);
        workerRuns = false;
        state.Operation = 0;
        state.Stop = 0;
    }
    PROGRESS_Done();
    if (!quiet) {
        LOG_Add("Disconnected");
        STATUS_SetText("Disconnected", STATUS_CONNECTION);
    }
}

void stopWorker(bool quietly) {
    if (!thread) {
        return;
    }
    quiet = quietly;
    TARGET_State().Stop = 1;
    CLOCK_Notify();
    CLOCK_JoinThread(thread);
    thread = nullptr;
}

enum class Posting { posted, waiting, linkDown, cancelled };

Posting tryToPost(const Operation& operation) {
    TargetState& state = TARGET_State();
    const std::lock_guard lock(control);
    if (cancelIsSet()) {
        return Posting::cancelled;
    }
    if (state.LinkState != LINK_RAMCODE || !workerRuns) {
        return Posting::linkDown;
    }
    if (state.Identified == 0) {
        return Posting::waiting;
    }
    PROGRESS_Reset();
    handedOver = operation;
    completed.reset();
    state.Operation = operation.code;
    return Posting::posted;
}

} // namespace

void TARGET_Init(void* mainWindow, TerminalReceiver terminalReceive) {
    stopWorker(true);
    window = mainWindow;
    terminal = std::move(terminalReceive);
    TargetState& state = TARGET_State();
    state.LinkState = LINK_IDLE;
    state.Operation = 0;
    state.Identified = 0;
    state.Cancel = 0;
    state.Stop = 0;
    keyNoted = false;
    failureNoted = false;
    workerRuns = true;
    thread = CLOCK_StartThread(runWorker);
}

void TARGET_Exit() {
    _BootReset();
    if (thread) {
        CLOCK_Sleep(kExitPauseMs);
    }
    stopWorker(false);
}

void TARGET_Stop() {
    stopWorker(true);
}

void TARGET_BeginCommand(std::string_view caption) {
    {
        const std::lock_guard lock(control);
        TARGET_State().Cancel = 0;
    }
    PROGRESS_Open(caption, window);
    PROGRESS_SetCancelHandler(TARGET_Cancel);
}

// While an operation runs, the worker releases the command, after the report.
void TARGET_Cancel() {
    TargetState& state = TARGET_State();
    const std::lock_guard lock(control);
    state.Cancel = 1;
    if (state.Operation == 0) {
        PROGRESS_Done();
    }
}

bool TARGET_PostOperation(const Operation& operation) {
    PROGRESS_SetCancelHandler(TARGET_Cancel);
    Posting posting = tryToPost(operation);
    while (posting == Posting::waiting) {
        EVENTS_WaitOne();
        posting = tryToPost(operation);
    }
    if (posting == Posting::cancelled) {
        TARGET_TakeCancel();
    }
    CLOCK_Notify();
    return posting == Posting::posted;
}

std::optional<uint16_t> TARGET_RunOperation(const Operation& operation, std::string_view line) {
    std::optional<uint16_t> result;
    if (TARGET_PostOperation(operation)) {
        PROGRESS_Run(line, TARGET_Cancel);
        const std::lock_guard lock(control);
        result = completed;
    }
    if (result && TARGET_TakeCancel()) {
        result.reset(); // pressed as the operation ended
    }
    PROGRESS_Close();
    return result;
}

bool TARGET_TakeCancel(const Hint& hint) {
    {
        const std::lock_guard lock(control);
        if (!cancelIsSet()) {
            return false;
        }
        TARGET_State().Cancel = 0;
    }
    ERROR_Out(nullptr, failureText({TERR_CANCELLED}), 1, hint);
    return true;
}

int TARGET_TerminalSend(int value) {
    const int linkState = TARGET_State().LinkState;
    if (linkState == LINK_IDLE && BOOT_IsChipInRom()) {
        refuseKey();
        return LINK_BOOTROM;
    }
    if (linkState != LINK_IDLE) {
        return linkState;
    }
    const auto byte = static_cast<uint8_t>(value);
    return writeTyped({&byte, 1}) ? 1 : 0;
}

bool TARGET_TerminalWrite(std::span<const uint8_t> bytes) {
    if (TARGET_State().LinkState != LINK_IDLE) {
        return false;
    }
    if (BOOT_IsChipInRom()) {
        refuseKey();
        return false;
    }
    return writeTyped(bytes);
}
