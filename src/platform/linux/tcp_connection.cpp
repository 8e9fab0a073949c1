#include "platform/linux/tcp_connection.h"

#include "platform/clock.h"
#include "platform/format.h"
#include "platform/linux/descriptor_wait.h"

#include <cerrno>
#include <memory>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <system_error>
#include <unistd.h>

namespace {

constexpr int64_t kConnectMs = 5000;

// A peer that vanished without a word is noticed after about ten seconds.
constexpr int kKeepAliveIdleSeconds = 5;
constexpr int kKeepAliveIntervalSeconds = 2;
constexpr int kKeepAliveProbes = 3;
constexpr int kUnansweredMs = 10'000;

void setOption(int descriptor, int level, int option, int value) {
    setsockopt(descriptor, level, option, &value, sizeof value);
}

void setOptions(int descriptor) {
    setOption(descriptor, IPPROTO_TCP, TCP_NODELAY, 1);
    setOption(descriptor, SOL_SOCKET, SO_KEEPALIVE, 1);
    setOption(descriptor, IPPROTO_TCP, TCP_KEEPIDLE, kKeepAliveIdleSeconds);
    setOption(descriptor, IPPROTO_TCP, TCP_KEEPINTVL, kKeepAliveIntervalSeconds);
    setOption(descriptor, IPPROTO_TCP, TCP_KEEPCNT, kKeepAliveProbes);
    setOption(descriptor, IPPROTO_TCP, TCP_USER_TIMEOUT, kUnansweredMs);
}

// 0, or the errno of the attempt.
int finishConnect(int descriptor, const addrinfo& address, Moment deadline) {
    if (connect(descriptor, address.ai_addr, address.ai_addrlen) == 0) {
        return 0;
    }
    if (errno != EINPROGRESS) {
        return errno;
    }
    if (waitDescriptor(descriptor, POLLOUT, deadline, {}) == 0) {
        return ETIMEDOUT;
    }
    int problem = 0;
    socklen_t size = sizeof problem;
    getsockopt(descriptor, SOL_SOCKET, SO_ERROR, &problem, &size);
    return problem;
}

std::string connectProblem(int problem, const std::string& host, const std::string& port) {
    switch (problem) {
    case ECONNREFUSED:
        return formatText("nothing listens on port %s of %s", port.c_str(), host.c_str());
    case ETIMEDOUT:
        return formatText("%s does not answer", host.c_str());
    case EHOSTUNREACH:
    case ENETUNREACH:
        return formatText("%s cannot be reached", host.c_str());
    default:
        return formatText("no connection with %s: %s", host.c_str(),
                          std::system_category().message(problem).c_str());
    }
}

} // namespace

int tcpConnect(const std::string& host, const std::string& port, std::string& error) {
    addrinfo hints{};
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* found = nullptr;
    if (getaddrinfo(host.c_str(), port.c_str(), &hints, &found) != 0) {
        error = formatText("the host %s is not known", host.c_str());
        return -1;
    }
    const std::unique_ptr<addrinfo, void (*)(addrinfo*)> addresses(found, freeaddrinfo);
    const Moment deadline = CLOCK_After(kConnectMs);
    for (const addrinfo* address = found; address != nullptr; address = address->ai_next) {
        const int descriptor =
            socket(address->ai_family, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
        const int problem = descriptor < 0 ? errno : finishConnect(descriptor, *address, deadline);
        if (problem == 0) {
            setOptions(descriptor);
            return descriptor;
        }
        error = connectProblem(problem, host, port);
        if (descriptor >= 0) {
            close(descriptor);
        }
    }
    return -1;
}
