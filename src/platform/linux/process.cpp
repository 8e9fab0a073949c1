#include "platform/process.h"

#include "platform/files.h"

#include <csignal>
#include <cstdlib>
#include <dlfcn.h>
#include <fcntl.h>
#include <pthread.h>
#include <sys/ioctl.h>
#include <thread>
#include <unistd.h>

namespace {

constexpr int kDefaultWidth = 80;

void printAll(int descriptor, std::string_view text) {
    while (!text.empty()) {
        const ssize_t written = ::write(descriptor, text.data(), text.size());
        if (written <= 0) {
            return; // nobody reads any more; a message that cannot be shown must not end the run
        }
        text.remove_prefix(static_cast<size_t>(written));
    }
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
        handler();
        sigwait(&signals, &number);
        ::_exit(1);
    }).detach();
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
