#include "serial/sio.h"

#include "notice/error.h"
#include "notice/log.h"
#include "persist/ini.h"
#include "platform/format.h"
#include "platform/port_list.h"
#include "serial/open_port.h"
#include "serial/port_hints.h"
#include "serial/sio_log.h"

#include <algorithm>
#include <atomic>
#include <mutex>
#include <utility>
#include <vector>

namespace {

std::mutex sioMutex; // guards the words below
SioConfig config;
LineSettings lineFormat;
std::string openFailure;
Hint openHint; // behind it
bool failureTolerated = false;
std::atomic<uint64_t> bytesWritten{0};

// What the calling thread holds back while it builds a frame.
struct HeldFrame {
    int depth = 0;
    std::vector<uint8_t> bytes;
};
thread_local HeldFrame held;

int64_t lineTimeUs(const PortUse& use, size_t bytes) {
    constexpr int64_t kBitsPerByte = 10; // with start and stop bit
    const uint32_t rate = use.port().rate;
    return rate == 0 ? 0 : static_cast<int64_t>(bytes) * kBitsPerByte * 1'000'000 / rate;
}

uint32_t roundTripMs(const PortUse& use) {
    return use.line().roundTripMs ? static_cast<uint32_t>(use.line().roundTripMs()) : 0;
}

bool writeNow(std::span<const uint8_t> bytes) {
    PortUse use;
    if (!use.usable()) {
        return false;
    }
    const bool written = use.line().write(bytes);
    const int64_t begins = std::max(use.port().lineFreeUs.load(), CLOCK_Now().us);
    use.port().lineFreeUs = begins + lineTimeUs(use, bytes.size());
    use.port().writeFailed = !written;
    bytesWritten += written ? bytes.size() : 0;
    if (!written) {
        use.noteLoss();
    }
    return written;
}

void sendHeld() {
    if (!held.bytes.empty()) {
        writeNow(std::exchange(held.bytes, {}));
    }
}

// Whether bytes given to the port now have a chance to be sent.
bool acceptsBytes() {
    const PortUse use;
    return use.usable() && !use.port().writeFailed;
}

// "COM3 (/dev/ttyUSB0)"; a device that is named itself stands alone.
std::string withDevice(const std::string& name, const std::string& device) {
    return name == device ? name : name + " (" + device + ")";
}

std::string refusalOf(const PortUse& use) {
    return use.line().refusal ? use.line().refusal() : std::string();
}

// Why the port does not do what it is asked to; empty where nobody knows.
std::string whyNot(const PortUse& use) {
    if (!use.isOpen()) {
        return "no port is open";
    }
    const std::string refusal = refusalOf(use);
    return !use.loss().empty() || refusal.empty()
               ? use.loss()
               : OPENPORT_Reason(use.port().name, use.port().device, refusal);
}

// Says in the log which device refused something, where it gave a reason.
void logRefusal(const PortUse& use) {
    if (const std::string reason = refusalOf(use); !reason.empty()) {
        LOG_Add(withDevice(use.port().name, use.port().device) + ": " + reason);
    }
}

// Empty when the rate is set, with the one in force before, else the error to report. The port is
// left before anything is reported: an error's message box may be where the port gets closed.
std::string setRate(uint32_t baudrate, uint32_t& before) {
    PortUse use;
    if (!use.usable()) {
        return ERROR_WithReason("SIO::SIO_ChangeBaudrate: GetCommState failed", whyNot(use));
    }
    LineSettings settings;
    {
        const std::lock_guard lock(sioMutex);
        settings = lineFormat;
    }
    settings.baudrate = baudrate;
    const std::optional<uint32_t> result = use.line().configure(settings);
    if (!result) {
        use.noteLoss();
        logRefusal(use);
        return ERROR_WithReason("SIO::SIO_ChangeBaudrate: SetCommState failed", whyNot(use));
    }
    // A device that rounds tells another rate than the one that the chip is to be told.
    const uint32_t asked = use.port().rate.exchange(baudrate);
    before = asked != 0 ? asked : *result;
    return "";
}

uint32_t changeRate(uint32_t baudrate, bool quiet) {
    uint32_t before = 0;
    const std::string error = setRate(baudrate, before);
    if (!error.empty() && !quiet) {
        const std::string loss = SIO_GetLoss();
        ERROR_Out(nullptr, error, 1, loss.empty() ? Hint{} : Hint{Cause::portGone, loss});
    }
    return before;
}

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
        failure.text = withDevice(name, device) + ": " + reason;
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
    OPENPORT_Set(std::move(line), name, device);
    logDevice(name, device);
    changeRate(baudrate, isFailureTolerated());
    PORTHINT_NoteOpened(device);
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

uint64_t SIO_BytesWritten() {
    return bytesWritten;
}

std::string SIO_GetRefusal() {
    return whyNot(PortUse());
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

uint32_t SIO_ChangeBaudrate(uint32_t baudrate) {
    sendHeld();
    if (SIO_IsOpen()) { // what the change makes of the lines is part of how a reset goes
        _LogEvent(formatText("Rate %u Bd, DTR off, RTS on", baudrate));
    }
    const uint32_t before = changeRate(baudrate, false);
    if (before == 0) {
        _LogEvent("Rate not changed");
    }
    return before;
}

void SIO_RestoreBaudrate(uint32_t baudrate) {
    sendHeld();
    changeRate(baudrate, true);
}

uint32_t SIO_TransferMs(size_t bytes) {
    const PortUse use;
    return use.usable() ? static_cast<uint32_t>((lineTimeUs(use, bytes) + 999) / 1000) : 0;
}

Moment SIO_AnswerDeadline(uint32_t timeoutMs, size_t replyBytes) {
    const Moment deadline = CLOCK_After(timeoutMs);
    const PortUse use;
    if (!use.usable()) {
        return deadline;
    }
    const int64_t stillToLeave = std::max<int64_t>(use.port().lineFreeUs - CLOCK_Now().us, 0);
    return Moment{deadline.us + stillToLeave + lineTimeUs(use, replyBytes) +
                  roundTripMs(use) * int64_t{1000}};
}

uint32_t SIO_RoundTripMs() {
    const PortUse use;
    return use.usable() ? roundTripMs(use) : 0;
}

size_t SIO_Read(uint8_t* buffer, size_t count, uint32_t timeoutMs, const Condition& stop) {
    return SIO_ReadUntil(buffer, count, CLOCK_After(timeoutMs), stop);
}

size_t SIO_ReadUntil(uint8_t* buffer, size_t count, Moment deadline, const Condition& stop) {
    sendHeld();
    size_t arrived = 0;
    bool usable = false;
    if (PortUse use; use.usable() && !(stop && stop())) {
        arrived = use.line().read({buffer, count}, deadline, use.orClosing(stop));
        if (arrived < count) {
            use.noteLoss();
        }
        usable = use.usable();
    }
    if (arrived > 0) {
        _LogData({buffer, arrived}, "READ ");
    }
    if (arrived < count && !usable) {
        CLOCK_Wait(deadline, [&stop] { return stop && stop(); });
    }
    return arrived;
}

bool SIO_WaitReadable(const Condition& stop, Moment deadline) {
    sendHeld();
    while (!stop()) {
        const uint32_t generation = OPENPORT_Generation();
        if (PortUse use; use.usable()) {
            const bool readable = use.line().waitReadable(deadline, use.orClosing(stop));
            if (stop()) {
                return false;
            }
            use.noteLoss();
            if (use.usable()) {
                if (readable || CLOCK_Now() >= deadline) {
                    return readable;
                }
                continue;
            }
        }
        if (!CLOCK_Wait(deadline, [&] { return stop() || OPENPORT_Generation() != generation; })) {
            return false;
        }
    }
    return false;
}

bool SIO_Write(std::span<const uint8_t> bytes) {
    _LogData(bytes, "WRITE");
    if (held.depth == 0) {
        return writeNow(bytes);
    }
    held.bytes.insert(held.bytes.end(), bytes.begin(), bytes.end());
    return acceptsBytes();
}

bool SIO_WriteByte(uint8_t value) {
    return SIO_Write({&value, 1});
}

bool SIO_SetLines(LineFunction function) {
    sendHeld();
    PortUse use;
    if (!use.usable()) {
        return false;
    }
    const bool on = function == SETDTR || function == SETRTS;
    const bool isDtr = function == SETDTR || function == CLRDTR;
    const std::string call = std::string(isDtr ? "DTR" : "RTS") + (on ? " on" : " off");
    _LogEvent(call); // before what the chip makes of it
    const bool done = isDtr ? use.line().setDtr(on) : use.line().setRts(on);
    if (!done) {
        _LogEvent(call + " failed");
        use.noteLoss();
        logRefusal(use);
    }
    return done;
}

SioFrame::SioFrame() {
    ++held.depth;
}

SioFrame::~SioFrame() {
    if (--held.depth == 0) {
        sendHeld();
    }
}
