// What the readers of a device description share: the text being read, what was read so far, and
// the values of one statement. A failed read sets the error; the reads behind it then do nothing.
#pragma once

#include "device/device_record.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>

struct Statement {
    std::string key;
    const char* cursor = nullptr;
    size_t longest = 0; // no text can be longer: the size of the whole description
    std::string error;
    DeviceRecord record;
    std::map<std::string, int> lines; // where each key was given last

    bool ok() const { return error.empty(); }
    // Bounds are inclusive; a greater value becomes `max`.
    int32_t dec(int32_t min, int32_t max);
    uint32_t hex(uint32_t min, uint32_t max);
    // A text in double quotes of at most `limit` characters.
    std::string text(size_t limit);
    std::string alnum();
    void expectTight(char separator); // directly behind the value
    void expectLoose(char separator); // blanks may stand before it
    // Whether the list goes on; the comma is passed.
    bool moreItems();
    // Refuses the statement when `count` items are there already and no more may be.
    void checkRoom(size_t count, size_t limit, const char* items);
};

// Reads the value of the statement's key, the cursor standing behind the key.
void readStatementValue(Statement& statement);
