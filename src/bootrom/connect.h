// Connecting with a target: choosing its boot-ROM family, getting its RAM loader to run, and the
// boot ROM's own commands. User-interface thread only; waits process events.
#pragma once

#include <functional>
#include <string>

// The operations of one boot-ROM family; an empty slot is an operation that the family lacks.
struct BootRomProtocol {
    std::function<int(const std::string& path, bool showProgress)> DownloadRamImage; // 1 done
    std::function<int()> EraseChip;                                                  // 1 erased
    std::function<int()> FlashStatus;                                                // 0 done
    std::function<int()> ReadProtect;                                                // 0 done
    std::function<int()> ProtectChip;                                                // 0 done
};

// Makes the current family follow the selected device; an unknown one is reported and changes
// nothing.
void _SelectProtocol();
const BootRomProtocol& _CurrentProtocol();

// 1 when the RAM loader runs, downloading it where needed; 0 when that failed, reported. Call it
// before every operation that needs the loader.
int TARGET_Connect();

// Runs a slot of the current family on an idle link, as every direct boot-ROM command does: 0 done,
// 1 failed. A slot that the family lacks is reported with the `name` of the command and nothing is
// sent.
int _RunBootCommand(const std::function<int()> BootRomProtocol::*slot, const char* name);

// Read Protect Chip: 0 done, 1 failed.
int TARGET_ReadProtect();
