// The one open port and who is inside it at the moment: what lets the worker thread use the port
// while the user-interface thread may close it.
#pragma once

#include "platform/serial_port.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>

struct OpenPort {
    SerialPortPtr line;
    std::string name; // "COM1", or the device where it is named in place of a number
    std::string device;
    LineSettings format; // its rate is the one below
    // As it was asked for last; what the device made of it may differ.
    std::atomic<uint32_t> rate{0};
    std::atomic<int64_t> lineFreeUs{0}; // the moment at which all that was written has left
    std::atomic<bool> closing{false};
    std::atomic<bool> lost{false};
    std::atomic<bool> writeFailed{false}; // the last hand-over of bytes failed
};

// Makes `line` the open port; there is none before. User-interface thread.
void OPENPORT_Set(SerialPortPtr line, const std::string& name, const std::string& device,
                  const LineSettings& format);
// Has every user leave the port, then closes it. User-interface thread.
void OPENPORT_Close();
// The open port, for a look from the user-interface thread; null when there is none.
std::shared_ptr<OpenPort> OPENPORT_Get();
// Goes up whenever a port is opened. Any thread.
uint32_t OPENPORT_Generation();

// "COM3 (/dev/ttyUSB0)"; a device that is named itself stands alone.
std::string OPENPORT_Named(const std::string& name, const std::string& device);
// A reason of a device's as it stands behind the text of an error.
std::string OPENPORT_Reason(const std::string& name, const std::string& device,
                            const std::string& reason);

// Keeps the port open while it exists. Any thread.
class PortUse {
public:
    PortUse();
    ~PortUse();
    PortUse(const PortUse&) = delete;
    PortUse& operator=(const PortUse&) = delete;

    bool isOpen() const { return port_ != nullptr; }
    // Whether there is a port, neither closing nor lost.
    bool usable() const;
    // Why the port is of no use any more, with its device; empty while it is.
    std::string loss() const;
    // Looks after a call that fell short whether the line is lost; says so in the log, once.
    void noteLoss();
    // A wait that ends when `stop` holds or the port is to be closed.
    Condition orClosing(const Condition& stop) const;
    OpenPort& port() const { return *port_; }
    SerialPort& line() const { return *port_->line; }

private:
    std::shared_ptr<OpenPort> port_;
};
