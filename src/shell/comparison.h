// A comparison of the image with what the chip or another file holds: where they differ, in
// figures, byte by byte for the dump, and as a report. There is at most one. It ends when image or
// device change, and one that finds no difference ends at once. Failures are reported where they
// are found; then there is none. User-interface thread.
#pragma once

#include "data/address_range.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

// Reads the chip where the image holds something in the selected blocks. A difference is a failure.
void COMPARISON_WithChip();
// Reads a program file beside the image; asked for in the dialog.
void COMPARISON_WithFile(const std::string& path);
void COMPARISON_WithFileDialog();

bool COMPARISON_IsOpen();
void COMPARISON_End();
// Ends it when the image or the device is another one by now.
void COMPARISON_Follow();

// Goes to the next or previous difference, round the end, and has it shown (FrontEnd::revealData).
void COMPARISON_Next();
void COMPARISON_Previous();

// What differs of a range, in ascending order.
std::vector<AddressRange> COMPARISON_DifferencesIn(const AddressRange& range);
// "1234: image 5A, chip 00" for an address that differs, else empty; "--" where one holds nothing.
std::string COMPARISON_TextAt(uint32_t address);
// Both sides and the figures, or the difference that was gone to; empty without a comparison.
std::string COMPARISON_Note();

// Header with both sides and the figures, then a line a range that differs.
void COMPARISON_Save(const std::string& path);
void COMPARISON_SaveDialog();
