// The formats of program files, one row each: what the rest of the program knows of a format. A new
// one is a source with its reader and its writer, declared here, and a row in program_format.cpp.
#pragma once

#include "data/address_range.h"
#include "data/image_batch.h"
#include "data/record_reader.h"
#include "data/record_writer.h"

#include <functional>
#include <span>
#include <string>
#include <string_view>

enum FileType : int { FILETYPE_NONE = 0, FILETYPE_INTEL = 1, FILETYPE_SRECORD = 2 };

// Reads one record into the image; errors stay in the reader.
using RecordParser = std::function<void(RecordReader& reader, ImageBatch& image)>;

struct ProgramFormat {
    int type;                                          // a FileType
    std::string name;                                  // "Intel Hex file"
    std::string suffix;                                // ".hex", which a written file has
    std::string readPattern;                           // "*.h*", which files that are read may have
    char firstCharacter;                               // by which a file is recognised
    RecordParser (*startFile)();                       // makes the parser of one file
    void (*write)(RecordWriter&, const AddressRange&); // what the image holds of the range
    bool (*isEndRecord)(std::string_view line);        // of a line that is the last of a whole file
};

// In the order in which they are offered.
std::span<const ProgramFormat> PROGRAMFORMAT_All();
// The first that `matches`; nullptr when none does.
const ProgramFormat* PROGRAMFORMAT_Find(const std::function<bool(const ProgramFormat&)>& matches);
// That of a file name, the suffix in either case; nullptr when there is none.
const ProgramFormat* PROGRAMFORMAT_OfName(const std::string& path);
// ".MOT or .HEX"
std::string PROGRAMFORMAT_Suffixes();

RecordParser startIntelHex();
void writeIntelHex(RecordWriter& writer, const AddressRange& range);
bool isIntelEnd(std::string_view line);
// A record with a wrong checksum is used or left out as the user says; an unattended run refuses
// its file but for --accept-damaged, and leaves it out then.
RecordParser startSRecords();
void writeSRecords(RecordWriter& writer, const AddressRange& range);
bool isSRecordEnd(std::string_view line);
