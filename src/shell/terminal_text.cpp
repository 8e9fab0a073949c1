#include "shell/terminal_text.h"

#include "platform/format.h"

#include <utility>

namespace {

bool isControl(uint8_t byte) {
    return byte < 0x20 || (byte >= 0x7F && byte < 0xA0);
}

// The last character of a text of UTF-8.
void dropCharacter(std::string& text) {
    while (!text.empty() && (static_cast<uint8_t>(text.back()) & 0xC0) == 0x80) {
        text.pop_back();
    }
    text.pop_back();
}

size_t characterCount(std::string_view text) {
    size_t count = 0;
    for (const char c : text) {
        count += (static_cast<uint8_t>(c) & 0xC0) != 0x80 ? 1 : 0;
    }
    return count;
}

} // namespace

std::string TERMTEXT_Byte(TerminalControls controls, uint8_t byte) {
    constexpr uint8_t kDelete = 0x7F;
    if (!isControl(byte)) {
        return byte < 0x80 ? std::string(1, static_cast<char>(byte))
                           : std::string{static_cast<char>(0xC0 | byte >> 6),
                                         static_cast<char>(0x80 | (byte & 0x3F))};
    }
    if (controls == TerminalControls::text) {
        return byte == '\t' ? "\t" : "";
    }
    if (controls == TerminalControls::glyphs && byte <= kDelete) {
        const int picture = byte == kDelete ? 0x21 : byte; // in the block that begins at U+2400
        return {'\xE2', '\x90', static_cast<char>(0x80 | picture)};
    }
    return formatText("<%02X>", byte);
}

std::vector<TerminalRun> TerminalText::take(const std::vector<TerminalPiece>& pieces) {
    for (const TerminalPiece& piece : pieces) {
        if (piece.source == TerminalSource::note) {
            addNote(piece);
        } else if (piece.source == TerminalSource::received || settings_.echo) {
            for (const char byte : piece.bytes) {
                addByte(piece, static_cast<uint8_t>(byte));
            }
        }
    }
    return std::exchange(runs_, {});
}

std::string& TerminalText::textOf(TerminalSource source) {
    if (runs_.empty() || runs_.back().source != source) {
        runs_.push_back({source, 0, {}});
    }
    return runs_.back().text;
}

void TerminalText::beginCharacter(const TerminalPiece& piece) {
    if (column_ >= kLongestTerminalLine) {
        endLine(piece.source);
    }
    if (!lineBegun_ && settings_.stamps) {
        const uint32_t ms = piece.timeMs;
        textOf(TerminalSource::note) += formatText("%02u:%02u:%02u.%03u ", ms / 3'600'000,
                                                   ms / 60'000 % 60, ms / 1000 % 60, ms % 1000);
    }
    lineBegun_ = true;
}

// CR, LF and CR LF end a line, and so does the CR LF with which a chip answers a CR that was sent.
void TerminalText::addByte(const TerminalPiece& piece, uint8_t byte) {
    const auto crOf = std::exchange(afterCr_, std::nullopt);
    if (crOf && byte != '\n' && !(byte == '\r' && *crOf != piece.source)) {
        endLine(*crOf);
    }
    if (byte == '\b' && settings_.controls == TerminalControls::text) {
        erase(piece.source);
        return;
    }
    const std::string shown = TERMTEXT_Byte(settings_.controls, byte);
    if (!shown.empty()) {
        beginCharacter(piece);
        column_ += characterCount(shown);
        textOf(piece.source) += shown;
    }
    if (byte == '\n') {
        endLine(piece.source);
    } else if (byte == '\r') {
        afterCr_ = piece.source;
    }
}

void TerminalText::addNote(const TerminalPiece& piece) {
    if (column_ > 0) {
        endLine(TerminalSource::note);
    }
    afterCr_.reset();
    beginCharacter(piece);
    textOf(TerminalSource::note) += "-- " + piece.bytes + " --";
    endLine(TerminalSource::note);
}

void TerminalText::erase(TerminalSource source) {
    if (column_ == 0) {
        return;
    }
    --column_;
    if (!runs_.empty() && !runs_.back().text.empty()) {
        dropCharacter(runs_.back().text);
    } else if (runs_.empty() || runs_.back().source != source) {
        runs_.push_back({source, 1, {}});
    } else {
        ++runs_.back().erased;
    }
}

void TerminalText::endLine(TerminalSource source) {
    textOf(source) += '\n';
    column_ = 0;
    lineBegun_ = false;
}
