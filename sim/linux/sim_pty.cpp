#include "sim/sim_line.h"

#include <algorithm>
#include <array>
#include <asm/termbits.h>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <string_view>
#include <sys/ioctl.h>
#include <unistd.h>

namespace {

// A link can carry no mark but its target: this is the folder of the pseudo-terminals, written as
// nobody else writes it.
constexpr std::string_view kOwnFolder = "/dev/./pts/";
constexpr std::string_view kFolder = "/dev/pts/";

// Where a symbolic link leads; empty when there is none.
std::string targetOf(const std::string& link) {
    std::array<char, 4096> target{};
    const ssize_t length = readlink(link.c_str(), target.data(), target.size());
    return {target.data(), static_cast<size_t>(std::max<ssize_t>(length, 0))};
}

struct Pty {
    int master = -1;
    int slave = -1; // kept open: without it the master would see the host's closing as an end
    std::string link;
    std::string linkTarget;
    uint32_t fixedRate = 0;

    Pty() = default;
    Pty(const Pty&) = delete;
    Pty& operator=(const Pty&) = delete;
    ~Pty() {
        if (!link.empty() && targetOf(link) == linkTarget) {
            unlink(link.c_str()); // another virtual chip may have taken it over
        }
        if (slave >= 0) {
            close(slave);
        }
        if (master >= 0) {
            close(master);
        }
    }
};

bool makeRaw(int descriptor) {
    termios2 settings{};
    if (ioctl(descriptor, TCGETS2, &settings) != 0) {
        return false;
    }
    settings.c_iflag = 0;
    settings.c_oflag = 0;
    settings.c_lflag = 0;
    settings.c_cflag &= ~static_cast<tcflag_t>(CSIZE | PARENB);
    settings.c_cflag |= CS8 | CREAD | CLOCAL;
    settings.c_cc[VMIN] = 1;
    settings.c_cc[VTIME] = 0;
    return ioctl(descriptor, TCSETS2, &settings) == 0;
}

// The master answers with the settings that the host has made on its side.
uint32_t hostRate(const Pty& pty) {
    termios2 settings{};
    if (pty.fixedRate != 0 || ioctl(pty.master, TCGETS2, &settings) != 0) {
        return pty.fixedRate;
    }
    return settings.c_ospeed;
}

bool openPair(Pty& pty, std::string& path) {
    pty.master = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK);
    if (pty.master < 0 || grantpt(pty.master) != 0 || unlockpt(pty.master) != 0) {
        return false;
    }
    std::array<char, 128> name{};
    if (ptsname_r(pty.master, name.data(), name.size()) != 0) {
        return false;
    }
    path = name.data();
    pty.slave = open(name.data(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    return pty.slave >= 0 && makeRaw(pty.slave);
}

// Empty, or why there is no link. One left over by an earlier run is replaced, nothing else is.
std::string makeLink(Pty& pty, const std::string& path, const std::string& link) {
    if (targetOf(link).starts_with(kOwnFolder)) {
        unlink(link.c_str());
    }
    pty.linkTarget = path;
    if (path.starts_with(kFolder)) {
        pty.linkTarget.replace(0, kFolder.size(), kOwnFolder);
    }
    if (symlink(pty.linkTarget.c_str(), link.c_str()) != 0) {
        return std::strerror(errno) +
               std::string(errno == EEXIST ? ", not made by calvorin-sim" : "");
    }
    pty.link = link;
    return {};
}

bool receive(const Pty& pty, const HostSink& sink) {
    std::array<uint8_t, 4096> buffer{};
    const ssize_t count = read(pty.master, buffer.data(), buffer.size());
    if (count <= 0) {
        return count < 0 && (errno == EAGAIN || errno == EINTR);
    }
    sink({HostEvent::Kind::rate, {}, hostRate(pty)});
    sink({HostEvent::Kind::data, {buffer.begin(), buffer.begin() + count}});
    return true;
}

// A host that does not read has its line full: the rest is lost, as on a wire.
void send(const Pty& pty, std::span<const uint8_t> bytes) {
    while (!bytes.empty()) {
        const ssize_t count = write(pty.master, bytes.data(), bytes.size());
        if (count <= 0) {
            return;
        }
        bytes = bytes.subspan(static_cast<size_t>(count));
    }
}

} // namespace

SimServerLinePtr SIMPTY_Open(const std::string& link, uint32_t rate, std::string& error) {
    auto pty = std::make_shared<Pty>();
    pty->fixedRate = rate;
    auto line = std::make_shared<SimServerLine>();
    if (!openPair(*pty, line->address)) {
        error = std::string("pseudo-terminal: ") + std::strerror(errno);
        return nullptr;
    }
    const std::string problem = link.empty() ? "" : makeLink(*pty, line->address, link);
    if (!problem.empty()) {
        error = link + ": " + problem;
        return nullptr;
    }
    line->descriptors = [pty] { return std::vector<int>{pty->master}; };
    line->receive = [pty](const HostSink& sink) { return receive(*pty, sink); };
    line->send = [pty](std::span<const uint8_t> bytes) { send(*pty, bytes); };
    return line;
}
