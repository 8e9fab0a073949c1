#include "serial/sio.h"

#include "notice/error.h"
#include "notice/log.h"
#include "notice/run.h"
#include "persist/ini.h"
#include "platform/format.h"
#include "platform/port_list.h"
#include "serial/open_port.h"
#include "serial/port_hints.h"
#include "serial/sio_line.h"
#include "serial/sio_log.h"

#include <mutex>
#include <utility>

namespace {

std::mutex sioMutex; // guards the words below
SioConfig config;
LineSettings lineFormat;
std::string openFailure;
Hint openHint; // behind it
bool failureTolerated = false;
void logOpenState(const std::string& text) {
    LOG_Add(text);
    _LogEvent(text);
}

// Why a port was not opened: as it stands alone, and as it stands behind an error.
struct OpenFailure {
    std::string text;
    std::string reason;
    Hint hint;
};

// The line for the configured port, or null with the failure.
SerialPortPtr openLine(const SioConfig& wanted, std::string& device, OpenFailure& failure) {
    const std::string name = SIO_PortName();
    if (wanted.Port > kMaxComPort) {
        failure.text = failure.reason = name + " is not one of COM1 to COM20";
        failure.hint = PORTHINT_OfFailure(device, failure.reason);
        return nullptr;
    }
    device = wanted.Device.empty() ? SIO_DeviceOfPort(wanted.Port) : wanted.Device;
    std::string reason;
    SerialPortPtr line = SERIALPORT_Open(device, reason);
    if (!line) {
        failure.text = OPENPORT_Named(name, device) + ": " + reason;
        failure.reason = OPENPORT_Reason(name, device, reason);
        failure.hint = PORTHINT_OfFailure(device, reason);
    }
    return line;
}

void setOpenFailure(const OpenFailure& failure) {
    const std::lock_guard lock(sioMutex);
    openFailure = failure.text;
    openHint = failure.hint;
}

bool isFailureTolerated() {
    const std::lock_guard lock(sioMutex);
    return failureTolerated;
}

LineSettings getLineFormat() {
    const std::lock_guard lock(sioMutex);
    return lineFormat;
}

// Which plug it is, before what is done with it.
void logDevice(const std::string& name, const std::string& device) {
    const std::string adapter = PORTLIST_Adapter(PORTLIST_Find(device));
    if (name != device || !adapter.empty()) {
        LOG_Add(name + " is " + (name == device ? adapter : device) +
                (name == device || adapter.empty() ? "" : " (" + adapter + ")"));
    }
}

bool _InitSIO(uint32_t baudrate) {
    const SioConfig wanted = SIO_GetConfig();
    std::string device;
    OpenFailure failure;
    SerialPortPtr line = openLine(wanted, device, failure);
    setOpenFailure(failure);
    if (!line) {
        if (!isFailureTolerated()) {
            LOG_Add(failure.text);
            ERROR_Out(nullptr,
                      ERROR_WithReason("SIO::_InitSIO: Port not available", failure.reason), 1,
                      failure.hint);
        }
        return false;
    }
    const std::string name = SIO_PortName();
    OPENPORT_Set(std::move(line), name, device, getLineFormat());
    logDevice(name, device);
    SIO_SetRate(baudrate, isFailureTolerated());
    // To see who else has the port takes longer than a conversion.
    if (!isFailureTolerated() || !RUN_IsUnattended()) {
        PORTHINT_NoteOpened(device);
    }
    logOpenState(
        formatText("%s opened with %d Baud", name.c_str(), static_cast<int>(wanted.Baudrate)));
    return true;
}

bool _StartComm(uint32_t baudrate) {
    SIO_CloseAll();
    setOpenFailure({});
    if (SIO_PortName().empty()) {
        return true;
    }
    if (!_InitSIO(baudrate)) {
        if (!isFailureTolerated()) {
            ERROR_Out(nullptr, "SIO::_StartComm: Could not open COM-Port", 1);
        }
        return false;
    }
    LOG_Add("Communication started");
    return true;
}

} // namespace

