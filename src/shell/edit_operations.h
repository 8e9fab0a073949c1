// Relocate, Delete Range and Read Back: the two edits of the image and the range to read back from
// the target, each with its dialog and with what the dialog and the command line share.
#pragma once

#include "data/address_range.h"
#include "shell/front_end.h"

#include <cstdint>
#include <functional>
#include <optional>

// Shift all data by a signed offset; refused with a message where it cannot be.
void EDIT_Relocate(int32_t offset);
// Remove the data of a range, `end` inclusive and not below `start`.
void EDIT_DeleteRange(uint32_t start, uint32_t end);
// Read a range of the target into the image, `end` inclusive, and show it.
void EDIT_ReadBack(uint32_t start, uint32_t end);

// Asks for a start and an end address until they are good, and what else was entered too, or the
// user cancels. `check` is called after each OK; what it finds is told, empty for nothing.
std::optional<AddressRange>
EDIT_AskForRange(ValueRequest request,
                 const std::function<std::string(const ValueRequest&)>& check);

// With the value dialog; the values entered last are kept in the settings.
void EDIT_RelocateDialog();
void EDIT_DeleteRangeDialog();
void EDIT_ReadBackDialog();
