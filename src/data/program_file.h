// Program files, in the formats of program_format.h, read into the memory image and written from
// it. The reader is strict: every line is one well-formed record, the first fault ends the reading
// with a message that names the line, and the image is left empty. A hex file without its end
// record is read, and the log notes it. Failures are reported here (ERROR_Out). User-interface
// thread only.
#pragma once

#include <filesystem>

// Replaces the image by the file. False when it could not be read.
[[nodiscard]] bool PROGRAMFILE_Load(const std::filesystem::path& path);
// Adds the file to the image. True also when the file was not found (which is reported).
[[nodiscard]] bool PROGRAMFILE_Merge(const std::filesystem::path& path);
// Writes the whole image, at most 32 data bytes a record; the old file stays when that fails.
// `type` is that of a format. False when anything was reported.
[[nodiscard]] bool PROGRAMFILE_Save(const std::filesystem::path& path, int type);
