#include "device/device_statement.h"

#include "persist/parse.h"
#include "platform/format.h"

namespace {

constexpr size_t kMaxWord = 255; // letters of a bare word

} // namespace

int32_t Statement::dec(int32_t min, int32_t max) {
    int32_t value = 0;
    PARSE_GetDec(error, cursor, value, min, max);
    // The tokenizer bounds the digits alone; no value of a description may be negative.
    if (ok() && value < min) {
        error = formatText("Expected a value >= %d", min);
    }
    return value;
}

uint32_t Statement::hex(uint32_t min, uint32_t max) {
    uint32_t value = 0;
    PARSE_GetHex(error, cursor, value, min, max);
    return value;
}

std::string Statement::text(size_t limit) {
    std::string value;
    // Read to its end, whatever its length, so that the limit can be named.
    PARSE_GetString(error, cursor, value, longest + 1);
    if (ok() && value.size() > limit) {
        error = formatText("%s: more than %zu characters", key.c_str(), limit);
    }
    return value;
}

std::string Statement::alnum() {
    std::string value;
    PARSE_GetAlnum(error, cursor, value, kMaxWord);
    return value;
}

void Statement::expectTight(char separator) {
    PARSE_Expect(error, cursor, separator);
}

void Statement::expectLoose(char separator) {
    if (ok()) {
        PARSE_SkipBlanks(cursor);
    }
    PARSE_Expect(error, cursor, separator);
}

bool Statement::moreItems() {
    if (!ok()) {
        return false;
    }
    PARSE_SkipBlanks(cursor);
    if (*cursor != ',') {
        return false;
    }
    ++cursor;
    return true;
}

void Statement::checkRoom(size_t count, size_t limit, const char* items) {
    if (ok() && count >= limit) {
        error = formatText("%s: more than %zu %s", key.c_str(), limit, items);
    }
}
