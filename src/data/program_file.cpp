#include "data/program_file.h"

#include "data/hexdata.h"
#include "data/program_format.h"
#include "notice/error.h"
#include "notice/log.h"
#include "platform/files.h"
#include "platform/format.h"

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

void readRecords(RecordReader& reader, const RecordParser& readRecord) {
    ImageBatch image;
    while (reader.error() == nullptr && !reader.atEndOfData()) {
        readRecord(reader, image);
        reader.takeLineEnd();
        reader.refill();
    }
    image.flush();
}

bool readFile(FileReader& file, const std::filesystem::path& path) {
    RecordReader reader(file);
    reader.refill();
    const ProgramFormat* recognised = PROGRAMFORMAT_Find(
        [&reader](const ProgramFormat& format) { return format.firstCharacter == reader.peek(); });
    if (recognised != nullptr) {
        HEXDATA_SetFileType(recognised->type);
        HEXDATA_ClearAddError();
        readRecords(reader, recognised->startFile());
    } else if (reader.error() == nullptr) {
        report("Can not identify file type");
        return false;
    }
    if (reader.error() == nullptr) {
        if (reader.lacksEndRecord()) {
            LOG_Add("Note: " + path.string() + " has no end record, it may have been cut off");
        }
        return true;
    }
    HEXDATA_Clear(); // no half-read file remains
    const std::string error = formatText("Error in line %d: %s", reader.line(), reader.error());
    report(ERROR_WithReason(error, reader.reason()));
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
    return readFile(file, path);
}

bool PROGRAMFILE_Merge(const std::filesystem::path& path) {
    FileReader file;
    const FileResult opened = file.open(path);
    if (!opened.ok()) {
        reportOpening(path, opened);
        return opened.status == FileStatus::notFound;
    }
    return readFile(file, path);
}

bool PROGRAMFILE_Save(const std::filesystem::path& path, int type) {
    FileReplacer file;
    const FileResult opened = file.open(path);
    if (!opened.ok()) {
        reportOpening(path, opened);
        return false;
    }
    const ProgramFormat* wanted =
        PROGRAMFORMAT_Find([type](const ProgramFormat& format) { return format.type == type; });
    if (wanted == nullptr) {
        report("INTERNAL Error: Unknown file type ...");
        if (!FILES_Exists(path)) { // the name is taken, but no file of the user is emptied
            static_cast<void>(file.commit());
        }
        return false;
    }
    RecordWriter writer([&file](std::string& text) { return file.pass(text); });
    wanted->write(writer, AddressRange::upTo(0, UINT32_MAX));
    FileResult written = writer.finish();
    if (written.ok()) {
        written = file.commit();
    }
    if (!written.ok()) {
        reportFile("Error writing file", path, written);
        return false;
    }
    return true;
}
