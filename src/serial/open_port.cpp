#include "serial/open_port.h"

#include "notice/log.h"
#include "platform/clock.h"
#include "platform/format.h"

#include <mutex>
#include <utility>

namespace {

std::mutex portMutex; // guards `current`
std::shared_ptr<OpenPort> current;
std::atomic<int> users{0};
std::atomic<uint32_t> generation{0};

} // namespace

void OPENPORT_Set(SerialPortPtr line, const std::string& name, const std::string& device,
                  const LineSettings& format) {
    auto port = std::make_shared<OpenPort>();
    port->line = std::move(line);
    port->name = name;
    port->device = device;
    port->format = format;
    {
        const std::lock_guard lock(portMutex);
        current = std::move(port);
    }
    ++generation;
    CLOCK_Notify();
}

void OPENPORT_Close() {
    const std::shared_ptr<OpenPort> port = OPENPORT_Get();
    if (!port) {
        return;
    }
    {
        const std::lock_guard lock(portMutex);
        port->closing = true;
    }
    CLOCK_Notify();
    CLOCK_Wait(kNever, [] { return users == 0; });
    {
        const std::lock_guard lock(portMutex);
        current.reset();
    }
    port->line.reset();
}

std::shared_ptr<OpenPort> OPENPORT_Get() {
    const std::lock_guard lock(portMutex);
    return current;
}

uint32_t OPENPORT_Generation() {
    return generation;
}

std::string OPENPORT_Named(const std::string& name, const std::string& device) {
    return name == device ? name : name + " (" + device + ")";
}

std::string OPENPORT_Reason(const std::string& name, const std::string& device,
                            const std::string& reason) {
    return (name == device ? device : name + " is " + device) + ": " + reason;
}

PortUse::PortUse() {
    const std::lock_guard lock(portMutex);
    if (current && !current->closing) {
        port_ = current;
        ++users;
    }
}

PortUse::~PortUse() {
    if (port_) {
        --users;
        if (port_->closing) {
            CLOCK_Notify();
        }
    }
}

bool PortUse::usable() const {
    return port_ && !port_->closing && !port_->lost;
}

std::string PortUse::loss() const {
    return port_ && port_->lost
               ? OPENPORT_Reason(port_->name, port_->device, port_->line->lostReason())
               : std::string();
}

void PortUse::noteLoss() {
    const std::string reason = port_->line->lostReason();
    if (reason.empty() || port_->lost.exchange(true)) {
        return;
    }
    LOG_Add(port_->name + " lost: " + reason +
            (port_->name == port_->device ? "" : " (" + port_->device + ")"));
    CLOCK_Notify();
}

Condition PortUse::orClosing(const Condition& stop) const {
    return [port = port_, stop] { return port->closing || (stop && stop()); };
}
