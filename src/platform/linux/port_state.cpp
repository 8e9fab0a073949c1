#include "platform/port_state.h"

#include "platform/files.h"
#include "platform/format.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <mutex>
#include <set>
#include <sys/stat.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

constexpr size_t kMostText = 4096; // of the small files of the system
constexpr const char* kDeviceFolder = "/dev/";

std::mutex foldersMutex;
SystemFolders systemFolders;

SystemFolders folders() {
    const std::lock_guard lock(foldersMutex);
    return systemFolders;
}

// Files of the system say that they are empty: they are read until they end.
std::string smallFile(const fs::path& path) {
    FileReader reader;
    std::string text(kMostText, '\0');
    const ptrdiff_t count = reader.open(path).ok() ? reader.read(text) : 0;
    text.resize(static_cast<size_t>(std::max<ptrdiff_t>(count, 0)));
    return text;
}

std::optional<int> numberIn(std::string_view text) {
    const size_t first = text.find_first_not_of(" \t\n");
    int value = 0;
    if (first == std::string_view::npos ||
        std::from_chars(text.data() + first, text.data() + text.size(), value).ec != std::errc()) {
        return std::nullopt;
    }
    return value;
}

std::vector<fs::path> entriesOf(const fs::path& folder) {
    std::vector<fs::path> paths;
    std::error_code error;
    for (fs::directory_iterator at(folder, error), end; !error && at != end; at.increment(error)) {
        paths.push_back(at->path());
    }
    std::ranges::sort(paths);
    return paths;
}

std::optional<dev_t> deviceNumber(const fs::path& path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 && S_ISCHR(status.st_mode)
               ? std::optional(status.st_rdev)
               : std::nullopt;
}

// Whoever may not look at one file of a process may look at none: it is not gone through.
bool hasOpen(const fs::path& process, dev_t device) {
    std::error_code error;
    for (fs::directory_iterator at(process / "fd", error), end; !error && at != end;
         at.increment(error)) {
        errno = 0;
        if (deviceNumber(at->path()) == device) {
            return true;
        }
        if (errno == EACCES) {
            return false;
        }
    }
    return false;
}

// The program at the other end of a pseudo-terminal may keep this end open too, so that it does not
// hang up: it reads nothing here. Its other end says which terminal it belongs to.
bool isFarEnd(const fs::path& process, const fs::path& terminal) {
    if (terminal.parent_path() != "/dev/pts") {
        return false;
    }
    const std::string index = "tty-index:\t" + terminal.filename().string() + "\n";
    return std::ranges::any_of(entriesOf(process / "fdinfo"), [&index](const fs::path& descriptor) {
        return smallFile(descriptor).find(index) != std::string::npos;
    });
}

std::string programName(const fs::path& process) {
    std::string name = smallFile(process / "comm");
    name.erase(name.find_last_not_of('\n') + 1);
    return name.empty() ? "a program" : name;
}

std::string listing(const fs::path& process, int id) {
    return formatText("%s (process %d)", programName(process).c_str(), id);
}

fs::path canonical(const std::string& device) {
    std::error_code error;
    const fs::path path = fs::canonical(device, error);
    return error ? fs::path(device) : path;
}

// The number stands as digits, or as the four bytes of the machine's own number.
std::optional<int> processInLock(const fs::path& lock) {
    const std::string text = smallFile(lock);
    int id = 0;
    if (text.size() == sizeof id && text.find_first_not_of("0123456789 \n") != std::string::npos) {
        std::memcpy(&id, text.data(), sizeof id);
        return id;
    }
    return numberIn(text);
}

fs::path ttyFolder(const std::string& device) {
    return folders().ttyClass / canonical(device).filename();
}

// A built-in port that is not fitted has a device file all the same, of the type 0.
bool isKnownHardware(const fs::path& tty) {
    std::error_code error;
    return fs::exists(tty / "device", error) && numberIn(smallFile(tty / "type")) != 0;
}

} // namespace

void PORTSTATE_SetFolders(const SystemFolders& newFolders) {
    const std::lock_guard lock(foldersMutex);
    systemFolders = newFolders;
}

std::string PORTSTATE_Holders(const std::string& device) {
    const std::optional<dev_t> number = deviceNumber(device);
    std::string holders;
    if (!number) {
        return holders;
    }
    const fs::path terminal = canonical(device);
    for (const fs::path& process : entriesOf(folders().processes)) {
        const std::optional<int> id = numberIn(process.filename().string());
        if (id && *id != getpid() && hasOpen(process, *number) && !isFarEnd(process, terminal)) {
            holders += (holders.empty() ? "" : ", ") + listing(process, *id);
        }
    }
    return holders;
}

std::string PORTSTATE_LockHolder(const std::string& device) {
    const SystemFolders where = folders();
    const std::set<fs::path> names = {fs::path(device).filename(), canonical(device).filename()};
    for (const fs::path& folder : where.locks) {
        for (const fs::path& name : names) {
            const fs::path lock = folder / ("LCK.." + name.string());
            const std::optional<int> id = processInLock(lock);
            std::error_code error;
            if (id && *id > 0 && *id != getpid() &&
                fs::exists(where.processes / std::to_string(*id), error)) {
                return formatText("%s, lock file %s",
                                  listing(where.processes / std::to_string(*id), *id).c_str(),
                                  lock.c_str());
            }
        }
    }
    return "";
}

std::optional<AdapterLatency> PORTSTATE_Latency(const std::string& device) {
    const fs::path file = ttyFolder(device) / "device" / "latency_timer";
    const std::optional<int> ms = numberIn(smallFile(file));
    return ms ? std::optional(AdapterLatency{*ms, file}) : std::nullopt;
}

std::vector<std::string> PORTSTATE_Devices() {
    std::vector<std::string> devices;
    for (const fs::path& tty : entriesOf(folders().ttyClass)) {
        if (isKnownHardware(tty)) {
            devices.push_back(kDeviceFolder + tty.filename().string());
        }
    }
    return devices;
}
