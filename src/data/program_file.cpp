#include "data/program_file.h"

#include "data/hexdata.h"
#include "data/program_reader.h"
#include "data/program_writer.h"
#include "notice/error.h"
#include "platform/files.h"
#include "platform/format.h"

#include <optional>

namespace {

void report(const std::string& message) {
    ERROR_Out(nullptr, message, 1);
}

void reportFile(const char* text, const std::filesystem::path& path, const FileResult& result) {
    report(ERROR_WithReason(text, path.string() + ": " + result.reason));
}

void reportOpening(const std::filesystem::path& path, const FileResult& result) {
    reportFile(result.status == FileStatus::notFound ? "File not found"
                                                     : "OnFileOpen: Invalid file handle",
               path, result);
}

int recognise(char first) {
    switch (first) {
    case ':':
        return FILETYPE_INTEL;
    case 'S':
        return FILETYPE_SRECORD;
    default:
        return FILETYPE_NONE;
    }
}

void readRecords(RecordReader& reader, int type) {
    IntelBase base;
    ImageBatch image;
    while (reader.error() == nullptr && !reader.atEndOfData()) {
        if (type == FILETYPE_INTEL) {
            _ReadIntelRecord(reader, base, image);
        } else {
            _ReadSRecord(reader, image);
        }
        reader.takeLineEnd();
        reader.refill();
    }
    image.flush();
}

bool readFile(FileReader& file) {
    RecordReader reader(file);
    reader.refill();
    const int type = recognise(reader.peek());
    if (type != FILETYPE_NONE) {
        HEXDATA_SetFileType(type);
        HEXDATA_ClearAddError();
        readRecords(reader, type);
    } else if (reader.error() == nullptr) {
        report("Can not identify file type");
        return false;
    }
    if (reader.error() == nullptr) {
        return true;
    }
    HEXDATA_Clear(); // no half-read file remains
    report(formatText("Error in line %d: %s", reader.line(), reader.error()));
    return false;
}

} // namespace

bool PROGRAMFILE_Load(const std::filesystem::path& path) {
    FileReader file;
    const FileResult opened = file.open(path);
    if (!opened.ok()) {
        reportOpening(path, opened);
        return false;
    }
    HEXDATA_Clear();
    return readFile(file);
}

bool PROGRAMFILE_Merge(const std::filesystem::path& path) {
    FileReader file;
    const FileResult opened = file.open(path);
    if (!opened.ok()) {
        reportOpening(path, opened);
        return opened.status == FileStatus::notFound;
    }
    return readFile(file);
}

bool PROGRAMFILE_Save(const std::filesystem::path& path, int type) {
    FileReplacer file;
    const FileResult opened = file.open(path);
    if (!opened.ok()) {
        reportOpening(path, opened);
        return false;
    }
    if (type != FILETYPE_INTEL && type != FILETYPE_SRECORD) {
        report("INTERNAL Error: Unknown file type ...");
        if (!FILES_Exists(path)) { // the name is taken, but no file of the user is emptied
            static_cast<void>(file.commit());
        }
        return false;
    }
    RecordWriter writer(file);
    if (type == FILETYPE_INTEL) {
        _WriteIntelHex(writer);
    } else {
        _WriteSRecords(writer);
    }
    if (const FileResult written = writer.finish(); !written.ok()) {
        reportFile("Error writing file", path, written);
        return false;
    }
    return true;
}
