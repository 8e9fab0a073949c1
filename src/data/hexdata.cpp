#include "data/hexdata.h"

#include "data/checksum.h"
#include "data/image_store.h"
#include "notice/error.h"

#include <algorithm>
#include <cstring>
#include <mutex>

namespace {

constexpr char kOverlapCaption[] = "Overlapping record problem";
constexpr char kOverlapQuestion[] = "Areas overlap   ...\nOverwrite existing data and continue ?";

// What is known of the image besides its areas.
struct ImageState {
    bool overwriteConfirmed = false;
    const char* addError = nullptr;
    int fileType = 0;
    bool fits = false;
    uint16_t sum = kSumStart;
    uint16_t crc = kCrcStart;
    bool sumIsLast = false;
};

std::mutex imageMutex; // guards both
AreaMap areas;
ImageState image;
AreaMap* filled = &areas; // what readers fill
ImageState besideWhat;    // the one image's state while another one is filled

bool isRefused(uint32_t address, uint64_t end) {
    return !image.overwriteConfirmed && filled->holdsAny(address, end);
}

// Asked without the lock: the answer may take minutes, and the views go on drawing the image.
void askWhetherToOverwrite(std::unique_lock<std::mutex>& lock) {
    lock.unlock();
    const int answer = ERROR_Ask(nullptr, kOverlapQuestion, kOverlapCaption, BOX_OK_CANCEL);
    lock.lock();
    if (answer == ANSWER_OK) {
        image.overwriteConfirmed = true;
    }
}

template <class Held, class Gap>
void walkRange(uint32_t address, uint64_t count, const Held& held, const Gap& gap) {
    IMAGESTORE_Walk(
        areas, AddressRange::of(address, count),
        [&](uint64_t, std::span<const uint8_t> run) { held(run); },
        [&](uint64_t at, uint64_t end) { gap(end - at); });
}

} // namespace

ImageLock::ImageLock() : lock_(imageMutex) {
}

// Not of the lock's own state, but only whoever holds one gets at them.
AreaMap& ImageLock::areas() const { // NOLINT(readability-convert-member-functions-to-static)
    return ::areas;
}

void IMAGESTORE_FillBeside(AreaMap* beside) {
    const std::lock_guard lock(imageMutex);
    if (beside != nullptr) {
        besideWhat = image;
        image.overwriteConfirmed = false;
    } else { // its sums may have been taken anew meanwhile
        image.overwriteConfirmed = besideWhat.overwriteConfirmed;
        image.addError = besideWhat.addError;
        image.fileType = besideWhat.fileType;
    }
    filled = beside != nullptr ? beside : &areas;
}

const char* HEXDATA_AddData(uint32_t address, std::span<const uint8_t> bytes) {
    if (bytes.empty()) {
        return nullptr;
    }
    std::unique_lock lock(imageMutex);
    const uint64_t end = address + uint64_t{bytes.size()};
    if (end > kAddressSpace) {
        return image.addError = kPastAddressSpace;
    }
    if (isRefused(address, end)) {
        askWhetherToOverwrite(lock);
        if (isRefused(address, end)) {
            return image.addError = kMultipleDefinitions;
        }
    }
    filled->put(address, bytes);
    return nullptr;
}

std::string HEXDATA_GetAddError() {
    const std::lock_guard lock(imageMutex);
    return image.addError != nullptr ? image.addError : "";
}

void HEXDATA_ClearAddError() {
    const std::lock_guard lock(imageMutex);
    image.addError = nullptr;
}

void HEXDATA_DeleteRange(uint32_t address, uint64_t count) {
    const std::lock_guard lock(imageMutex);
    areas.erase(address, address + std::min(count, kAddressSpace - address));
}

void HEXDATA_Clear() {
    const std::lock_guard lock(imageMutex);
    filled->clear();
}

bool HEXDATA_Relocate(int32_t offset) {
    const std::lock_guard lock(imageMutex);
    return areas.relocate(offset);
}

void HEXDATA_Reset() {
    const std::lock_guard lock(imageMutex);
    filled = &areas;
    areas.clear();
    image = ImageState();
}

uint32_t HEXDATA_GetData(uint32_t& address, const uint8_t*& data) {
    const std::lock_guard lock(imageMutex);
    const auto area = areas.findFrom(address);
    if (area == areas.index().end()) {
        return 0;
    }
    address = std::max(address, area->first);
    const std::span<const uint8_t> run = area->second.bytes().subspan(address - area->first);
    data = run.data();
    return static_cast<uint32_t>(run.size());
}

