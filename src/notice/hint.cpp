#include "notice/hint.h"

#include "platform/format.h"

#include <algorithm>

namespace {

constexpr std::string_view kCame = "{}";
constexpr size_t kMostBytes = 16;

constexpr HintRow kHints[] = {
    {Cause::noAnswer, "Nothing answered",
     "Nothing came back ({}). Is the board powered, are TX and RX crossed, are the boot-mode pins "
     "set, and do DTR and RTS reach the reset and boot-mode lines?"},
    {Cause::otherAnswer, "Something else answered",
     "Something else answered ({}). Perhaps an application runs there, at another rate: the reset "
     "or the boot-mode pins did not bring the chip into its boot ROM"},
    {Cause::lateAnswer, "The answer came too late",
     "The echo came too late ({}). What lies between is that slow: give a port server as "
     "rfc2217://HOST:PORT, whose way there and back is measured and waited for"},
    {Cause::fellSilent, "The chip answered, then fell silent",
     "The chip answered before, but now not in full ({}). Check its supply and its reset line, try "
     "a lower baud rate, and compare the oscillator frequency with the board's"},
    {Cause::wrongAnswer, "The chip answered wrongly",
     "The chip answered wrongly ({}). Is it the selected device? If it is, the line is disturbed: "
     "shorten it or try a lower baud rate"},
    {Cause::passwordRefused, "The password was refused, or none was given",
     "The device asks for {}. Give the password of the program in the chip, or load the file that "
     "it was programmed with; a device with a boot-ROM erase forgets it by Erase Chip"},
    {Cause::productDiffers, "The chip is another device",
     "The chip's product info fits {}. Select the device that is printed on the chip"},
    {Cause::ramImage, "The RAM image cannot be used",
     "The loader for this device is {}. Reinstall it, or correct the device description that names "
     "it"},
    {Cause::loaderSilent, "The loader did not start",
     "The chip took the loader, which then said nothing ({}). Is it the RAM image of this device, "
     "and is the oscillator frequency that of the board?"},
    {Cause::loaderLost, "The loader stopped answering",
     "The loader ran, then gave no whole answer ({}). The supply may have dropped or the line is "
     "disturbed: the next command resets and connects again; try a lower baud rate"},
    {Cause::pageRefused, "A page was refused",
     "The chip did not take {}. Unless that is FF the block was not erased: erase it first. "
     "What stays so is protected or worn out"},
    {Cause::blockRefused, "A block was refused",
     "The chip refused {}. It may be protected, or its supply too low for erasing"},
    {Cause::contentsDiffer, "The chip holds something else",
     "The difference lies in {}. Was the chip programmed with this file, into these blocks, and "
     "not run since? Erase and program it again"},
    {Cause::eraseRunsOn, "Cancel while the boot ROM erases",
     "The boot ROM does not stop an erase: {}"},
    {Cause::portGone, "The port was lost",
     "The port was lost ({}). Plug the adapter in again or start the port server; the next command "
     "opens it again. When it happens by itself, suspect cable, hub or supply"},
    {Cause::portHeld, "Another program holds the port", "The port is held by {}. End that first"},
    {Cause::portShared, "Another program reads from the port",
     "The port is open in another program too: {}. It takes bytes away that are meant for this "
     "one; end it"},
    {Cause::portDenied, "The port may not be opened",
     "You may not use {}. `sudo usermod -aG dialout \"$USER\"` and a new login usually help"},
    {Cause::portMissing, "There is no such port",
     "Ports that there are: {}. Choose one with -OptionsCOMPort or on the page Communication, or "
     "name its device under [Settings PORTS] in calvorin.ini"},
    {Cause::slowAdapter, "The adapter is slow (a note)",
     "The adapter hands over what it received only after {}. Every answer of the chip, one a page, "
     "comes that much later"},
    {Cause::unknownDevice, "The device is not known", "Devices that there are: {}"},
};

} // namespace

std::span<const HintRow> HINT_Rows() {
    return kHints;
}

std::string HINT_Text(const Hint& hint) {
    const auto* row = std::ranges::find(kHints, hint.cause, &HintRow::cause);
    if (row == std::end(kHints)) {
        return "";
    }
    std::string text = row->text;
    if (const size_t at = text.find(kCame); at != std::string::npos) {
        text.replace(at, kCame.size(), hint.came);
    }
    return text;
}

std::string HINT_PageTable() {
    std::string table;
    for (const HintRow& row : kHints) {
        table += formatText("| %s | %s |\n", row.happened, HINT_Text({row.cause, "…"}).c_str());
    }
    return table;
}

std::string HINT_Bytes(std::string_view bytes) {
    std::string text;
    for (const char byte : bytes.substr(0, kMostBytes)) {
        text += formatText("%s%02X", text.empty() ? "" : " ", static_cast<uint8_t>(byte));
    }
    return text + (bytes.size() > kMostBytes ? " ..." : "");
}
