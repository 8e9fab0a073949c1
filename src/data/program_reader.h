// One record of each program file format, read into the memory image.
#pragma once

#include "data/image_batch.h"
#include "data/record_reader.h"

#include <cstdint>

// Where the data records of an Intel HEX file stand: both kinds of address record add up.
struct IntelBase {
    uint32_t linear = 0;
    uint32_t segment = 0;
};

// Errors stay in the reader.
void _ReadIntelRecord(RecordReader& reader, IntelBase& base, ImageBatch& image);
// A record with a wrong checksum is used or left out as the user says.
void _ReadSRecord(RecordReader& reader, ImageBatch& image);
