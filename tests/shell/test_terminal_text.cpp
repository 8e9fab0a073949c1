#include "shell/terminal_text.h"

#include <gtest/gtest.h>

namespace {

// "S[x]" for what was sent, "N[x]" for notes; "^2" before what a backspace has shortened by two.
std::string shown(const TerminalSettings& settings, const std::vector<TerminalPiece>& pieces) {
    TerminalText text(settings);
    std::string all;
    for (const TerminalPiece& piece : pieces) { // one by one, as they come
        for (const TerminalRun& run : text.take({piece})) {
            const std::string part =
                (run.erased != 0 ? "^" + std::to_string(run.erased) : "") + run.text;
            all += run.source == TerminalSource::received ? part
                   : run.source == TerminalSource::sent   ? "S[" + part + "]"
                                                          : "N[" + part + "]";
        }
    }
    return all;
}

TEST(TerminalText, ShowsWhatPassedTheLine) {
    constexpr auto R = TerminalSource::received;
    constexpr auto S = TerminalSource::sent;
    constexpr auto N = TerminalSource::note;
    constexpr auto text = TerminalControls::text;
    constexpr auto glyphs = TerminalControls::glyphs;
    constexpr auto hex = TerminalControls::hex;
    const auto with = [](TerminalControls controls, bool echo = true, bool stamps = false) {
        return TerminalSettings{true, controls, TerminalLineEnd::cr, echo, stamps};
    };
    const uint32_t time = 3'723'004; // 01:02:03.004
    const struct {
        TerminalSettings settings;
        std::vector<TerminalPiece> pieces;
        std::string expected;
    } cases[] = {
        {with(text), {{R, 0, "a\r"}, {R, 0, "\nb\rc\n\nd"}}, "a\nb\nc\n\nd"},
        {with(text), {{R, 0, std::string("x\0\x1By\t\xE9", 6)}}, "xy\t\u00E9"},
        {with(text), {{R, 0, "\bab\b\bc"}, {R, 0, "\b\b\bd"}}, "c^1d"},
        {with(text), {{R, 0, "\xE9"}, {R, 0, "z\b\b"}}, "\u00E9^1"},
        {with(glyphs), {{R, 0, "a\x01\x7F\x85\r\n"}}, "a\u2401\u2421<85>\u240D\u240A\n"},
        {with(hex), {{R, 0, "\b\r\n"}, {R, 0, "b"}}, "<08><0D><0A>\nb"},
        // A CR that was sent ends the line with its echo or without one.
        {with(text), {{R, 0, "> "}, {S, 0, "go\r"}, {R, 0, "\r\nok"}}, "> S[go]\nok"},
        {with(text), {{S, 0, "go\r"}, {R, 0, "ok"}}, "S[go]S[\n]ok"},
        {with(text, false), {{S, 0, "go\r"}, {R, 0, "ok"}}, "ok"},
        {with(text), {{R, 0, "ab"}, {N, 0, "lost"}, {R, 0, "c"}}, "abN[\n-- lost --\n]c"},
        {with(text, true, true), {{R, time, "a\n\nb"}}, "N[01:02:03.004 ]a\n\nN[01:02:03.004 ]b"},
        {with(text),
         {{R, 0, std::string(kLongestTerminalLine, 'a') + "b"}},
         std::string(kLongestTerminalLine, 'a') + "\nb"},
    };
    for (const auto& one : cases) {
        EXPECT_EQ(shown(one.settings, one.pieces), one.expected);
    }
}

} // namespace
