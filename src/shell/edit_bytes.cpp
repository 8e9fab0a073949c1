#include "shell/edit_bytes.h"

#include "data/data_rows.h"
#include "data/image_copy.h"
#include "notice/error.h"
#include "platform/files.h"
#include "platform/format.h"
#include "shell/edit_history.h"
#include "shell/edit_operations.h"
#include "shell/edit_place.h"
#include "shell/front_end.h"
#include "shell/image_origin.h"
#include "shell/session.h"
#include "shell/summary.h"

#include <algorithm>

namespace {

enum class Putting { typed, atOnce };

// In one go for whoever looks at the image; the bytes lie within the address space.
void putBytes(const char* name, uint32_t address, std::vector<uint8_t> bytes, Putting putting) {
    const AddressRange range = AddressRange::of(address, bytes.size());
    ImageCopy copy{{range}, {range}, std::move(bytes)};
    {
        EditStep step(name, range);
        if (putting == Putting::typed) {
            step.setTyped(address);
        }
        HEXDATA_Exchange(copy);
        if (SESSION_Get().image.kind == ImageKind::none) {
            ORIGIN_Begin();
        } else if (!HEXDATA_Differences(copy, 0).empty()) {
            ORIGIN_MarkChanged();
        }
    }
    ORIGIN_ShowTitle(); // what is typed back to what it was is unchanged again
    SUMMARY_Refresh();
    FRONTEND_Get().updateMenu();
    if (putting == Putting::atOnce) {
        FRONTEND_Get().showBytes(range);
    }
}

// Why so many bytes cannot stand there; empty when they can.
std::string endFault(uint32_t address, size_t count) {
    if (address + uint64_t{count} <= uint64_t{1} << 32) {
        return {};
    }
    return formatText("%zu bytes at %X would end behind FFFFFFFF", count, address);
}

std::string fillFault(const ValueRequest& entered) {
    const PastedHex pattern = COPYTEXT_Parse(entered.bytes);
    if (!pattern.fault.empty() || pattern.bytes.empty()) {
        return pattern.fault.empty() ? "Empty Bytes!" : "Bytes: " + pattern.fault;
    }
    const uint64_t last = static_cast<uint32_t>(entered.value1.value_or(0));
    const bool isTooLong =
        last >= static_cast<uint32_t>(entered.value0.value_or(0)) + uint64_t{kMostEditedBytes};
    return isTooLong ? formatText("At most %u bytes can be filled at once.", kMostEditedBytes) : "";
}

// Reports what cannot be inserted.
bool readFileToInsert(const std::string& path, std::vector<uint8_t>& bytes) {
    std::string contents;
    const FileResult read = FILES_ReadAll(path, contents, kMostEditedBytes);
    if (!read.ok() || contents.empty()) {
        ERROR_Out(nullptr, path + ": " + (read.ok() ? "The file is empty" : read.reason), 1);
        return false;
    }
    bytes.assign(contents.begin(), contents.end());
    return true;
}

} // namespace

void EDIT_TypeByte(uint32_t address, uint8_t byte) {
    putBytes("Typing", address, {byte}, Putting::typed);
}

void EDIT_Fill(const AddressRange& range, std::span<const uint8_t> pattern) {
    std::vector<uint8_t> bytes(static_cast<size_t>(range.size()));
    for (size_t i = 0; i < bytes.size(); ++i) {
        bytes[i] = pattern[i % pattern.size()];
    }
    putBytes("Fill", range.start, std::move(bytes), Putting::atOnce);
}

void EDIT_FillDialog() {
    const EditPlace place = EDITPLACE_Get().value_or(EditPlace{HEXDATA_GetFirstAddr(), {}});
    const bool selected = !place.selected.empty();
    ValueRequest request;
    request.title = "Edit - Fill";
    request.hint = "Please enter start- and endaddress,\nand the bytes that are repeated there:";
    request.value0 = static_cast<int32_t>(place.address);
    request.value1 = static_cast<int32_t>(selected ? place.selected.last() : place.address);
    request.bytesLabel = "Bytes (Hex):";
    request.bytes = "FF";
    std::vector<uint8_t> pattern;
    const auto range = EDIT_AskForRange(request, [&pattern](const ValueRequest& entered) {
        pattern = COPYTEXT_Parse(entered.bytes).bytes;
        return fillFault(entered);
    });
    if (range) {
        EDIT_Fill(*range, pattern);
    }
}

void EDIT_InsertFileDialog() {
    const auto choice =
        FRONTEND_Get().chooseFile({false,
                                   "Insert file",
                                   {{"Binary files (*.bin)", "*.bin"}, {"All files (*.*)", "*.*"}},
                                   SESSION_Get().programPath});
    std::vector<uint8_t> bytes;
    if (!choice || !readFileToInsert(choice->path, bytes)) {
        return;
    }
    const EditPlace place = EDITPLACE_Get().value_or(EditPlace{HEXDATA_GetFirstAddr(), {}});
    ValueRequest request;
    request.maximum = INT32_MAX;
    request.title = "Edit - Insert File";
    request.hint = formatText("%s\n%zu bytes take the place of what is there.",
                              choice->path.c_str(), bytes.size());
    request.label0 = "Address (Hex):";
    request.value0 = static_cast<int32_t>(place.address);
    while (FRONTEND_Get().editValue(request) == kDialogOk) {
        const auto address = static_cast<uint32_t>(request.value0.value_or(0));
        const std::string fault = request.value0 ? endFault(address, bytes.size()) : "Empty value!";
        if (fault.empty()) {
            FRONTEND_Get().openView(View::hexDump);
            putBytes("Insert File", address, std::move(bytes), Putting::atOnce);
            return;
        }
        ERROR_Notify(fault);
    }
}

void EDIT_PasteHex() {
    const std::optional<EditPlace> place = EDITPLACE_Get();
    if (!place) {
        return;
    }
    PastedHex pasted = COPYTEXT_Parse(FRONTEND_Get().clipboardText());
    std::string fault;
    if (!pasted.fault.empty()) {
        fault = "The clipboard does not hold hex alone.\n" + pasted.fault;
    } else if (pasted.bytes.empty()) {
        fault = "The clipboard holds no hex.";
    } else {
        fault = endFault(place->address, pasted.bytes.size());
    }
    if (!fault.empty()) {
        ERROR_Notify(fault);
        return;
    }
    putBytes("Paste", place->address, std::move(pasted.bytes), Putting::atOnce);
}

void EDIT_CopyAs(CopyFormat format) {
    const std::optional<EditPlace> place = EDITPLACE_Get();
    if (!place || place->selected.empty()) {
        return;
    }
    if (place->selected.size() > kMaxCopiedBytes) {
        ERROR_Ask(nullptr, formatText("At most %u bytes can be copied at once.", kMaxCopiedBytes),
                  "Copy", BOX_ICON_INFORMATION);
        return;
    }
    FRONTEND_Get().setClipboard(COPYTEXT_Make(format, place->selected));
}
