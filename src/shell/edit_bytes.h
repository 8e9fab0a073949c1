// Overwriting bytes of the image where the user works: a typed byte, Fill, Paste Hex, Insert File,
// each a step of the history; and Copy As. What is put where the image holds nothing is added to
// it. Failures are reported, but for those of typing. User-interface thread.
#pragma once

#include "data/copy_text.h"

#include <cstdint>
#include <span>

// What Fill and Insert File put into the image at once, at most.
inline constexpr uint32_t kMostEditedBytes = 64 * 1024 * 1024;

// Typing over one byte; continues the step of the typing before it, see EditStep::setTyped. The
// caller asks FRAMERULES_IsFree before.
void EDIT_TypeByte(uint32_t address, uint8_t byte);
// Repeats the pattern, which is not empty, over the range; it may end in the middle of it.
void EDIT_Fill(const AddressRange& range, std::span<const uint8_t> pattern);

// With dialogs: Fill offers the selected range, Insert File the place of the caret.
void EDIT_FillDialog();
void EDIT_InsertFileDialog();
// Puts the hex of the clipboard at the place of the dump; refused whole when any of it is no hex or
// it would end behind the last address.
void EDIT_PasteHex();
// Puts the selection into the clipboard.
void EDIT_CopyAs(CopyFormat format);
