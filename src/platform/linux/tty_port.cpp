// A device file of the system: built-in ports, USB adapters, pseudo-terminals.
#include "platform/clock.h"
#include "platform/format.h"
#include "platform/linux/descriptor_wait.h"
#include "platform/linux/line_limits.h"
#include "platform/linux/tty_settings.h"
#include "platform/port_state.h"
#include "platform/serial_port.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <grp.h>
#include <linux/serial.h>
#include <mutex>
#include <poll.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace {

constexpr int64_t kDrainSpareMs = 500;

struct TtyLine {
    int descriptor = -1;
    bool exclusive = false;
    int serialFlagsBefore = 0;
    bool flagsChanged = false;
    std::mutex mutex; // guards the texts
    std::string lost;
    std::string refusal;

    TtyLine() = default;
    TtyLine(const TtyLine&) = delete;
    TtyLine& operator=(const TtyLine&) = delete;
    ~TtyLine();
};
using TtyLinePtr = std::shared_ptr<TtyLine>;

// Low latency: a USB adapter hands over what it received at once instead of every 16 ms.
void setLowLatency(TtyLine& tty) {
    serial_struct info{};
    if (ioctl(tty.descriptor, TIOCGSERIAL, &info) != 0 || (info.flags & ASYNC_LOW_LATENCY) != 0) {
        return;
    }
    tty.serialFlagsBefore = info.flags;
    info.flags |= ASYNC_LOW_LATENCY;
    tty.flagsChanged = ioctl(tty.descriptor, TIOCSSERIAL, &info) == 0;
}

TtyLine::~TtyLine() {
    if (descriptor < 0) {
        return;
    }
    serial_struct info{};
    if (flagsChanged && ioctl(descriptor, TIOCGSERIAL, &info) == 0) {
        info.flags = serialFlagsBefore;
        ioctl(descriptor, TIOCSSERIAL, &info);
    }
    if (exclusive) {
        ioctl(descriptor, TIOCNXCL);
    }
    close(descriptor);
}

void setLost(TtyLine& tty, const std::string& reason) {
    const std::lock_guard lock(tty.mutex);
    if (tty.lost.empty()) {
        tty.lost = reason;
    }
}

std::string lostReason(TtyLine& tty) {
    const std::lock_guard lock(tty.mutex);
    return tty.lost;
}

bool isLost(TtyLine& tty) {
    const std::lock_guard lock(tty.mutex);
    return !tty.lost.empty();
}

bool isGone(int error) {
    return error == EIO || error == ENXIO || error == ENODEV;
}

constexpr char kGone[] = "the device has gone";

// `result` is that of a read or write. True when the call is to be made again once the device is
// ready; anything else that moved no bytes means that the device has gone.
bool mayTryAgain(TtyLine& tty, ssize_t result) {
    if (result < 0 && (errno == EAGAIN || errno == EINTR)) {
        return true;
    }
    setLost(tty, result == 0 || isGone(errno) ? kGone : systemText(errno));
    return false;
}

size_t readBytes(TtyLine& tty, std::span<uint8_t> buffer, Moment deadline, const Condition& stop) {
    size_t arrived = 0;
    while (arrived < buffer.size() && !isLost(tty)) {
        const ssize_t count =
            read(tty.descriptor, buffer.data() + arrived, buffer.size() - arrived);
        if (count > 0) {
            arrived += static_cast<size_t>(count);
        } else if (!mayTryAgain(tty, count) ||
                   waitDescriptor(tty.descriptor, POLLIN, deadline, stop) == 0) {
            break;
        }
    }
    return arrived;
}

// A hung-up device reports itself readable although it holds no bytes; those that it still holds
// come first.
bool waitReadable(TtyLine& tty, Moment deadline, const Condition& stop) {
    if (isLost(tty)) {
        return false;
    }
    const short events = waitDescriptor(tty.descriptor, POLLIN, deadline, stop);
    int waiting = 0;
    if ((events & (POLLHUP | POLLERR | POLLNVAL)) != 0 &&
        (ioctl(tty.descriptor, FIONREAD, &waiting) != 0 || waiting == 0)) {
        setLost(tty, kGone);
        return false;
    }
    return (events & POLLIN) != 0;
}

bool writeBytes(TtyLine& tty, std::span<const uint8_t> bytes) {
    while (!bytes.empty() && !isLost(tty)) {
        const ssize_t count = write(tty.descriptor, bytes.data(), bytes.size());
        if (count > 0) {
            bytes = bytes.subspan(static_cast<size_t>(count));
        } else if (!mayTryAgain(tty, count) ||
                   waitDescriptor(tty.descriptor, POLLOUT, CLOCK_After(kWriteStallMs), {}) == 0) {
            break;
        }
    }
    return bytes.empty();
}

// Waits until the system holds no more bytes to be sent, for as long as they take at `rate`.
bool waitDrained(int descriptor, uint32_t rate) {
    Moment deadline = kNever;
    int waiting = 0;
    while (ioctl(descriptor, TIOCOUTQ, &waiting) == 0) {
        if (waiting == 0) {
            return true;
        }
        if (deadline == kNever) {
            deadline = CLOCK_After(kDrainSpareMs +
                                   waiting * kBitsPerByte * 1000 / std::max<uint32_t>(rate, 1));
        }
        if (CLOCK_Now() >= deadline) {
            break;
        }
        CLOCK_Sleep(1);
    }
    return false;
}

