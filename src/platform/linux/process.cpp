#include "platform/process.h"

#include "platform/clock.h"
#include "platform/files.h"

#include <atomic>
#include <csignal>
#include <cstdlib>
#include <dlfcn.h>
#include <exception>
#include <fcntl.h>
#include <new>
#include <pthread.h>
#include <sys/ioctl.h>
#include <sys/uio.h>
#include <thread>
#include <unistd.h>

namespace {

constexpr int kDefaultWidth = 80;

std::atomic<bool> ending{false};

void printAll(int descriptor, std::string_view text) {
    while (!text.empty()) {
        const ssize_t written = ::write(descriptor, text.data(), text.size());
        if (written <= 0) {
            return; // nobody reads any more; a message that cannot be shown must not end the run
        }
        text.remove_prefix(static_cast<size_t>(written));
    }
}

void (*lastWordOfProcess)(const char* reason) = nullptr;

void sayLastWord(const char* reason) noexcept {
    try {
        if (lastWordOfProcess != nullptr) {
            lastWordOfProcess(reason);
        }
    } catch (...) { // the memory may not suffice for it either
    }
}

// Without memory of its own: there may be none.
void printException(const char* reason) {
    static constexpr std::string_view kEraseLine = "\r\x1b[K"; // a live line may stand there
    const iovec parts[] = {
        {const_cast<char*>(kEraseLine.data()), PROCESS_ErrorIsTerminal() ? kEraseLine.size() : 0},
        {const_cast<char*>("Error: "), 7},
        {const_cast<char*>(reason), std::char_traits<char>::length(reason)},
        {const_cast<char*>("\n"), 1}};
    [[maybe_unused]] const ssize_t written = ::writev(STDERR_FILENO, parts, std::size(parts));
    sayLastWord(reason);
}

// The run's other threads go on meanwhile and its state may be half changed: nothing is tidied up.
[[noreturn]] void endByException() noexcept {
    try {
        if (std::current_exception()) {
            throw;
        }
        printException("the program was ended by a fault of its own");
    } catch (const std::bad_alloc&) {
        printException("the memory does not suffice");
    } catch (const std::exception& exception) {
        printException(exception.what());
    } catch (...) {
        printException("an unknown exception");
    }
    ::_exit(1);
}

sigset_t endingSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    struct sigaction hangUp {};
    const bool known = sigaction(SIGHUP, nullptr, &hangUp) == 0;
    if (!known || hangUp.sa_handler != SIG_IGN) { // ignored: the user started the run with nohup
        sigaddset(&signals, SIGHUP);
    }
    return signals;
}

} // namespace

void PROCESS_OpenStandardStreams() {
    int descriptor = 0;
    while (descriptor >= 0 && descriptor <= STDERR_FILENO) {
        descriptor = ::open("/dev/null", O_RDWR); // the lowest number that is free
    }
    ::close(descriptor);
}

void PROCESS_WriteOut(std::string_view text) {
    printAll(STDOUT_FILENO, text);
}

void PROCESS_WriteError(std::string_view text) {
    printAll(STDERR_FILENO, text);
}

bool PROCESS_ErrorIsTerminal() {
    return ::isatty(STDERR_FILENO) != 0;
}

int PROCESS_TerminalWidth() {
    winsize size{};
    const bool known = ::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
    return known ? size.ws_col : kDefaultWidth;
}

bool PROCESS_TerminalIsDumb() {
    const char* const kind = std::getenv("TERM");
    return kind == nullptr || *kind == '\0' || std::string_view(kind) == "dumb";
}

bool PROCESS_NoColour() {
    const char* value = std::getenv("NO_COLOR");
    return value != nullptr && *value != '\0';
}

void PROCESS_Beep() {
    if (PROCESS_ErrorIsTerminal()) {
        PROCESS_WriteError("\a");
    }
}

void PROCESS_CatchSignals(std::function<void()> handler) {
    // Blocked here, before any other thread exists, the signals are blocked in all of them and
    // reach only the thread that waits for them.
    static sigset_t signals;
    signals = endingSignals();
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    std::signal(SIGPIPE, SIG_IGN);
    std::thread([handler = std::move(handler)] {
        int number = 0;
        sigwait(&signals, &number);
        handler(); // first: what ends with a wait may be over before it is heard why
        ending = true;
        CLOCK_Notify();
        sigwait(&signals, &number);
        ::_exit(1);
    }).detach();
}

bool PROCESS_IsEnding() {
    return ending;
}

void PROCESS_ReportExceptions(void (*lastWord)(const char* reason)) {
    lastWordOfProcess = lastWord;
    std::set_terminate(endByException);
}

void* PROCESS_LoadFunction(const std::string& moduleFile, const char* function,
                           std::string& error) {
    const std::string path = FILES_ProgramFolder() + moduleFile;
    void* module = ::dlopen(path.c_str(), RTLD_NOW | RTLD_GLOBAL);
    void* address = module != nullptr ? ::dlsym(module, function) : nullptr;
    if (address == nullptr) {
        const char* reason = ::dlerror();
        error = reason != nullptr ? reason : "unknown function";
    }
    return address;
}
