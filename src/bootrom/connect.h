// Connecting with a target: getting its RAM loader to run, and running the boot ROM's own commands.
// User-interface thread only; waits process events.
#pragma once

#include "bootrom/family.h"

// 1 when the RAM loader runs, downloading it where needed; 0 when that failed, reported. Call it
// before every operation that needs the loader.
int TARGET_Connect();

// Runs a slot of the current family on an idle link, as every direct boot-ROM command does: 0 done,
// 1 failed. A slot that the family lacks is reported with the `name` of the command and nothing is
// sent.
int runBootCommand(Result<> (*BootRomProtocol::*slot)(), const char* name);

// Read Protect Chip: 0 done, 1 failed.
int TARGET_ReadProtect();
