#include "platform/port_list.h"

#include "platform/files.h"

#include <algorithm>
#include <map>

namespace {

namespace fs = std::filesystem;

fs::path portRoot = "/";

// The one line that an attribute of the system holds; empty when there is no such attribute.
std::string attribute(const fs::path& file) {
    std::string text;
    if (!FILES_ReadAll(file, text).ok()) {
        return {};
    }
    return text.substr(0, text.find_last_not_of(" \r\n") + 1);
}

// The links below /dev/serial/by-id, by the name of the device that each leads to.
std::map<std::string, std::string> stableNames() {
    std::map<std::string, std::string> names;
    std::error_code error;
    for (fs::directory_iterator entry(portRoot / "dev/serial/by-id", error), end;
         !error && entry != end; entry.increment(error)) {
        std::error_code none;
        const std::string device = fs::read_symlink(entry->path(), none).filename();
        names[device] = "/dev/serial/by-id/" + entry->path().filename().string();
    }
    return names;
}

// A built-in port whose place on the board is empty has type 0; pseudo-terminals and consoles have
// no device.
bool hasHardware(const fs::path& port) {
    std::error_code none;
    return fs::exists(port / "device", none) && attribute(port / "type") != "0";
}

// Fills in what the USB device says of itself, of which the port is a part.
void readAdapter(const fs::path& port, PresentPort& found) {
    std::error_code error;
    fs::path folder = fs::canonical(port / "device", error);
    for (; !error && folder.has_relative_path(); folder = folder.parent_path()) {
        const std::string vendor = attribute(folder / "idVendor");
        if (vendor.empty()) {
            continue;
        }
        found.maker = attribute(folder / "manufacturer");
        found.product = attribute(folder / "product");
        found.serialNumber = attribute(folder / "serial");
        if (found.maker.empty() && found.product.empty()) {
            found.product = "USB " + vendor + ":" + attribute(folder / "idProduct");
        }
        return;
    }
}

PresentPort portAt(const fs::path& folder, const std::map<std::string, std::string>& names) {
    const std::string name = folder.filename();
    PresentPort port;
    port.path = "/dev/" + name;
    if (const auto found = names.find(name); found != names.end()) {
        port.stableName = found->second;
    }
    readAdapter(folder, port);
    return port;
}

// "ttyUSB10" behind "ttyUSB9".
bool comesBefore(const PresentPort& one, const PresentPort& other) {
    const auto split = [](const std::string& path) {
        const size_t digits = path.find_last_not_of("0123456789") + 1;
        const std::string number = path.substr(digits);
        return std::tuple(path.substr(0, digits), number.size(), number);
    };
    return split(one.path) < split(other.path);
}

} // namespace

std::vector<PresentPort> PORTLIST_Present() {
    std::vector<PresentPort> ports;
    const std::map<std::string, std::string> names = stableNames();
    std::error_code error;
    for (fs::directory_iterator entry(portRoot / "sys/class/tty", error), end;
         !error && entry != end; entry.increment(error)) {
        if (hasHardware(entry->path())) {
            ports.push_back(portAt(entry->path(), names));
        }
    }
    std::ranges::sort(ports, comesBefore);
    return ports;
}

void PORTLIST_SetRoot(const fs::path& root) {
    portRoot = root.empty() ? fs::path("/") : root;
}

PresentPort PORTLIST_Find(const std::string& device) {
    PresentPort wanted;
    wanted.path = device;
    if (!device.starts_with('/')) {
        return wanted;
    }
    std::error_code none;
    const fs::path target = fs::read_symlink(portRoot / device.substr(1), none);
    const std::string name = (target.empty() ? fs::path(device) : target).filename();
    const fs::path folder = portRoot / "sys/class/tty" / name;
    return hasHardware(folder) ? portAt(folder, stableNames()) : wanted;
}

std::string PORTLIST_Adapter(const PresentPort& port) {
    std::string text = port.maker;
    for (const auto& [part, before] :
         {std::pair(port.product, " "), std::pair(port.serialNumber, ", ")}) {
        text += (text.empty() || part.empty() ? "" : before) + part;
    }
    return text;
}
