// Finding a run of bytes in the loaded data.
#pragma once

#include "data/hexdata.h"

#include <cstdint>
#include <optional>
#include <span>

// The lowest address at or above `from` where the image holds `pattern`, all of it in one area;
// none when there is none, or the pattern is empty. `areas` is a snapshot of the image. Any thread.
std::optional<uint32_t> DATAFIND_Next(std::span<const AddressRange> areas,
                                      std::span<const uint8_t> pattern, uint32_t from);
// The highest address below `before`.
std::optional<uint32_t> DATAFIND_Previous(std::span<const AddressRange> areas,
                                          std::span<const uint8_t> pattern, uint64_t before);
