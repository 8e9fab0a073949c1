// The device properties in the settings file, and what needs the device table to change them.
#pragma once

// Reads the seven keys; missing ones leave the fields unchanged. Once at start-up.
void DEVPROPS_Load();
// Writes the seven keys; the block flags with as many entries as the selected device has blocks.
void DEVPROPS_Save();
// Selects all blocks of the selected device; other flags stay.
void DEVPROPS_SelectAllBlocks();
