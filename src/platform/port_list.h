// The serial ports that are present on this machine, with what tells one adapter from another.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

struct PresentPort {
    std::string path;         // "/dev/ttyUSB0"
    std::string stableName;   // "/dev/serial/by-id/..."; empty: the system has none for it
    std::string maker;        // of a USB adapter or board, as are the next two; may be empty
    std::string product;      // may be empty
    std::string serialNumber; // may be empty
};

// Local ports with hardware behind them, in the order of their names, numbers as numbers. Read
// anew from /sys and /dev at every call.
std::vector<PresentPort> PORTLIST_Present();
// Lets tests put /sys and /dev below another folder; an empty path restores the true ones.
void PORTLIST_SetRoot(const std::filesystem::path& root);

// The port behind a device file or a link to one; its path alone where it is not in the list.
PresentPort PORTLIST_Find(const std::string& device);
// "FTDI FT232R USB UART, A50285BI"; empty for a port that tells nothing.
std::string PORTLIST_Adapter(const PresentPort& port);
