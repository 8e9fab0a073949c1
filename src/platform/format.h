// Texts made with the standard formatted output, checked by the compiler, and their endings.
#pragma once

#include <string>
#include <string_view>

// The text that printf would write for `format`; a wrong argument does not compile.
[[gnu::format(printf, 1, 2)]] std::string formatText(const char* format, ...);

// Whether `text` ends with `ending`, the letters A to Z in either case.
bool endsWithIgnoringCase(std::string_view text, std::string_view ending);
