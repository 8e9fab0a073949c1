// Device and port as they are chosen without the options: what the tool bar offers and does.
// User-interface thread.
#pragma once

#include <string>
#include <vector>

// The names of all devices: those used last, then the others in the order in which people look for
// them.
std::vector<std::string> CHOICE_Devices();
// Selects the device of that name with all of its blocks, as the options do. Nothing while a
// command runs or when it is selected already.
void CHOICE_TakeDevice(const std::string& name);
// Selects the block of the device, or takes the selection away, as the options do; the connection
// stays. False, and nothing is done, while a command runs or for a block that cannot be selected.
bool CHOICE_ToggleBlock(int block);

struct PortChoice {
    std::string name; // "COM1", or a device where no COM number stands for it
    std::string text; // "COM1: /dev/ttyUSB0, FTDI FT232R USB UART, A50285BI"
};

// The ports that are there, and the one that is configured; those used last come first.
std::vector<PortChoice> CHOICE_Ports();
// Opens the port of that name in place of the present one; what is wrong is reported. Nothing while
// a command runs or when it is configured already.
void CHOICE_TakePort(const std::string& name);
