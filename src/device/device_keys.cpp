// The keys of a device description, each with the reader of its value.
#include "device/device_parser.h"
#include "device/device_statement.h"
#include "persist/parse.h"
#include "platform/format.h"

#include <algorithm>
#include <iterator>
#include <span>
#include <string_view>

namespace {

constexpr uint32_t kAnyAddress = 0xFFFFFFFF;
constexpr uint32_t k24BitAddress = 0xFFFFFF;
constexpr uint32_t kMaxBlockLen = 0x100000;
constexpr int32_t kMaxTimeout = 200000; // ms
constexpr int32_t kMillivoltsPerStep = 100;

struct CodeWord {
    std::string_view word;
    int32_t code;
};

constexpr CodeWord kSIFTypes[] = {{"S60", 0},   {"SDA", 1}, {"ST9", 2}, {"S20", 3},
                                  {"SDA79", 4}, {"S22", 5}, {"ST7", 6}};
constexpr CodeWord kSerialAlgorithms[] = {{"S20", 0x80},  {"S38", 0x81}, {"S60", 0x82},
                                          {"ST9", 0x83},  {"S79", 0x84}, {"S22", 0x85},
                                          {"S507", 0x87}, {"ST7", 0x88}};
constexpr CodeWord kParallelAlgorithms[] = {{"P60", 0}, {"P20", 1}, {"P62N", 0x86}};

// Nothing calls the check routine; it stands for the name that a description may give.
int CheckM7906() {
    return 0;
}

template <typename Field>
void store(Field& field, int64_t value) {
    field = static_cast<Field>(value);
}

int32_t codeOf(Statement& s, std::span<const CodeWord> words, std::string_view word,
               const char* complaint) {
    const auto found = std::ranges::find(words, word, &CodeWord::word);
    if (found != words.end()) {
        return found->code;
    }
    if (s.ok()) {
        s.error = complaint;
    }
    return 0;
}

template <auto Field, int32_t Min, int32_t Max>
void readDec(Statement& s) {
    store(s.record.*Field, s.dec(Min, Max));
}

template <auto Field, uint32_t Min, uint32_t Max>
void readHex(Statement& s) {
    store(s.record.*Field, s.hex(Min, Max));
}

template <auto Field>
void readFlag(Statement& s) {
    readDec<Field, 0, 1>(s);
}

template <auto Field>
void readText(Statement& s) {
    s.record.*Field = s.text(kMaxDeviceText);
}

// A pair of addresses or lengths: an area of the target.
template <auto Start, auto Len, uint32_t Max>
void readArea(Statement& s) {
    readHex<Start, 0, Max>(s);
    s.expectTight(',');
    readHex<Len, 0, Max>(s);
}

// A code word, in double quotes or bare.
void readCode(Statement& s, uint8_t& field, std::span<const CodeWord> words,
              const char* complaint) {
    std::string word;
    PARSE_GetString(s.error, s.cursor, word, s.longest + 1);
    if (!s.ok()) {
        s.error.clear();
        word = s.alnum();
    }
    store(field, codeOf(s, words, word, complaint));
}

void readSIFType(Statement& s) {
    readCode(s, s.record.SIFType, kSIFTypes, "SIFType: Unsupported interface");
}

void readAlgoS(Statement& s) {
    readCode(s, s.record.AlgoS, kSerialAlgorithms, "AlgoS: Unsupported serial algorithm");
}

void readAlgoP(Statement& s) {
    readCode(s, s.record.AlgoP, kParallelAlgorithms, "AlgoP: Unsupported parallel algorithm");
}

void readVersion(Statement& s) {
    s.dec(1, 5000);
}

void readBank(Statement& s) {
    do {
        FlashBlock block;
        block.Start = s.hex(0, kAnyAddress);
        s.expectLoose(',');
        block.Len = s.hex(1, kMaxBlockLen);
        s.checkRoom(s.record.aBlock.size(), kMaxBlocks, "blocks");
        s.record.aBlock.push_back(block);
    } while (s.moreItems());
}

void readVCC(Statement& s) {
    store(s.record.VCCMin, s.dec(2000, 5000) / kMillivoltsPerStep);
    s.expectLoose('-');
    store(s.record.VCCMax, s.dec(2000, 6000) / kMillivoltsPerStep);
}

void readVpp(Statement& s) {
    const int32_t millivolts = s.dec(2000, 12500);
    if (s.ok()) {
        store(s.record.Vpp, millivolts / kMillivoltsPerStep);
        return;
    }
    s.error.clear();
    std::string word;
    PARSE_GetWord(s.error, s.cursor, word, s.longest);
    if (word != "VCC" && word != "nc") {
        s.error = "Unexpected identifier : Expecting VCC";
    }
    s.record.Vpp = 0;
}

void readHWRange(Statement& s) {
    do {
        const int32_t low = s.dec(0, 1000);
        s.expectLoose(',');
        const int32_t high = s.dec(low, 1000);
        s.checkRoom(s.record.aHWRange.size(), kMaxHWRanges, "pairs");
        s.record.aHWRange.emplace_back(low, high);
    } while (s.moreItems());
}

void readIDAdr(Statement& s) {
    do {
        const uint32_t address = s.hex(0, kAnyAddress);
        s.checkRoom(s.record.aIDAdr.size(), kMaxIDAdr, "addresses");
        s.record.aIDAdr.push_back(address);
    } while (s.moreItems());
}

void readConstIDData(Statement& s) {
    do {
        const uint32_t byte = s.hex(0, 0xFF);
        s.checkRoom(s.record.aConstIDData.size(), kMaxConstIDData, "bytes");
        s.record.aConstIDData.push_back(static_cast<uint8_t>(byte));
    } while (s.moreItems());
}

void readIDCheckFunction(Statement& s) {
    if (s.alnum() == "CheckM7906") {
        s.record.idCheck = CheckM7906;
    } else {
        s.error = "IDCheckFunction: Unknown function defined";
    }
}

void readIVector(Statement& s) {
    do {
        IVectorEntry entry;
        entry.Number = s.dec(0, 256);
        s.expectTight(',');
        entry.Name = s.text(kMaxShortText);
        s.expectLoose(',');
        entry.Bits = s.dec(0, 32);
        s.expectTight(',');
        entry.Address = s.hex(0, k24BitAddress);
        s.checkRoom(s.record.aIVector.size(), kMaxIVectors, "entries");
        s.record.aIVector.push_back(entry);
    } while (s.moreItems());
}

void readUARTRamcode(Statement& s) {
    s.record.RamcodeFile = s.text(kMaxDeviceText);
    s.expectTight(',');
    std::string protocol;
    PARSE_GetString(s.error, s.cursor, protocol, s.longest + 1);
    const std::optional<int32_t> type = ramcodeTypeOf(protocol);
    if (!type && s.ok()) {
        s.error = "UARTRamcode: Unsupported protocoll";
    }
    s.record.RamcodeType = type.value_or(0);
}

void readRelocate(Statement& s) {
    readHex<&DeviceRecord::RelocateFrom, 0, kAnyAddress>(s);
    s.expectTight(',');
    readHex<&DeviceRecord::RelocateTo, 0, kAnyAddress>(s);
    s.expectTight(',');
    readHex<&DeviceRecord::RelocateLen, 0, kAnyAddress>(s);
}

void readProductInfo(Statement& s) {
    readHex<&DeviceRecord::PICode, 0, 0xFF>(s);
    s.expectTight(',');
    readDec<&DeviceRecord::PIValue1, 0, 255>(s);
    s.expectTight(',');
    readDec<&DeviceRecord::PIValue2, 0, 255>(s);
    s.expectTight(',');
    s.record.PIText = s.text(kMaxShortText);
}

using R = DeviceRecord;

struct Key {
    std::string_view name;
    void (*read)(Statement&);
};

constexpr Key kKeys[] = {
    {"Version", readVersion},
    {"Manufacturer", readText<&R::Manufacturer>},
    {"Device", readText<&R::Device>},
    {"Bank", readBank},
    {"ParallelSupport", readFlag<&R::ParallelSupport>},
    {"SerialSupport", readFlag<&R::SerialSupport>},
    {"BootSelect", readFlag<&R::BootSelect>},
    {"BootWarning", readFlag<&R::BootWarning>},
    {"SIFType", readSIFType},
    {"AlgoS", readAlgoS},
    {"AlgoP", readAlgoP},
    {"VCC", readVCC},
    {"Vpp", readVpp},
    {"aHWRange", readHWRange},
    {"DisplayBLVersion", readFlag<&R::DisplayBLVersion>},
    {"IDLenMin", readDec<&R::IDLenMin, 0, 15>},
    {"IDLenMax", readDec<&R::IDLenMax, 0, 255>},
    {"IDLenAdr", readHex<&R::IDLenAdr, 0, kAnyAddress>},
    {"aIDAdr", readIDAdr},
    {"aConstIDData", readConstIDData},
    {"IDCheckFunction", readIDCheckFunction},
    {"EnableClearAll", readFlag<&R::EnableClearAll>},
    {"EnableClearChip", readFlag<&R::EnableClearChip>},
    {"IVector", readIVector},
    {"PWArea", readArea<&R::PWAreaStart, &R::PWAreaLen, k24BitAddress>},
    {"UARTRamcode", readUARTRamcode},
    {"Ram", readArea<&R::RamStart, &R::RamLen, kAnyAddress>},
    {"TimeoutEraseAll", readDec<&R::TimeoutEraseAll, 0, kMaxTimeout>},
    {"TimeoutEraseBlock", readDec<&R::TimeoutEraseBlock, 0, kMaxTimeout>},
    {"TimeoutGetSUM", readDec<&R::TimeoutGetSUM, 0, kMaxTimeout>},
    {"Relocate", readRelocate},
    {"SprtProtectChip", readFlag<&R::SprtProtectChip>},
    {"SprtProtectBlock", readFlag<&R::SprtProtectBlock>},
    {"SprtEraseChip", readFlag<&R::SprtEraseChip>},
    {"RAMCodeAdrLen", readDec<&R::RAMCodeAdrLen, 1, 3>},
    {"FLASHPageLen", readDec<&R::FLASHPageLen, 1, 2048>},
    {"SprtCRC", readFlag<&R::SprtCRC>},
    {"SprtErase", readFlag<&R::SprtErase>},
    {"SprtBlankCheck", readFlag<&R::SprtBlankCheck>},
    {"SprtFlashEraseCMD", readFlag<&R::SprtFlashEraseCMD>},
    {"SprtReadProtect", readFlag<&R::SprtReadProtect>},
    {"SprtFlashMemStatus", readFlag<&R::SprtFlashMemStatus>},
    {"RewriteVersion", readFlag<&R::RewriteVersion>},
    {"SkipPasswordCheck", readFlag<&R::SkipPasswordCheck>},
    {"ProductInfo", readProductInfo},
    {"FLASHIsEE", readFlag<&R::FLASHIsEE>},
    {"TimerInit", readFlag<&R::TimerInit>},
};

} // namespace

void readStatementValue(Statement& statement) {
    const auto* const found = std::ranges::find(kKeys, statement.key, &Key::name);
    if (found == std::end(kKeys)) {
        statement.error = formatText("Unknown identifier: %s", statement.key.c_str());
        return;
    }
    statement.expectLoose('=');
    if (statement.ok()) {
        found->read(statement);
    }
}
