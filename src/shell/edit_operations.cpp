#include "shell/edit_operations.h"

#include "data/hexdata.h"
#include "device/device.h"
#include "notice/error.h"
#include "persist/ini.h"
#include "shell/edit_history.h"
#include "shell/front_end.h"
#include "shell/image_origin.h"
#include "shell/session.h"
#include "shell/settings.h"
#include "shell/summary.h"
#include "target/commands.h"

#include <array>

namespace {

constexpr char kRelocateSection[] = "Relocate";
constexpr char kDeleteRangeSection[] = "DeleteRange";

// The offset of the last relocation, as four bytes, the lowest first.
int32_t readStoredOffset() {
    std::array<uint8_t, 4> bytes{};
    INI_ReadString(kRelocateSection, "Value", bytes);
    uint32_t value = 0;
    for (size_t index = bytes.size(); index-- > 0;) {
        value = value << 8 | bytes[index];
    }
    return static_cast<int32_t>(value);
}

void storeOffset(int32_t offset) {
    std::array<uint8_t, 4> bytes{};
    for (size_t index = 0; index < bytes.size(); ++index) {
        bytes[index] = static_cast<uint8_t>(static_cast<uint32_t>(offset) >> (8 * index));
    }
    INI_WriteString(kRelocateSection, "Value", bytes);
}

// The message for a range that cannot be used; empty for a good one.
std::string rangeFault(const ValueRequest& request) {
    if (!request.value0) {
        return "Empty Start Address!";
    }
    if (!request.value1) {
        return "Empty End Address!";
    }
    const bool descending =
        static_cast<uint32_t>(*request.value1) < static_cast<uint32_t>(*request.value0);
    return descending ? "End Address < Start Address!" : "";
}

void openIfClosed(View view) {
    if (!FRONTEND_Get().isViewOpen(view)) {
        FRONTEND_Get().openView(view);
    }
}

} // namespace

std::optional<AddressRange>
EDIT_AskForRange(ValueRequest request,
                 const std::function<std::string(const ValueRequest&)>& check) {
    request.maximum = 0xFFFFFF;
    request.label0 = "Start Address (Hex):";
    request.label1 = "End Address (Hex):";
    while (FRONTEND_Get().editValue(request) == kDialogOk) {
        const std::string fault = rangeFault(request);
        const std::string other = check(request);
        if (fault.empty() && other.empty()) {
            return AddressRange::upTo(static_cast<uint32_t>(*request.value0),
                                      static_cast<uint32_t>(*request.value1));
        }
        ERROR_Notify(fault.empty() ? other : fault);
    }
    return std::nullopt;
}

void EDIT_Relocate(int32_t offset) {
    const ImageOrigin before = SESSION_Get().image;
    if (!HEXDATA_Relocate(offset)) {
        ERROR_Out(nullptr, "Relocation would move data beyond the end of the address space", 1);
    } else if (offset != 0) {
        ORIGIN_MarkChanged();
        HISTORY_Relocated(offset, before);
    }
    SUMMARY_Refresh();
}

void EDIT_DeleteRange(uint32_t start, uint32_t end) {
    const uint32_t before = HEXDATA_GetNumBytes();
    {
        const EditStep step("Delete Range", AddressRange::upTo(start, end));
        HEXDATA_DeleteRange(start, uint64_t{end} - start + 1);
    }
    if (HEXDATA_GetNumBytes() != before) {
        ORIGIN_MarkChanged();
    }
    SUMMARY_Refresh();
}

void EDIT_ReadBack(uint32_t start, uint32_t end) {
    {
        const TargetBusy busy;
        const EditStep step("Read Back");
        if (TARGET_ReadBack(start, end)) {
            ImageOrigin origin;
            origin.kind = ImageKind::readBack;
            ORIGIN_Set(origin);
        }
    }
    SUMMARY_Refresh();
    openIfClosed(View::hexList);
    openIfClosed(View::hexDump);
}

void EDIT_RelocateDialog() {
    const int32_t storedOffset = readStoredOffset();
    int32_t storedSign = 1;
    INI_ReadInt(kRelocateSection, "Sign", storedSign);
    ValueRequest request;
    request.minimum = static_cast<int32_t>(0x80000001);
    request.maximum = 0x7FFFFFFF;
    request.sign = storedSign;
    request.title = "Edit - Relocate";
    request.hint = "Warning:\nYou are about to relocate the loaded file.\nThis might result in a "
                   "failure to execute the target program.";
    request.label0 = "Relocation offset (Hex):";
    request.value0 = storedOffset;
    while (FRONTEND_Get().editValue(request) == kDialogOk) {
        if (!request.value0) {
            ERROR_Notify("Empty value!");
            request.value0 = storedOffset; // the value entered last, shown with its sign
            request.sign = storedOffset < 0 ? -1 : 1;
            continue;
        }
        const int32_t offset = *request.value0;
        const int32_t sign = offset < 0 ? -1 : 1;
        EDIT_Relocate(offset);
        if (offset != storedOffset) {
            storeOffset(offset);
        }
        if (sign != storedSign) {
            INI_WriteInt(kRelocateSection, "Sign", sign);
        }
        SETTINGS_Save();
        return;
    }
}

void EDIT_DeleteRangeDialog() {
    int32_t start = 0;
    int32_t end = 0;
    INI_ReadInt(kDeleteRangeSection, "SAdr", start);
    INI_ReadInt(kDeleteRangeSection, "EAdr", end);
    ValueRequest request;
    request.title = "Edit - DeleteRange";
    request.hint = "Please enter start- and endaddress:";
    request.value0 = start;
    request.value1 = end;
    const auto range = EDIT_AskForRange(request, [](const ValueRequest& entered) {
        if (entered.value0.value_or(0) != 0) {
            INI_WriteInt(kDeleteRangeSection, "SAdr", *entered.value0);
        }
        if (entered.value1.value_or(0) != 0) {
            INI_WriteInt(kDeleteRangeSection, "EAdr", *entered.value1);
        }
        return std::string();
    });
    if (range) {
        SETTINGS_Save();
        EDIT_DeleteRange(range->start, range->last());
    }
}

void EDIT_ReadBackDialog() {
    uint32_t start = HEXDATA_GetFirstAddr();
    uint32_t end = HEXDATA_GetLastAddr();
    if (start == 0 && end == 0) {
        start = DEVICE_GetFlashStart();
        end = DEVICE_GetFlashEnd();
    }
    ValueRequest request;
    request.title = "Target - Readback";
    request.hint = "Please enter the start address and the\nend address of the area to be "
                   "downloaded.";
    request.value0 = static_cast<int32_t>(start);
    request.value1 = static_cast<int32_t>(end);
    if (const auto range =
            EDIT_AskForRange(request, [](const ValueRequest&) { return std::string(); })) {
        EDIT_ReadBack(range->start, range->last());
    }
}