void HEXDATA_Copy(uint32_t address, std::span<uint8_t> bytes, std::span<bool> held) {
    const std::lock_guard lock(imageMutex);
    size_t at = 0;
    const auto mark = [&](uint64_t count, bool isHeld) {
        if (!held.empty()) {
            std::ranges::fill(held.subspan(at, static_cast<size_t>(count)), isHeld);
        }
        at += static_cast<size_t>(count);
    };
    walkRange(
        address, bytes.size(),
        [&](std::span<const uint8_t> run) {
            std::memcpy(bytes.data() + at, run.data(), run.size());
            mark(run.size(), true);
        },
        [&](uint64_t count) { mark(count, false); });
}

uint64_t HEXDATA_GetRoom(uint32_t address) {
    const std::lock_guard lock(imageMutex);
    const auto area = filled->findFrom(address);
    const uint64_t end = area == filled->index().end() ? kAddressSpace : area->first;
    return end > address ? end - address : 0;
}

uint32_t HEXDATA_GetFirstAddr() {
    const std::lock_guard lock(imageMutex);
    const AreaMap::Index& index = areas.index();
    return index.empty() ? 0 : index.begin()->first;
}

uint32_t HEXDATA_GetLastAddr() {
    const std::lock_guard lock(imageMutex);
    const AreaMap::Index& index = areas.index();
    return index.empty() ? 0 : static_cast<uint32_t>(AreaMap::endOf(std::prev(index.end())) - 1);
}

uint32_t HEXDATA_GetNumAreas() {
    const std::lock_guard lock(imageMutex);
    return static_cast<uint32_t>(areas.index().size());
}

uint32_t HEXDATA_GetNumBytes() {
    const std::lock_guard lock(imageMutex);
    return static_cast<uint32_t>(areas.numBytes());
}

bool HEXDATA_IsEmpty() {
    const std::lock_guard lock(imageMutex);
    return areas.index().empty();
}

std::vector<AddressRange> HEXDATA_GetAreas() {
    const std::lock_guard lock(imageMutex);
    std::vector<AddressRange> list;
    list.reserve(areas.index().size());
    for (const auto& [start, run] : areas.index()) {
        list.push_back(AddressRange::of(start, run.size()));
    }
    return list;
}

int HEXDATA_GetFileType() {
    const std::lock_guard lock(imageMutex);
    return image.fileType;
}

void HEXDATA_SetFileType(int type) {
    const std::lock_guard lock(imageMutex);
    image.fileType = type;
}

void HEXDATA_SetFits(bool fits) {
    const std::lock_guard lock(imageMutex);
    image.fits = fits;
}

bool HEXDATA_GetFits() {
    const std::lock_guard lock(imageMutex);
    return image.fits;
}

void HEXDATA_CalcSum(uint32_t address, uint32_t count, bool& restart, uint8_t fill) {
    const std::lock_guard lock(imageMutex);
    uint16_t sum = restart ? kSumStart : image.sum;
    restart = false;
    walkRange(
        address, count, [&](std::span<const uint8_t> run) { sum = CHECKSUM_Sum(sum, run); },
        [&](uint64_t gap) { sum = CHECKSUM_SumOfFill(sum, fill, gap); });
    image.sum = sum;
    image.sumIsLast = true;
}

void HEXDATA_CalcCRC(uint32_t address, uint32_t count, bool& restart, uint8_t fill) {
    const std::lock_guard lock(imageMutex);
    uint16_t crc = restart ? kCrcStart : image.crc;
    restart = false;
    walkRange(
        address, count, [&](std::span<const uint8_t> run) { crc = CHECKSUM_Crc(crc, run); },
        [&](uint64_t gap) { crc = CHECKSUM_CrcOfFill(crc, fill, gap); });
    image.crc = crc;
    image.sumIsLast = false;
}

uint16_t HEXDATA_GetChecksum() {
    const std::lock_guard lock(imageMutex);
    return image.sumIsLast ? image.sum : image.crc;
}

std::string HEXDATA_GetChecksumLabel() {
    const std::lock_guard lock(imageMutex);
    return image.sumIsLast ? "SUM:" : "CRC:";
}
