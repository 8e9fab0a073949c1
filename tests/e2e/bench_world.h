// What an engineer at a bench has: a program folder with the built executable, and virtual chips on
// pseudo-terminals. Everything runs in real time, as separate processes.
#pragma once

#include "support/paths.h"
#include "support/temp_folder.h"

#include <chrono>
#include <csignal>
#include <cstdint>
#include <fcntl.h>
#include <functional>
#include <optional>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

using Strings = std::vector<std::string>;

// A process whose output goes to files.
class Process {
public:
    // `prepare` runs in the new process before the program starts.
    Process(const Strings& command, const std::filesystem::path& output,
            const std::function<void()>& prepare = {})
        : output_(output) {
        const std::string out = output.string() + ".out";
        const std::string err = output.string() + ".err";
        std::vector<char*> arguments;
        for (const std::string& argument : command) {
            arguments.push_back(const_cast<char*>(argument.c_str()));
        }
        arguments.push_back(nullptr);
        pid_ = fork();
        if (pid_ == 0) {
            redirect("/dev/null", O_RDONLY, STDIN_FILENO);
            redirect(out, O_WRONLY | O_CREAT | O_TRUNC, STDOUT_FILENO);
            redirect(err, O_WRONLY | O_CREAT | O_TRUNC, STDERR_FILENO);
            for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) {
                unsetenv(name); // no display, whatever the tests run in
            }
            // The waits of the boot ROM are real: a chip that a busy machine does not let run
            // misses them. Refused where the user may not; the machine then has to be less busy.
            setpriority(PRIO_PROCESS, 0, -15);
            if (prepare) {
                prepare();
            }
            execv(arguments[0], arguments.data());
            _exit(127);
        }
    }
    ~Process() {
        if (pid_ > 0) {
            signal(SIGKILL);
            wait();
        }
    }
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    void signal(int number) const { kill(pid_, number); }
    // The exit code; 128 and the signal's number for a process that a signal ended.
    int wait() {
        int status = 0;
        waitpid(pid_, &status, 0);
        pid_ = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }
    std::string out() const { return readFile(output_.string() + ".out"); }
    std::string err() const { return readFile(output_.string() + ".err"); }

private:
    // Runs in the new process.
    static void redirect(const std::string& path, int flags, int target) {
        const int descriptor = open(path.c_str(), flags, 0600);
        dup2(descriptor, target);
        close(descriptor);
    }
    std::filesystem::path output_;
    pid_t pid_ = -1;
};

struct RunResult {
    int exitCode = -1;
    std::string out;
    std::string err;
    Strings errors; // the lines "Error: ..." without that word
};

inline bool waitFor(const std::function<bool()>& ready, int ms = 60'000) {
    for (int waited = 0; waited < ms; waited += 5) {
        if (ready()) {
            return true;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return ready();
}

// A program folder: executable, device descriptions, RAM images, COM1 on "port".
class ProgramFolder {
public:
    ProgramFolder() {
        namespace fs = std::filesystem;
        fs::permissions(folder.path(), fs::perms::all);
        std::error_code linked; // a copy where the folders lie on different file systems
        fs::create_hard_link(builtFolder() / "calvorin", program(), linked);
        if (linked) {
            fs::copy_file(builtFolder() / "calvorin", program());
        }
        copyDevices(folder.path());
        writeFile(folder / "calvorin.ini",
                  "[Settings PORTS]\r\nCOM1 = \"" + (folder / "port").string() + "\"\r\n");
    }
    std::filesystem::path program() const { return folder / "calvorin"; }
    Strings command(const Strings& arguments) const {
        Strings command{program()};
        command.insert(command.end(), arguments.begin(), arguments.end());
        return command;
    }
    RunResult run(const Strings& arguments, const std::function<void()>& prepare = {}) const {
        Process process(command(arguments), folder / "run", prepare);
        RunResult result;
        result.exitCode = process.wait();
        result.out = process.out();
        result.err = process.err();
        for (const std::string& line : lines(result.err)) {
            if (line.starts_with("Error: ")) {
                result.errors.push_back(line.substr(7));
            }
        }
        return result;
    }
    static Strings lines(const std::string& text) {
        Strings found;
        size_t start = 0;
        for (size_t end = 0; (end = text.find('\n', start)) != std::string::npos; start = end + 1) {
            found.push_back(text.substr(start, end - start));
        }
        return found;
    }

    const TempFolder folder;
};

// A virtual chip on the folder's "port", unless the options name another kind of line.
class VirtualTarget {
public:
    VirtualTarget(const TempFolder& folder, const std::string& device, const Strings& options = {})
        : flash_(folder / "flash.bin") {
        Strings command{builtFolder() / "calvorin-sim",
                        "--device",
                        device,
                        "--devices",
                        builtFolder() / "Device",
                        "--link",
                        folder / "port",
                        "--flash-out",
                        flash_};
        command.insert(command.end(), options.begin(), options.end());
        process_.emplace(command, folder / "sim");
        waitFor([this] { return process_->out().find('\n') != std::string::npos; });
        port_ = process_->out().substr(0, process_->out().find('\n'));
    }
    // Ends the chip: 0 when the program under test kept all of its rules.
    int stop() {
        process_->signal(SIGTERM);
        const int code = process_->wait();
        summary_ = process_->out() + process_->err();
        return code;
    }
    void kill() const { process_->signal(SIGKILL); }
    const std::string& summary() const { return summary_; }
    const std::string& port() const { return port_; } // as it names its line
    // What the flash held when the chip was stopped.
    std::string flash() const { return readFile(flash_); }

private:
    std::filesystem::path flash_;
    std::string port_;
    std::string summary_;
    std::optional<Process> process_;
};

// The arguments of a run on a device: the commands, then the end.
inline Strings onDevice(const std::string& device, const Strings& rest) {
    Strings arguments{"-OptionsTargetDevice" + device, "-OptionsSettingsReset1", "-OptionsCOMPort1",
                      "-OptionsCOMBaudrate115200"};
    arguments.insert(arguments.end(), rest.begin(), rest.end());
    arguments.emplace_back("-Exit");
    return arguments;
}

// With a program file, loaded from the command line's first argument.
inline Strings withFile(const ProgramFolder& world, const std::string& text, Strings arguments) {
    writeFile(world.folder / "app.mot", text);
    arguments.insert(arguments.begin(), world.folder / "app.mot");
    return arguments;
}

// Runs `check` for every case, as many at a time as two processors serve in the short waits of the
// boot ROM: nearly all of a run are longer waits that the protocol prescribes.
template <class Case, class Check>
void forAll(const std::vector<Case>& cases, const Check& check) {
    constexpr size_t kAtOnce = 5;
    for (size_t start = 0; start < cases.size(); start += kAtOnce) {
        std::vector<std::jthread> threads;
        for (size_t i = start; i < std::min(start + kAtOnce, cases.size()); ++i) {
            threads.emplace_back([&check, &one = cases[i]] { check(one); });
        }
    }
}
