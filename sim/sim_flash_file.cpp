#include "sim/sim_flash_file.h"

#include "data/hexdata.h"
#include "data/program_file.h"
#include "notice/error.h"
#include "platform/files.h"
#include "platform/process.h"

#include <span>

namespace {

constexpr size_t kLargestFlash = 1 << 28; // bytes, more than any chip has

bool readBinary(Chip& chip, const std::string& path, std::string& error) {
    std::string text;
    const FileResult result = FILES_ReadAll(path, text, kLargestFlash);
    if (!result.ok()) {
        error = path + ": " + (result.reason.empty() ? "not found" : result.reason);
        return false;
    }
    const auto* const bytes = reinterpret_cast<const uint8_t*>(text.data());
    if (!CHIP_PutFlash(chip, CHIP_FlashStart(chip), std::span(bytes, text.size()))) {
        error = path + ": reaches beyond the flash";
        return false;
    }
    return true;
}

bool readHex(Chip& chip, const std::string& path, std::string& error) {
    ERROR_SetHandlers(
        [&error](WindowHandle, const std::string& text, const std::string&, int) { error = text; },
        {}, {});
    const bool loaded = PROGRAMFILE_Load(path);
    ERROR_SetHandlers({}, {}, {});
    if (!loaded) {
        error = path + ": " + error;
        return false;
    }
    for (const AddressRange& area : HEXDATA_GetAreas()) {
        uint32_t address = area.start;
        const uint8_t* bytes = nullptr;
        const uint32_t count = HEXDATA_GetData(address, bytes);
        if (!CHIP_PutFlash(chip, address, std::span(bytes, count))) {
            error = path + ": reaches beyond the flash";
            return false;
        }
    }
    return true;
}

} // namespace

bool SIM_ReadFlash(Chip& chip, const std::string& path, std::string& error) {
    if (path.empty()) {
        return true;
    }
    return path.ends_with(".bin") ? readBinary(chip, path, error) : readHex(chip, path, error);
}

bool SIM_WriteFlash(Chip& chip, const std::string& path) {
    if (path.empty()) {
        return true;
    }
    const std::vector<uint8_t> bytes =
        CHIP_GetFlash(chip, CHIP_FlashStart(chip), static_cast<uint32_t>(CHIP_FlashSpan(chip)));
    const FileResult result = FILES_Replace(
        path, std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
    if (!result.ok()) {
        PROCESS_WriteError("calvorin-sim: " + path + ": " + result.reason + "\n");
    }
    return result.ok();
}
