// The families of boot ROM: one record says in what a family differs from the others. A new family
// is a source beside type_a.cpp, its row in family.cpp and its word in device/ramcode_type.h.
#pragma once

#include "link/failure.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

// Sends the RAM image that it was made from, up to the boot ROM's acceptance; with `showProgress`
// the user has asked for this transfer alone.
using LoaderTransfer = std::function<Result<>(bool showProgress)>;

// User-interface thread, the link in LINK_BOOTROM. An empty slot is an operation that the family
// lacks.
struct BootRomProtocol {
    // Synchronising with a chip that was just reset.
    uint32_t matchBaudrate = 0;                     // Bd; 0: at the user's rate
    Result<> (*Match)(uint32_t baudrate) = nullptr; // `baudrate`: the user's, from then on in force
    Result<> (*GetSum)() = nullptr;                 // the flash checksum into getBootSum
    // Downloading the RAM loader: takes the text of the image apart; a failure sends nothing.
    Result<LoaderTransfer> (*PrepareImage)(const std::string& text) = nullptr;
    // Erases the flash of a chip that awaits a command.
    Result<> (*EraseChip)() = nullptr;
    // Commands of the boot ROM itself, with the handshake that they need.
    Result<> (*FlashStatus)() = nullptr;
    Result<> (*ReadProtect)() = nullptr;
    Result<> (*ProtectChip)() = nullptr;
    // Whether a chip without password bytes of its own is locked: the loaded program must hold
    // them.
    bool passwordInProgram = false;
    size_t passwordLength = 0; // bytes; 0: as many as the byte at the count address says
};

// The family of the selected device; null when nobody knows it, which _SelectProtocol reports.
const BootRomProtocol* currentProtocol();
const BootRomProtocol* _SelectProtocol();
// Adds a family that is not built in; `family` stays the caller's and must outlive its use.
void addProtocol(int ramcodeType, const BootRomProtocol& family);
