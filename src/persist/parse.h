// The tokenizer that reads every text format of the program: device descriptions, settings and
// project files. Each operation works on a NUL-terminated text through a cursor that it moves
// forward, and reports failure through an error text owned by the caller. While that text is not
// empty, every read does nothing, so a statement's reads may follow one another with one test at
// the end. A failing read leaves the cursor where it was, but for blanks skipped at its start.
//
// Blanks are space and tab; line breaks are CR and LF.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

// The error text of a string that has no opening or no closing quote: one byte, no words.
inline constexpr char kParseStringError[] = "\x01";
// An error text as it is shown: itself, or the words that it lacks.
std::string PARSE_ErrorWords(const std::string& error);

void PARSE_SkipBlanks(const char*& cursor);
// Moves to the start of the next line that holds text: over the whole run of line breaks.
void PARSE_SkipLine(const char*& cursor);
// Moves past `character`, or sets "Expected 'c', got 'x'". Blanks are not skipped.
void PARSE_Expect(std::string& error, const char*& cursor, char character);
// Skips blanks and reads a string in double quotes of at most `size` characters; line breaks are
// ordinary characters in it. Without opening or closing quote: kParseStringError.
void PARSE_GetString(std::string& error, const char*& cursor, std::string& text, size_t size);
// Skips blanks and reads at most `size` letters; the word may be empty. Never fails.
void PARSE_GetWord(std::string& error, const char*& cursor, std::string& text, size_t size);
// As PARSE_GetWord, letters and digits.
void PARSE_GetAlnum(std::string& error, const char*& cursor, std::string& text, size_t size);
// Skips blanks and reads an optional sign and decimal digits. The bounds (both inclusive) are those
// of the digits' magnitude: below `min` is an error, above `max` becomes `max`.
void PARSE_GetDec(std::string& error, const char*& cursor, int32_t& value, int32_t min,
                  int32_t max);
// Skips blanks and reads hex digits without prefix and sign; bounds as for PARSE_GetDec.
void PARSE_GetHex(std::string& error, const char*& cursor, uint32_t& value, uint32_t min,
                  uint32_t max);
