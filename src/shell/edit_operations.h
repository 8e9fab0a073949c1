// Relocate, Delete Range and Read Back: the two edits of the image and the range to read back from
// the target, each with its dialog and with what the dialog and the command line share.
#pragma once

#include <cstdint>

// Shift all data by a signed offset; refused with a message where it cannot be.
void EDIT_Relocate(int32_t offset);
// Remove the data of a range, `end` inclusive and not below `start`.
void EDIT_DeleteRange(uint32_t start, uint32_t end);
// Read a range of the target into the image, `end` inclusive, and show it.
void EDIT_ReadBack(uint32_t start, uint32_t end);

// With the value dialog; the values entered last are kept in the settings.
void EDIT_RelocateDialog();
void EDIT_DeleteRangeDialog();
void EDIT_ReadBackDialog();
