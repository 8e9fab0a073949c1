// What the system tells of its serial devices without opening one: who uses it, how fast its
// adapter is, which there are. Nothing is known of names that are no device files. Any thread.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

// Where the system tells it.
struct SystemFolders {
    std::filesystem::path processes = "/proc";
    std::filesystem::path ttyClass = "/sys/class/tty";
    std::vector<std::filesystem::path> locks = {"/run/lock", "/var/lock"};
};
// For tests.
void PORTSTATE_SetFolders(const SystemFolders& folders);

// The other programs that have the device open, whether they have locked it or not, as far as this
// user may see: "minicom (process 1234), cat (process 1240)"; empty for none.
std::string PORTSTATE_Holders(const std::string& device);
// The other program that lives and has a lock file LCK..NAME for the device; empty for none.
std::string PORTSTATE_LockHolder(const std::string& device);

// The time that a USB adapter keeps what it received before it hands it over.
struct AdapterLatency {
    int ms = 0;
    std::filesystem::path file; // where it is set
};
// None for devices without such a time.
std::optional<AdapterLatency> PORTSTATE_Latency(const std::string& device);

// The device files of the serial ports with hardware behind them, sorted.
std::vector<std::string> PORTSTATE_Devices();
