#include "shell/edit_place.h"

#include "data/hexdata.h"
#include "device/device.h"
#include "notice/status.h"
#include "platform/event_queue.h"
#include "platform/format.h"
#include "shell/front_end.h"

#include <algorithm>
#include <array>

namespace {

std::optional<EditPlace> editPlace;
std::string told; // of it, in the status bar

std::string blockText(uint32_t address) {
    for (const DeviceBlock& block : DEVICE_Blocks()) {
        if (block.range.contains(address)) {
            return formatText("block %d", block.index);
        }
    }
    return "no block";
}

std::string statusOf(const std::string& text) {
    return text.empty() ? "Ready" : text;
}

// The values of the first one, two and four bytes.
std::string valueTexts(uint32_t address) {
    std::array<uint8_t, 4> bytes{};
    std::array<bool, 4> held{};
    HEXDATA_Copy(address, bytes, held);
    std::string text = held[0] ? formatText("  8: %02X", bytes[0]) : "  8: --";
    uint32_t first = 0; // the first byte as the highest
    uint32_t last = 0;  // and as the lowest
    for (size_t i = 0; i < bytes.size() && held[i]; ++i) {
        first = first << 8 | bytes[i];
        last |= uint32_t{bytes[i]} << (8 * i);
        const int bits = static_cast<int>(8 * (i + 1));
        if (bits == 16 || bits == 32) {
            text += formatText("  %d: %0*X/%0*X", bits, bits / 4, first, bits / 4, last);
        }
    }
    return text;
}

// What else has come into the status bar stays there until the user moves the caret.
void tellStatus(const std::string& text, bool moved) {
    if (text == told) {
        return;
    }
    const bool isShown = STATUS_GetText(STATUS_GENERAL) == statusOf(told);
    told = text;
    if (moved || isShown) {
        STATUS_SetText(statusOf(text), STATUS_GENERAL);
    }
}

} // namespace

void EDITPLACE_Set(const std::optional<EditPlace>& place) {
    const auto offers = [](const std::optional<EditPlace>& at) {
        return at ? (at->selected.empty() ? 1 : 2) : 0;
    };
    const bool changesOffer = offers(place) != offers(editPlace);
    const bool moved = place && editPlace && *place != *editPlace;
    editPlace = place;
    tellStatus(place ? EDITPLACE_Text(*place) : "", moved);
    if (changesOffer) {
        EVENTS_Post(
            [] { FRONTEND_Get().updateMenu(); }); // not from within a view's beginning or end
    }
}

const std::optional<EditPlace>& EDITPLACE_Get() {
    return editPlace;
}

void EDITPLACE_Refuse(const std::string& why) {
    told = why;
    STATUS_SetText(why, STATUS_GENERAL);
}

std::string EDITPLACE_Text(const EditPlace& place) {
    const uint64_t selected = place.selected.size();
    return formatText("%08X", place.address) +
           (selected > 1 ? formatText("  %ju bytes", static_cast<uintmax_t>(selected)) : "") +
           "  " + blockText(place.address) + valueTexts(place.address);
}
