#include "data/program_format.h"
#include "notice/error.h"
#include "notice/run.h"
#include "platform/format.h"

#include <array>

namespace {

// Whether a record with a wrong checksum is used in spite of it. Nobody sees the question of an
// unattended run in its place: it says what it is about, and without the user's word on the command
// line the file is refused.
bool mayBeUsed(RecordReader& reader) {
    std::string question = "Continue and ignore ?";
    if (RUN_IsQuiet()) {
        if (!RUN_AcceptsDamaged()) {
            reader.fail(kChecksumError);
            return false;
        }
        question += formatText(" (line %d)", reader.line());
    }
    return ERROR_Ask(nullptr, question, "Checksum error !", BOX_YES_NO) == ANSWER_YES;
}

// The bytes of an address in a record of data, 0 in any other.
size_t addressLength(char type) {
    return type >= '1' && type <= '3' ? static_cast<size_t>(type - '0') + 1 : 0;
}

// `content` is address, data and checksum.
const char* addRecord(size_t addressBytes, std::span<const uint8_t> content, ImageBatch& image) {
    if (content.size() < addressBytes + 1) {
        return kRecordTooShort;
    }
    uint32_t address = 0;
    for (const uint8_t byte : content.first(addressBytes)) {
        address = address << 8 | byte;
    }
    return image.add(address, content.subspan(addressBytes, content.size() - addressBytes - 1));
}

void readSRecord(RecordReader& reader, ImageBatch& image) {
    reader.expect('S');
    reader.startChecksum();
    const char type = reader.takeType();
    std::array<uint8_t, 255> room;
    const std::span content(room.data(), reader.takeByte());
    reader.takeBytes(content);
    if (reader.error() != nullptr) {
        return;
    }
    if (reader.checksum() != 0xFF && !mayBeUsed(reader)) {
        return;
    }
    const size_t addressBytes = addressLength(type);
    if (addressBytes == 0) {
        return;
    }
    if (const char* error = addRecord(addressBytes, content, image)) {
        reader.fail(error);
    }
}

} // namespace

RecordParser startSRecords() {
    return readSRecord;
}

bool isSRecordEnd(std::string_view line) {
    constexpr size_t kShortest = 10;
    return line.size() >= kShortest && line[1] >= '7' && line[1] <= '9';
}
