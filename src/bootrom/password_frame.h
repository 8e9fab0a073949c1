// The password as the two families of boot ROM take it.
#pragma once

#include <cstdint>
#include <vector>

// Count address, compare address, password; what a blank chip takes when `blank`.
std::vector<uint8_t> _PasswordFrameTypeA(bool blank);
// Twelve bytes and their checksum.
std::vector<uint8_t> _PasswordFrameTypeB(bool blank);

// Send the frame of the chip as the last flash checksum describes it.
void _SendPasswordTypeA();
void _SendPasswordTypeB();
