// Texts made with the standard formatted output, checked by the compiler, and their endings.
#pragma once

#include <string>
#include <string_view>

// The text that printf would write for `format`; a wrong argument does not compile.
[[gnu::format(printf, 1, 2)]] std::string formatText(const char* format, ...);

// Whether `text` ends with `ending`, the letters A to Z in either case.
bool endsWithIgnoringCase(std::string_view text, std::string_view ending);

// A text as it may be shown on a terminal: what is neither a character nor a tab stands as "\x1B",
// the control characters beyond ASCII and bytes that are no UTF-8 among it. Line ends (LF and CR
// LF) stay where the text may have several lines.
enum class LineEnds { stay, shown };
std::string formatPrintable(std::string_view text, LineEnds lineEnds);
