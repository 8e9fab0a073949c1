// The bytes of a serial line over TCP and nothing else: "tcp://HOST:PORT". Rate and control lines
// are the server's own.
#include "platform/clock.h"
#include "platform/format.h"
#include "platform/linux/descriptor_wait.h"
#include "platform/linux/line_limits.h"
#include "platform/linux/tcp_connection.h"
#include "platform/rfc2217_codec.h"
#include "platform/serial_port.h"

#include <cerrno>
#include <mutex>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

struct TcpLine {
    int descriptor = -1;
    std::mutex mutex; // guards what follows
    std::string lost;
    std::string refusal;
    uint32_t rate = 0; // that the line is taken to have; 0: not told yet

    TcpLine() = default;
    TcpLine(const TcpLine&) = delete;
    TcpLine& operator=(const TcpLine&) = delete;
    ~TcpLine() {
        if (descriptor >= 0) {
            close(descriptor);
        }
    }
};
using TcpLinePtr = std::shared_ptr<TcpLine>;

std::string lossOf(TcpLine& line) {
    const std::lock_guard lock(line.mutex);
    return line.lost;
}

// `result` is that of a call that moved no bytes. False when the connection is lost.
bool mayGoOn(TcpLine& line, ssize_t result) {
    if (result < 0 && (errno == EAGAIN || errno == EINTR)) {
        return true;
    }
    const std::string reason = result == 0 ? "the port server closed the connection"
                                           : "the connection was lost: " + systemText(errno);
    const std::lock_guard lock(line.mutex);
    line.lost = line.lost.empty() ? reason : line.lost;
    return false;
}

size_t readTcp(TcpLine& line, std::span<uint8_t> buffer, Moment deadline, const Condition& stop) {
    size_t arrived = 0;
    while (arrived < buffer.size() && lossOf(line).empty()) {
        const std::span<uint8_t> rest = buffer.subspan(arrived);
        const ssize_t count = recv(line.descriptor, rest.data(), rest.size(), MSG_DONTWAIT);
        if (count > 0) {
            arrived += static_cast<size_t>(count);
        } else if (!mayGoOn(line, count) ||
                   waitDescriptor(line.descriptor, POLLIN, deadline, stop) == 0) {
            break;
        }
    }
    return arrived;
}

// A closed connection reports itself readable although it holds no bytes.
bool waitTcp(TcpLine& line, Moment deadline, const Condition& stop) {
    while (lossOf(line).empty() && waitDescriptor(line.descriptor, POLLIN, deadline, stop) != 0) {
        uint8_t byte = 0;
        const ssize_t count = recv(line.descriptor, &byte, 1, MSG_PEEK | MSG_DONTWAIT);
        if (count > 0) {
            return true;
        }
        mayGoOn(line, count);
    }
    return false;
}

bool writeTcp(TcpLine& line, std::span<const uint8_t> bytes) {
    while (!bytes.empty() && lossOf(line).empty()) {
        const ssize_t count =
            ::send(line.descriptor, bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
        if (count > 0) {
            bytes = bytes.subspan(static_cast<size_t>(count));
        } else if (!mayGoOn(line, count) ||
                   waitDescriptor(line.descriptor, POLLOUT, CLOCK_After(kWriteStallMs), {}) == 0) {
            break;
        }
    }
    return bytes.empty();
}

// The first rate is taken for the one that the server has; no other can be had.
std::optional<uint32_t> configureTcp(TcpLine& line, const LineSettings& settings) {
    const std::lock_guard lock(line.mutex);
    line.refusal = SERIALPORT_SettingsProblem(settings);
    if (line.refusal.empty() && line.rate != 0 && line.rate != settings.baudrate) {
        line.refusal = formatText("a tcp:// port stays at the rate of its server, taken to be %u "
                                  "Bd; rfc2217:// sets it",
                                  line.rate);
    }
    if (!line.refusal.empty()) {
        return std::nullopt;
    }
    line.rate = settings.baudrate;
    return line.rate;
}

} // namespace

SerialPortPtr TCPPORT_Open(const std::string& device, std::string& error) {
    std::string host;
    std::string number;
    if (!tcpParseName("tcp://", device, host, number)) {
        error = "a port server without control is named tcp://HOST:PORT";
        return nullptr;
    }
    const auto line = std::make_shared<TcpLine>();
    line->descriptor = tcpConnect(host, number, error);
    if (line->descriptor < 0) {
        return nullptr;
    }
    auto port = std::make_shared<SerialPort>();
    port->read = [line](std::span<uint8_t> buffer, Moment deadline, const Condition& stop) {
        return readTcp(*line, buffer, deadline, stop);
    };
    port->waitReadable = [line](Moment deadline, const Condition& stop) {
        return waitTcp(*line, deadline, stop);
    };
    port->write = [line](std::span<const uint8_t> bytes) { return writeTcp(*line, bytes); };
    port->configure = [line](const LineSettings& settings) {
        return configureTcp(*line, settings);
    };
    port->setDtr = [](bool) { return true; }; // nothing to set, as on a pseudo-terminal
    port->setRts = [](bool) { return true; };
    port->lostReason = [line] { return lossOf(*line); };
    port->refusal = [line] {
        const std::lock_guard lock(line->mutex);
        return line->refusal;
    };
    port->description = device;
    return port;
}
