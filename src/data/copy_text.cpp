#include "data/copy_text.h"

#include "data/data_rows.h"
#include "data/program_format.h"
#include "persist/chars.h"
#include "platform/format.h"

#include <algorithm>
#include <array>

namespace {

constexpr uint8_t kErased = 0xFF; // what flash holds where nothing is programmed

std::string makeCArray(const AddressRange& range) {
    std::string lines;
    bool hasGaps = false;
    for (uint64_t at = range.start; at < range.end; at += kBytesPerRow) {
        std::array<uint8_t, kBytesPerRow> bytes{};
        std::array<bool, kBytesPerRow> held{};
        const auto count = static_cast<size_t>(std::min<uint64_t>(range.end - at, bytes.size()));
        HEXDATA_Copy(static_cast<uint32_t>(at), std::span(bytes).first(count),
                     std::span(held).first(count));
        lines += "   ";
        for (size_t i = 0; i < count; ++i) {
            lines += formatText(" 0x%02X,", held[i] ? bytes[i] : kErased);
            hasGaps = hasGaps || !held[i];
        }
        lines += '\n';
    }
    return (hasGaps ? "/* 0xFF also where the program holds nothing. */\n" : "") +
           formatText("const uint8_t data_%08X[%ju] = {\n", range.start,
                      static_cast<uintmax_t>(range.size())) +
           lines + "};\n";
}

std::string makeIntelHex(const AddressRange& range) {
    std::string text;
    RecordWriter writer([&text](std::string_view piece) {
        text += piece;
        return FileResult();
    });
    writeIntelHex(writer, range);
    static_cast<void>(writer.finish()); // a string takes all
    std::erase(text, '\r');
    return text;
}

// Reads a pasted text from word to word and knows where in it it is.
class PasteReader {
public:
    explicit PasteReader(std::string_view text) : text_(text) {}

    PastedHex read() {
        while (skipBetween()) {
            if (!readWord()) {
                return {{}, fault_};
            }
        }
        return {bytes_, {}};
    }

private:
    bool skipBetween() {
        at_ = std::min(text_.find_first_not_of(" \t\r\n,", at_), text_.size());
        return at_ < text_.size();
    }

    // All digits up to the next blank.
    bool readWord() {
        if (text_.substr(at_, 2) == "0x" || text_.substr(at_, 2) == "0X") {
            at_ += 2;
        }
        const size_t end = std::min(text_.find_first_of(" \t\r\n,", at_), text_.size());
        for (size_t i = at_; i < end; ++i) {
            if (hexDigitValue(text_[i]) < 0) {
                return fail(i, "\"" + letterAt(i) + "\" is no hex digit");
            }
        }
        if (end == at_ || (end - at_) % 2 != 0) {
            return fail(at_,
                        end == at_ ? "there is no digit behind 0x" : "a digit is without its pair");
        }
        for (; at_ < end; at_ += 2) {
            const int value = hexDigitValue(text_[at_]) << 4 | hexDigitValue(text_[at_ + 1]);
            bytes_.push_back(static_cast<uint8_t>(value));
        }
        return true;
    }

    static bool continuesLetter(char byte) { return (byte & 0xC0) == 0x80; } // of UTF-8

    std::string letterAt(size_t at) const {
        size_t end = at + 1;
        while (end < text_.size() && continuesLetter(text_[end])) {
            ++end;
        }
        return formatPrintable(text_.substr(at, end - at), LineEnds::shown);
    }

    bool fail(size_t at, const std::string& what) {
        const std::string_view before = text_.substr(0, at);
        const size_t lineStart = before.rfind('\n') + 1; // 0 where there is none
        fault_ = formatText(
            "Line %zu, column %zu: %s",
            size_t{1} + static_cast<size_t>(std::ranges::count(before, '\n')),
            static_cast<size_t>(
                1 + std::ranges::count_if(before.substr(lineStart),
                                          [](char byte) { return !continuesLetter(byte); })),
            what.c_str());
        return false;
    }

    std::string_view text_;
    size_t at_ = 0;
    std::vector<uint8_t> bytes_;
    std::string fault_;
};

} // namespace

std::string COPYTEXT_Make(CopyFormat format, const AddressRange& range) {
    const AddressRange taken =
        AddressRange::of(range.start, std::min<uint64_t>(range.size(), kMaxCopiedBytes));
    switch (format) {
    case CopyFormat::hex:
        return HEXDUMPVIEW_CopyHex(taken);
    case CopyFormat::cArray:
        return makeCArray(taken);
    case CopyFormat::intelHex:
        return makeIntelHex(taken);
    case CopyFormat::text:
        return HEXDUMPVIEW_CopyCharacters(taken);
    }
    return {};
}

PastedHex COPYTEXT_Parse(std::string_view text) {
    return PasteReader(text).read();
}