bool setLine(TtyLine& tty, int line, bool on) {
    if (ioctl(tty.descriptor, on ? TIOCMBIS : TIOCMBIC, &line) == 0 || errno == ENOTTY ||
        errno == EINVAL) {
        return true; // without such lines there is nothing to set
    }
    const int error = errno;
    if (isGone(error)) {
        setLost(tty, kGone);
    }
    const std::lock_guard lock(tty.mutex);
    tty.refusal = "the control lines cannot be set: " + systemText(error);
    return false;
}

std::string rateProblem(int error, uint32_t wanted, uint32_t actual) {
    return error == ERANGE
               ? formatText("a rate of %u Bd is not possible, the device makes %u Bd of it", wanted,
                            actual)
               : formatText("a rate of %u Bd cannot be set: %s", wanted, systemText(error).c_str());
}

std::optional<uint32_t> configure(TtyLine& tty, const LineSettings& settings) {
    std::string problem = SERIALPORT_SettingsProblem(settings);
    uint32_t before = 0;
    if (problem.empty()) {
        uint32_t actual = 0;
        int error = ttyGetRate(tty.descriptor, before);
        if (error == 0) {
            const bool drain = waitDrained(tty.descriptor, before);
            error = ttySetRate(tty.descriptor, settings.baudrate, drain, actual);
        }
        if (isGone(error)) {
            setLost(tty, kGone);
        }
        problem = error == 0 ? std::string() : rateProblem(error, settings.baudrate, actual);
    }
    if (!problem.empty()) {
        const std::lock_guard lock(tty.mutex);
        tty.refusal = problem;
        return std::nullopt;
    }
    if (!settings.keepLines) {
        setLine(tty, TIOCM_DTR, false);
        setLine(tty, TIOCM_RTS, true);
    }
    return before;
}

std::string groupName(gid_t id) {
    std::vector<char> buffer(4096);
    group record{};
    group* found = nullptr;
    getgrgid_r(id, &record, buffer.data(), buffer.size(), &found);
    return found != nullptr ? found->gr_name : std::to_string(id);
}

std::string permissionText(const std::string& device) {
    struct stat status {};
    const bool groupMay = stat(device.c_str(), &status) == 0 && status.st_gid != 0 &&
                          (status.st_mode & (S_IRGRP | S_IWGRP)) == (S_IRGRP | S_IWGRP);
    return groupMay ? formatText("%s; the group %s would give it", kPortDenied,
                                 groupName(status.st_gid).c_str())
                    : kPortDenied;
}

std::string openProblem(const std::string& device, int error) {
    switch (error) {
    case EBUSY:
    case EWOULDBLOCK:
        return kPortInUse;
    case EACCES:
    case EPERM:
        return permissionText(device);
    case ENOTTY:
    case EISDIR:
    case EINVAL:
        return "not a serial device";
    case EIO:
    case ENXIO:
    case ENODEV:
        return "there is no hardware behind this device file";
    default:
        return systemText(error);
    }
}

// Opens the device for this program alone, in raw mode and with nothing received; 0 or an errno.
// The lock on the file keeps two of this program apart also where the user may open exclusive
// devices.
int openExclusive(TtyLine& tty, const std::string& device) {
    tty.descriptor = open(device.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (tty.descriptor < 0) {
        return errno;
    }
    uint32_t rate = 0;
    if (const int error = ttyGetRate(tty.descriptor, rate); error != 0) {
        return error;
    }
    if (flock(tty.descriptor, LOCK_EX | LOCK_NB) != 0 || ioctl(tty.descriptor, TIOCEXCL) != 0) {
        return errno;
    }
    tty.exclusive = true;
    if (const int error = ttySetRaw(tty.descriptor); error != 0) {
        return error;
    }
    // A device that stayed in use keeps what came too late for the program before this one.
    return ttyDropInput(tty.descriptor);
}

} // namespace

SerialPortPtr TTYPORT_Open(const std::string& device, std::string& error) {
    // Programs that keep to lock files expect it of others, although they hold the device unlocked.
    if (!PORTSTATE_LockHolder(device).empty()) {
        error = kPortInUse;
        return nullptr;
    }
    const auto tty = std::make_shared<TtyLine>();
    if (const int problem = openExclusive(*tty, device); problem != 0) {
        error = openProblem(device, problem);
        return nullptr;
    }
    setLowLatency(*tty);
    auto port = std::make_shared<SerialPort>();
    port->read = [tty](std::span<uint8_t> buffer, Moment deadline, const Condition& stop) {
        return readBytes(*tty, buffer, deadline, stop);
    };
    port->waitReadable = [tty](Moment deadline, const Condition& stop) {
        return waitReadable(*tty, deadline, stop);
    };
    port->write = [tty](std::span<const uint8_t> bytes) { return writeBytes(*tty, bytes); };
    port->configure = [tty](const LineSettings& settings) { return configure(*tty, settings); };
    port->setDtr = [tty](bool on) { return setLine(*tty, TIOCM_DTR, on); };
    port->setRts = [tty](bool on) { return setLine(*tty, TIOCM_RTS, on); };
    port->lostReason = [tty] { return lostReason(*tty); };
    port->refusal = [tty] {
        const std::lock_guard lock(tty->mutex);
        return tty->refusal;
    };
    port->description = device;
    return port;
}
