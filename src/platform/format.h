// Texts made with the standard formatted output, checked by the compiler.
#pragma once

#include <string>

// The text that printf would write for `format`; a wrong argument does not compile.
[[gnu::format(printf, 1, 2)]] std::string formatText(const char* format, ...);