void SIO_Init(uint32_t port, uint32_t baudrate, uint32_t logging, uint8_t byteSize, uint8_t parity,
              uint8_t stopBits) {
    {
        const std::lock_guard lock(sioMutex);
        config = {port, baudrate, logging};
        lineFormat = {0, byteSize, parity, stopBits};
        openFailure.clear();
        failureTolerated = false;
    }
    if (port != 0 && baudrate != 0 && logging != 0) {
        SIO_EnableLogging();
    }
}

void SIO_Exit() {
    SIO_CloseAll();
    SIO_EndTranscript();
}

SioConfig SIO_GetConfig() {
    const std::lock_guard lock(sioMutex);
    return config;
}

void SIO_SetConfig(const SioConfig& newConfig) {
    {
        const std::lock_guard lock(sioMutex);
        config = newConfig;
    }
    _StartComm(newConfig.Baudrate);
}

bool SIO_Restart() {
    return _StartComm(SIO_GetBaudrate());
}

void SIO_CloseAll() {
    const std::shared_ptr<OpenPort> port = OPENPORT_Get();
    if (!port) {
        return;
    }
    logOpenState("Closing " + port->name);
    OPENPORT_Close();
}

bool SIO_IsOpen() {
    return OPENPORT_Get() != nullptr;
}

bool SIO_IsLost() {
    const std::shared_ptr<OpenPort> port = OPENPORT_Get();
    return port && port->lost;
}

std::string SIO_GetLoss() {
    return PortUse().loss();
}

Hint SIO_SharedHint() {
    const std::shared_ptr<OpenPort> port = OPENPORT_Get();
    return port ? PORTHINT_Shared(port->device) : Hint{};
}

bool SIO_EnsureOpen() {
    const bool failedBefore = !SIO_IsOpen() && !SIO_GetOpenFailure().empty();
    return (!SIO_IsLost() && !failedBefore) || SIO_Restart();
}

void SIO_TolerateOpenFailure(bool tolerate) {
    const std::lock_guard lock(sioMutex);
    failureTolerated = tolerate;
}

std::string SIO_GetOpenFailure() {
    const std::lock_guard lock(sioMutex);
    return openFailure;
}

Hint SIO_GetOpenHint() {
    const std::lock_guard lock(sioMutex);
    return openHint;
}

std::string SIO_PortName() {
    const SioConfig now = SIO_GetConfig();
    return !now.Device.empty() ? now.Device
           : now.Port != 0     ? formatText("COM%u", now.Port)
                               : std::string();
}

std::string SIO_DeviceOfPort(uint32_t port) {
    std::string device;
    INI_ReadText("Settings PORTS", formatText("COM%u", port), device);
    return device.empty() ? SERIALPORT_DefaultDevice(port) : device;
}

uint32_t SIO_GetPort() {
    return SIO_GetConfig().Port;
}

uint32_t SIO_GetBaudrate() {
    return SIO_GetConfig().Baudrate;
}

uint32_t SIO_GetLogging() {
    return SIO_GetConfig().Logging;
}

void SIO_SetPort(uint32_t port) {
    const std::lock_guard lock(sioMutex);
    config.Port = port;
    config.Device.clear();
}

std::string SIO_GetDevice() {
    return SIO_GetConfig().Device;
}

void SIO_SetDevice(const std::string& device) {
    const std::lock_guard lock(sioMutex);
    config.Port = 0;
    config.Device = device;
}

void SIO_SetBaudrate(uint32_t baudrate) {
    const std::lock_guard lock(sioMutex);
    config.Baudrate = baudrate;
}

void SIO_SetLogging(uint32_t on) {
    {
        const std::lock_guard lock(sioMutex);
        if (config.Logging == on) {
            return;
        }
        config.Logging = on;
    }
    if (on == 0) {
        SIO_DisableLogging();
    } else {
        SIO_EnableLogging();
    }
}
