#include "shell/settings.h"

#include "device/device.h"
#include "device/devprops.h"
#include "device/devprops_store.h"
#include "link/password.h"
#include "persist/hex_text.h"
#include "persist/ini.h"
#include "platform/serial_port.h"
#include "serial/sio.h"
#include "shell/cmdline_options.h"
#include "shell/program_files.h"

namespace {

constexpr uint32_t kLastAddress = 0xFFFFFF;
constexpr int64_t kMaxInt = 0x7FFFFFFF;

bool setPassword(const std::string& digits, std::string& error) {
    const std::vector<uint8_t> bytes = HEXTEXT_ToBytes(digits, kMaxPassword, error);
    if (error.empty()) {
        PASSWORD_SetBytes(bytes);
    }
    return true;
}

// The blocks of another device are other ones.
bool setDevice(const std::string& name, std::string&) {
    const int before = DEVICE_SelectedIndex();
    if (DEVICE_FindByName(name) != 0) {
        return name.empty(); // of a run without devices
    }
    if (DEVICE_SelectedIndex() != before) {
        DEVPROPS_SelectAllBlocks();
    }
    return true;
}

bool setPortDevice(const std::string& device, std::string& error) {
    error = SERIALPORT_IsDeviceName(device) ? SERIALPORT_NameProblem(device)
                                            : "A port is named by its path or URL";
    if (error.empty()) {
        SIO_SetDevice(device);
    }
    return true;
}

// A file that cannot be loaded is no fault of the project.
bool openProgramFile(const std::string& path, std::string&) {
    PROGRAM_Open(path);
    return true;
}

constexpr Setting number(SettingOption option, SettingLine line, SettingNumber number) {
    return {option, line, number};
}

constexpr Setting text(SettingOption option, SettingLine line, SettingText text) {
    return {option, line, {}, text};
}

// A switch is a signed byte that is on above 0.
template <bool (*get)(), void (*set)(bool)>
constexpr Setting onOff(SettingOption option, SettingLine line) {
    option.range = ValueRange{-128, 127};
    return number(option, line,
                  {0, 1, [] { return get() ? 1U : 0U; },
                   [](uint32_t value) { set(static_cast<int8_t>(value) > 0); }});
}

constexpr Setting kSettings[] = {
    number({"OptionsCOMBaudrate", "\t<BAUDRATE> Sets baudrate",
            "bits per second, any rate that the port can do"},
           {"Baudrate", 3}, {1, 1'000'000, SIO_GetBaudrate, SIO_SetBaudrate}),
    number({"OptionsCOMPort",
            "\t\t<PORT> Sets COM-port of PC",
            "COM number, 1 to 20, or the path or URL of a port, see [ports.md](ports.md)",
            nullptr,
            {},
            true},
           {"Port", 1}, {1, kMaxComPort, SIO_GetPort, SIO_SetPort}),
    text({}, {"PortDevice", 2}, {499, SIO_GetDevice, setPortDevice, true}),
    number({}, {"Logging", 4}, {0, 1, SIO_GetLogging, SIO_SetLogging}),
    text({}, {"File", 5}, {499, nullptr, openProgramFile}),
    number({"OptionsPWAdrCount", "\t<COUNTADR> Sets count address for password comparison", "hex"},
           {"PasswordAdrCount", 7},
           {0, kLastAddress, PASSWORD_GetAdrCount, PASSWORD_SetAdrCount, true}),
    number({"OptionsPWAdrCompare", "\t<COMPAREADR> Sets compare address for password comparison",
            "hex, start address"},
           {"PasswordAdrCompare", 8},
           {0, kLastAddress, PASSWORD_GetAdrCompare, PASSWORD_SetAdrCompare, true}),
    text({"OptionsPWPassword", "\t<PASSWORD> Sets password",
          "pairs of hex digits, at most 257 bytes", OPTION_Password},
         {"Password", 11},
         {999, [] { return HEXTEXT_FromBytes(PASSWORD_GetBytes()); }, setPassword}),
    onOff<PASSWORD_GetFillFF, PASSWORD_SetFillFF>(
        {"OptionsPWFillFF", "\t\t<ENABLE> Enables/disables filling password with 0xFF",
         "1: the password is all 0xFF; 0: it is not"},
        {"PasswordFillFF", 9}),
    onOff<PASSWORD_GetHexmode, PASSWORD_SetHexmode>(
        {"OptionsPWHexmode", "\t<ENABLE> Enables/disables hexmode for the password",
         "1: the password dialog shows hex digits"},
        {"PasswordHexmode", 10}),
    number({"OptionsSettingsReset", "\t<ENABLE> Enables/disables reset handling by Calvorin",
            "1: the program resets the chip; 0: the user is asked to (never in an unattended run)",
            nullptr, ValueRange{-kMaxInt, kMaxInt}},
           {}, {0, 0, nullptr, [](uint32_t on) { DEVPROPS_SetResetByPC(on != 0); }}),
    text({"OptionsTargetDevice", "\t<DEVICENAME> Selects the desired device",
          "and all of its blocks", OPTION_TargetDevice},
         {"Device", 6}, {99, [] { return DEVICE_GetName(); }, setDevice}),
    number({"OptionsTargetSelBlocks",
            "\t<ENABLE,B1[,B2...][,B2-Bn]> Enables/disables the desired blocks",
            "1 selects, 0 deselects; blocks count from 0", OPTION_TargetSelBlocks},
           {}, {}),
    number({"OptionsTargetSpeed", "\t<SPEED> Sets the oscillator frequency in [Hz]", "", nullptr,
            ValueRange{0, kMaxInt}},
           {}, {0, 0, nullptr, [](uint32_t hz) { DEVPROPS_SetSpeed(hz); }}),
};

} // namespace

void SETTINGS_Save() {
    DEVPROPS_Save();
    INI_Save();
}

std::span<const Setting> SETTINGS_Table() {
    return kSettings;
}
