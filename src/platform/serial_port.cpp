#include "platform/serial_port.h"

#include "platform/format.h"

#include <mutex>
#include <utility>
#include <vector>

namespace {

struct PortKind {
    std::string prefix;
    SerialOpener opener;
};

std::mutex mutex; // guards the table

std::vector<PortKind>& kinds() {
    static std::vector<PortKind> table = {
        {"rfc2217://", RFC2217PORT_Open},
        {"tcp://", TCPPORT_Open},
        {"faulty://", FAULTYPORT_Open},
    };
    return table;
}

// The opener whose prefix the name carries; empty when there is none.
SerialOpener findOpener(const std::string& device) {
    const std::lock_guard lock(mutex);
    for (const PortKind& kind : kinds()) {
        if (device.starts_with(kind.prefix)) {
            return kind.opener;
        }
    }
    return {};
}

} // namespace

SerialPortPtr SERIALPORT_Open(const std::string& device, std::string& error) {
    if (device.empty()) {
        error = "no device is named";
        return nullptr;
    }
    if (const SerialOpener opener = findOpener(device)) {
        return opener(device, error);
    }
    error = SERIALPORT_NameProblem(device);
    return error.empty() ? TTYPORT_Open(device, error) : nullptr;
}

bool SERIALPORT_IsDeviceName(std::string_view text) {
    return text.starts_with('/') || text.find("://") != std::string_view::npos;
}

std::string SERIALPORT_NameProblem(const std::string& device) {
    const size_t scheme = device.find("://");
    if (scheme == std::string::npos || device.front() == '/' || findOpener(device)) {
        return {};
    }
    return formatText("there is no kind of port called %s", device.substr(0, scheme).c_str());
}

void SERIALPORT_AddKind(std::string_view prefix, SerialOpener opener) {
    const std::lock_guard lock(mutex);
    for (PortKind& kind : kinds()) {
        if (kind.prefix == prefix) {
            kind.opener = std::move(opener);
            return;
        }
    }
    kinds().push_back({std::string(prefix), std::move(opener)});
}

std::string SERIALPORT_SettingsProblem(const LineSettings& settings) {
    if (settings.byteSize != 8 || settings.parity != 0 || settings.stopBits != 0) {
        return "only 8 data bits without parity and one stop bit are possible";
    }
    return settings.baudrate == 0 ? "a rate of 0 Bd is not possible" : std::string();
}

bool SERIALPORT_IsRateClose(uint32_t actual, uint32_t wanted) {
    constexpr uint64_t kTolerancePercent = 3;
    const uint64_t difference = actual > wanted ? actual - wanted : wanted - actual;
    return difference * 100 <= wanted * kTolerancePercent;
}

std::string SERIALPORT_DefaultDevice(uint32_t comNumber) {
    struct Row {
        uint32_t first;
        uint32_t last;
        const char* name;
    };
    static constexpr Row kRows[] = {
        {1, 4, "/dev/ttyS"}, {5, 12, "/dev/ttyUSB"}, {13, 20, "/dev/ttyACM"}};
    for (const Row& row : kRows) {
        if (comNumber >= row.first && comNumber <= row.last) {
            return row.name + std::to_string(comNumber - row.first);
        }
    }
    return {};
}
