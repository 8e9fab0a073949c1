#include "platform/format.h"
#include "sim/sim_line.h"
#include "sim/telnet.h"

#include <arpa/inet.h>
#include <array>
#include <cerrno>
#include <cstring>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

struct Server {
    int listener = -1;
    int host = -1; // the one that is served
    Telnet telnet;

    Server() = default;
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;
    ~Server() {
        if (host >= 0) {
            close(host);
        }
        if (listener >= 0) {
            close(listener);
        }
    }
};

void sendAll(int descriptor, std::span<const uint8_t> bytes) {
    while (!bytes.empty()) {
        const ssize_t count = ::send(descriptor, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (count <= 0) {
            return;
        }
        bytes = bytes.subspan(static_cast<size_t>(count));
    }
}

void acceptHost(Server& server) {
    const int host = accept4(server.listener, nullptr, nullptr, SOCK_CLOEXEC);
    if (host < 0) {
        return;
    }
    if (server.host >= 0) { // a line has one host
        close(host);
        return;
    }
    const int on = 1;
    setsockopt(host, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    server.host = host;
    server.telnet = Telnet{};
}

void receive(Server& server, const HostSink& sink) {
    if (server.host < 0) {
        acceptHost(server);
        return;
    }
    std::array<uint8_t, 4096> buffer{};
    const ssize_t count = recv(server.host, buffer.data(), buffer.size(), MSG_DONTWAIT);
    if (count < 0 && (errno == EAGAIN || errno == EINTR)) {
        return;
    }
    if (count <= 0) {
        close(server.host);
        server.host = -1;
        return;
    }
    const auto bytes = std::span<const uint8_t>(buffer).first(static_cast<size_t>(count));
    for (const HostEvent& event : TELNET_Receive(server.telnet, bytes)) {
        sink(event);
    }
    sendAll(server.host, server.telnet.answers);
    server.telnet.answers.clear();
}

int listenOn(Server& server, int port) {
    server.listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    const int on = 1;
    setsockopt(server.listener, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto* const raw = reinterpret_cast<sockaddr*>(&address);
    if (bind(server.listener, raw, size) != 0 || listen(server.listener, 1) != 0 ||
        getsockname(server.listener, raw, &size) != 0) {
        return -1;
    }
    return ntohs(address.sin_port);
}

} // namespace

SimServerLinePtr SIMTCP_Open(int port, std::string& error) {
    auto server = std::make_shared<Server>();
    const int bound = listenOn(*server, port);
    if (bound < 0) {
        error = formatText("port %d: %s", port, std::strerror(errno));
        return nullptr;
    }
    auto line = std::make_shared<SimServerLine>();
    line->address = formatText("rfc2217://127.0.0.1:%d", bound);
    line->descriptors = [server] {
        return std::vector<int>{server->host >= 0 ? server->host : server->listener};
    };
    line->receive = [server](const HostSink& sink) {
        receive(*server, sink);
        return true;
    };
    line->send = [server](std::span<const uint8_t> bytes) {
        if (server->host >= 0) {
            sendAll(server->host, TELNET_Escape(bytes));
        }
    };
    return line;
}
