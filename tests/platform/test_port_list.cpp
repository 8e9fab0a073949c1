#include "platform/port_list.h"
#include "support/temp_folder.h"

#include <gtest/gtest.h>

namespace fs = std::filesystem;

// Two adapters of one maker, a board that only gives its numbers, built-in ports with and without
// hardware, and a console.
TEST(PortList, TellsAdaptersApart) {
    const TempFolder root;
    PORTLIST_SetRoot(root.path());
    EXPECT_TRUE(PORTLIST_Present().empty());
    const auto attribute = [&](const fs::path& file, const std::string& text) {
        fs::create_directories((root.path() / file).parent_path());
        writeFile(root.path() / file, text + "\n");
    };
    const auto link = [&](const fs::path& from, const fs::path& to) {
        fs::create_directories((root.path() / from).parent_path());
        fs::create_symlink(to, root.path() / from);
    };
    const auto usbPort = [&](const std::string& tty, const std::string& usb) {
        const fs::path port = "sys/devices/usb1/" + usb + "/" + usb + ":1.0/tty/" + tty;
        fs::create_directories(root.path() / port);
        link(port / "device", "../..");
        link("sys/class/tty/" + tty, root.path() / port);
    };
    for (const char* number : {"9", "10"}) {
        const std::string usb = std::string("1-") + number;
        usbPort(std::string("ttyUSB") + number, usb);
        attribute("sys/devices/usb1/" + usb + "/idVendor", "0403");
        attribute("sys/devices/usb1/" + usb + "/manufacturer", "Acme");
        attribute("sys/devices/usb1/" + usb + "/product", "Cable");
        attribute("sys/devices/usb1/" + usb + "/serial", std::string("A") + number);
    }
    usbPort("ttyACM0", "1-1");
    attribute("sys/devices/usb1/1-1/idVendor", "1234");
    attribute("sys/devices/usb1/1-1/idProduct", "ABCD");
    for (const char* number : {"0", "1"}) {
        fs::create_directories(root.path() / "sys/class/tty" / (std::string("ttyS") + number) /
                               "device");
        attribute(std::string("sys/class/tty/ttyS") + number + "/type", number);
    }
    fs::create_directories(root.path() / "sys/class/tty/console");
    link("dev/serial/by-id/usb-Acme_Cable_A9-if00-port0", "../../ttyUSB9");
    link("dev/bench3", "ttyUSB10");

    std::vector<std::string> lines;
    for (const PresentPort& port : PORTLIST_Present()) {
        lines.push_back(port.path + "|" + port.stableName + "|" + PORTLIST_Adapter(port));
    }
    EXPECT_EQ(lines,
              (std::vector<std::string>{
                  "/dev/ttyACM0||USB 1234:ABCD", "/dev/ttyS1||",
                  "/dev/ttyUSB9|/dev/serial/by-id/usb-Acme_Cable_A9-if00-port0|Acme Cable, A9",
                  "/dev/ttyUSB10||Acme Cable, A10"}));
    for (const char* name : {"/dev/bench3", "/dev/ttyUSB10"}) {
        EXPECT_EQ(PORTLIST_Find(name).serialNumber, "A10") << name;
    }
    for (const char* name : {"/dev/serial/by-id/usb-none", "tcp://host:1", ""}) {
        EXPECT_EQ(PORTLIST_Find(name).path, name);
        EXPECT_EQ(PORTLIST_Adapter(PORTLIST_Find(name)), "");
    }
    PORTLIST_SetRoot({});
}
