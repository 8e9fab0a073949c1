#include "shell/terminal_settings.h"

#include "persist/ini.h"
#include "serial/idle_rate.h"

namespace {

constexpr char kTerminalSection[] = "Settings TERMINAL"; // beside the place of the window
constexpr char kBaudrateKey[] = "Baudrate";

template <class Choice>
void readChoice(const char* key, Choice last, Choice& choice) {
    auto value = static_cast<int32_t>(choice);
    INI_ReadInt(kTerminalSection, key, value);
    if (value >= 0 && value <= static_cast<int32_t>(last)) {
        choice = static_cast<Choice>(value);
    }
}

template <class Choice>
void writeChoice(const char* key, Choice choice) {
    INI_WriteInt(kTerminalSection, key, static_cast<int32_t>(choice));
}

} // namespace

TerminalSettings TERMSETTINGS_Read() {
    TerminalSettings settings;
    readChoice("OnePane", true, settings.onePane);
    readChoice("Controls", TerminalControls::hex, settings.controls);
    readChoice("LineEnd", TerminalLineEnd::crLf, settings.lineEnd);
    readChoice("Echo", true, settings.echo);
    readChoice("Stamps", true, settings.stamps);
    int32_t baudrate = 0;
    INI_ReadInt(kTerminalSection, kBaudrateKey, baudrate);
    settings.baudrate = baudrate > 0 ? static_cast<uint32_t>(baudrate) : 0;
    return settings;
}

void TERMSETTINGS_Write(const TerminalSettings& settings) {
    writeChoice("OnePane", settings.onePane);
    writeChoice("Controls", settings.controls);
    writeChoice("LineEnd", settings.lineEnd);
    writeChoice("Echo", settings.echo);
    writeChoice("Stamps", settings.stamps);
    INI_WriteInt(kTerminalSection, kBaudrateKey, static_cast<int32_t>(settings.baudrate));
    IDLERATE_Set(settings.baudrate);
}

std::string_view TERMSETTINGS_Bytes(TerminalLineEnd lineEnd) {
    constexpr std::string_view kBytes[] = {"\r", "\n", "\r\n"};
    return kBytes[static_cast<size_t>(lineEnd)];
}
