// What the boot-ROM protocol and the RAM-code link share: the state of the conversation with the
// boot ROM, ending the connection, reporting a failure that ends it.
#pragma once

#include "notice/hint.h"

#include <string_view>

enum BootStateCode : int {
    BOOT_UNSYNCED = 0, // nothing agreed; the next operation resets and synchronises the target
    BOOT_SYNCED = 1,   // the boot ROM waits for a command
    BOOT_RAMCODE = 2,  // the RAM loader runs; the boot ROM is not addressed any more
};

// Any thread.
int BOOT_GetState();
void BOOT_SetState(int state);

// Whether the chip sits in its boot ROM, where every byte is a command to it: from the reset until
// its loader or its application runs. Any thread.
bool BOOT_IsChipInRom();
void BOOT_SetChipInRom(bool inRom);
// A byte came while the link was idle: a boot ROM says nothing by itself, so that after 2 s of
// idleness somebody has reset the chip by hand. Any thread.
void BOOT_NoteUnaskedByte();

// Unsynchronised, and the wait for a running operation ends. Any thread.
void _BootReset();
// Waits, for 2 s at the most, until the worker has taken the answer that was on its way when the
// link was taken from it: before that the port is not the caller's. User-interface thread.
void TARGET_AwaitPort();
// Ends the connection: LINK_IDLE, _BootReset, 100 ms pause, TARGET_AwaitPort. User-interface
// thread.
void TARGET_Disconnect();
// Reports the text (ERROR_Out), then calls _BootReset. Any thread.
void TARGET_ReportError(std::string_view text, int exitCode, const Hint& hint = {});
