// Where in the image the user works: caret and selection of the dump, which the menu's commands act
// on and the status bar describes. User-interface thread.
#pragma once

#include "data/address_range.h"

#include <optional>
#include <string>

struct EditPlace {
    uint32_t address =
        0; // where what is typed or pasted goes: the caret, or where the selection begins
    AddressRange selected; // empty without a selection

    bool operator==(const EditPlace&) const = default;
};

// The dump tells it with every change; none where no dump with data is open.
void EDITPLACE_Set(const std::optional<EditPlace>& place);
const std::optional<EditPlace>& EDITPLACE_Get();
// Says why a key was not taken, in the status bar, until the place is told again.
void EDITPLACE_Refuse(const std::string& why);
// "00002010  block 2  8: 4F  16: 4F12/124F  32: 4F121314/1413124F": address, length of a longer
// selection, block of the device, and the value there as 8, 16 and 32 bits, the first byte as the
// highest and as the lowest. Parts are two blanks apart; values that the image does not hold whole
// are left out.
std::string EDITPLACE_Text(const EditPlace& place);
