#include "shell/cmdline_patch.h"

#include "data/hexdata.h"
#include "notice/error.h"
#include "notice/log.h"
#include "persist/hex_text.h"
#include "platform/files.h"
#include "platform/format.h"
#include "shell/account.h"
#include "shell/edit_history.h"
#include "shell/image_origin.h"
#include "shell/run_words.h"
#include "shell/session.h"
#include "shell/summary.h"

#include <charconv>
#include <memory>

namespace {

constexpr size_t kMostDigits = 600; // more than an argument holds
constexpr uint64_t kAddresses = uint64_t{1} << 32;

// The first address of the range that the image does not hold; none when it holds all of it.
std::optional<uint32_t> firstGap(uint32_t address, size_t count) {
    std::vector<uint8_t> bytes(count);
    const auto held = std::make_unique<bool[]>(count);
    HEXDATA_Copy(address, bytes, {held.get(), count});
    for (size_t i = 0; i < count; ++i) {
        if (!held[i]) {
            return address + static_cast<uint32_t>(i);
        }
    }
    return std::nullopt;
}

// Why the bytes cannot go there; empty when they can.
std::string refusal(const AccountedPatch& patch) {
    const size_t count = patch.bytes.size();
    if (count == 0) {
        return "There are no bytes to patch";
    }
    if (patch.address + uint64_t{count} > kAddresses) {
        return kPastAddressSpace;
    }
    const std::optional<uint32_t> gap = firstGap(patch.address, count);
    if (gap && !RUNWORDS_Get().patchAdds) {
        return formatText("The image holds nothing at %X, where a patch of %zu bytes at %X would "
                          "add to it; --patch-adds allows that",
                          *gap, count, patch.address);
    }
    return {};
}

void applyPatch(AccountedPatch patch) {
    if (!patch.path.empty()) {
        std::string contents;
        if (const FileResult read = FILES_ReadAll(patch.path, contents); !read.ok()) {
            ERROR_Out(nullptr, patch.path + ": " + read.reason, 1);
            return;
        }
        patch.bytes.assign(contents.begin(), contents.end());
    }
    LOG_Add(formatText("Patching %zu bytes at %X", patch.bytes.size(), patch.address));
    if (const std::string problem = refusal(patch); !problem.empty()) {
        ERROR_Out(nullptr, problem, 1);
        return;
    }
    {
        const EditStep step("Patch", AddressRange::of(patch.address, patch.bytes.size()));
        HEXDATA_DeleteRange(patch.address, patch.bytes.size());
        HEXDATA_AddData(patch.address, patch.bytes); // cannot overlap any more
    }
    SESSION_Get().loaded = true;
    ORIGIN_MarkChanged();
    ACCOUNT_Patch(std::move(patch));
    SUMMARY_Refresh();
}

bool readPatchAddress(std::string_view text, uint32_t& address) {
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, address, 16);
    return error == std::errc() && stop == end;
}

} // namespace

ArgumentValue CMDLINE_Patch() {
    const std::string text = CMDLINE_TakeRest();
    const size_t equals = text.find('=');
    AccountedPatch patch;
    if (equals == std::string::npos || !readPatchAddress(text.substr(0, equals), patch.address)) {
        CMDLINE_Fault("A patch is ADDRESS=HEXBYTES or ADDRESS=@FILE, the address within 0 - "
                      "FFFFFFFF");
        return {};
    }
    const std::string contents = text.substr(equals + 1);
    uint64_t size = contents.size() / 2;
    if (contents.starts_with('@')) {
        patch.path = contents.substr(1);
        if (!FILES_Exists(patch.path)) {
            CMDLINE_Fault("File not found (" + patch.path + ")");
            return {};
        }
        size =
            FILES_Stamp(patch.path).value_or(FileStamp()).size; // a pipe is judged once it is read
    } else {
        std::string error;
        patch.bytes = HEXTEXT_ToBytes(contents, kMostDigits, error);
        const bool isHex =
            contents.find_first_not_of("0123456789abcdefABCDEF") == std::string::npos;
        if (!error.empty() || !isHex || contents.empty()) {
            CMDLINE_Fault(error.empty() ? "Not a hex value" : error);
            return {};
        }
    }
    if (patch.address + size > kAddresses) {
        CMDLINE_Fault(formatText("A patch of %ju bytes at %X would end behind FFFFFFFF",
                                 static_cast<uintmax_t>(size), patch.address));
        return {};
    }
    return {[patch] { applyPatch(patch); }};
}
