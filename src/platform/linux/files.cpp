#include "platform/files.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace {

namespace fs = std::filesystem;

fs::path programPath; // set by tests; empty: ask the system

FileResult failure(int error) {
    const FileStatus status =
        error == ENOENT || error == ENOTDIR ? FileStatus::notFound : FileStatus::failed;
    return {status, std::strerror(error)};
}

fs::path ownPath() {
    if (!programPath.empty()) {
        return programPath;
    }
    static const fs::path path = fs::read_symlink("/proc/self/exe");
    return path;
}

// The whole text or the error: a short write is continued, a signal does not count.
FileResult writeAll(int descriptor, std::string_view text) {
    while (!text.empty()) {
        const ssize_t written = ::write(descriptor, text.data(), text.size());
        if (written < 0 && errno != EINTR) {
            return failure(errno);
        }
        text.remove_prefix(written > 0 ? static_cast<size_t>(written) : 0);
    }
    return {};
}

void closeDescriptor(int& descriptor) {
    if (descriptor >= 0) {
        ::close(descriptor);
        descriptor = -1;
    }
}

// The permissions of the file that is replaced, else those that a new file gets.
mode_t permissionsFor(const fs::path& target) {
    struct stat information {};
    if (::stat(target.c_str(), &information) == 0) {
        return information.st_mode & 07777;
    }
    const mode_t mask = ::umask(0);
    ::umask(mask);
    return 0666 & ~mask;
}

// Whether a file has exactly this content. Devices and pipes have no size, so that none is read.
bool holds(const fs::path& path, std::string_view text) {
    FileReader reader;
    if (!reader.open(path).ok() || reader.size() != text.size()) {
        return false;
    }
    std::string content;
    return FILES_ReadAll(path, content).ok() && content == text;
}

} // namespace

FileReader::FileReader(FileReader&& other) noexcept
    : descriptor_(std::exchange(other.descriptor_, -1)), size_(other.size_) {
}

FileReader& FileReader::operator=(FileReader&& other) noexcept {
    std::swap(descriptor_, other.descriptor_);
    std::swap(size_, other.size_);
    return *this;
}

FileReader::~FileReader() {
    closeDescriptor(descriptor_);
}

FileResult FileReader::open(const fs::path& path) {
    closeDescriptor(descriptor_);
    // Not blocking, so that a pipe without a writer is an empty file and not a wait without end.
    descriptor_ = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK);
    if (descriptor_ < 0) {
        return failure(errno);
    }
    ::fcntl(descriptor_, F_SETFL, O_RDONLY);
    struct stat information {};
    if (::fstat(descriptor_, &information) != 0) {
        return failure(errno);
    }
    if (S_ISDIR(information.st_mode)) {
        closeDescriptor(descriptor_);
        return failure(EISDIR);
    }
    size_ = static_cast<uint64_t>(information.st_size);
    return {};
}

ptrdiff_t FileReader::read(std::span<char> buffer) {
    ssize_t count = 0;
    do {
        count = ::read(descriptor_, buffer.data(), buffer.size());
    } while (count < 0 && errno == EINTR);
    return count;
}

uint64_t FileReader::size() const {
    return size_;
}

FileReplacer::~FileReplacer() {
    closeDescriptor(descriptor_);
    if (!temporary_.empty()) {
        ::unlink(temporary_.c_str());
    }
}

FileResult FileReplacer::open(const fs::path& path) {
    std::error_code none;
    target_ = fs::is_symlink(path, none) ? fs::weakly_canonical(path, none) : path;
    if (fs::is_directory(target_, none)) {
        return failure(EISDIR);
    }
    if (fs::is_other(target_, none)) { // a device or a pipe is written to, not replaced
        descriptor_ = ::open(target_.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY);
        return descriptor_ < 0 ? failure(errno) : FileResult{};
    }
    if (::faccessat(AT_FDCWD, target_.c_str(), W_OK, AT_EACCESS) != 0 && errno != ENOENT) {
        return failure(errno); // the folder would let it be replaced, but its owner protects it
    }
    std::string name = target_.string() + ".XXXXXX";
    descriptor_ = ::mkostemp(name.data(), O_CLOEXEC);
    if (descriptor_ < 0) {
        return failure(errno);
    }
    temporary_ = name;
    ::fchmod(descriptor_, permissionsFor(target_));
    return {};
}

FileResult FileReplacer::write(std::string_view text) {
    return writeAll(descriptor_, text);
}

FileResult FileReplacer::commit() {
    const int closed = ::close(std::exchange(descriptor_, -1)); // a full disk may show only here
    const bool replaces = !temporary_.empty();
    if (closed != 0 || (replaces && ::rename(temporary_.c_str(), target_.c_str()) != 0)) {
        return failure(errno);
    }
    temporary_.clear();
    return {};
}

AppendFile::~AppendFile() {
    close();
}

FileResult AppendFile::create(const fs::path& path) {
    close();
    descriptor_ = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_APPEND | O_CLOEXEC, 0666);
    return descriptor_ < 0 ? failure(errno) : FileResult{};
}

FileResult AppendFile::write(std::string_view text) {
    return isOpen() ? writeAll(descriptor_, text) : FileResult{};
}

FileResult AppendFile::flush() {
    return isOpen() && ::fsync(descriptor_) != 0 ? failure(errno) : FileResult{};
}

void AppendFile::close() {
    closeDescriptor(descriptor_);
}

FileResult FILES_ReadAll(const fs::path& path, std::string& text) {
    text.clear();
    FileReader reader;
    if (FileResult result = reader.open(path); !result.ok()) {
        return result;
    }
    char buffer[16384];
    ptrdiff_t count = 0;
    while ((count = reader.read(buffer)) > 0) {
        text.append(buffer, static_cast<size_t>(count));
    }
    return count < 0 ? failure(errno) : FileResult{};
}

FileResult FILES_Replace(const fs::path& path, std::string_view text) {
    if (holds(path, text)) {
        return {};
    }
    FileReplacer file;
    FileResult result = file.open(path);
    if (result.ok()) {
        result = file.write(text);
    }
    return result.ok() ? file.commit() : result;
}

bool FILES_Exists(const fs::path& path) {
    std::error_code none;
    return fs::exists(path, none);
}

FileResult FILES_Rename(const fs::path& from, const fs::path& to) {
    return ::rename(from.c_str(), to.c_str()) != 0 ? failure(errno) : FileResult{};
}

std::optional<int64_t> FILES_WriteTime(const fs::path& path) {
    struct stat information {};
    if (::stat(path.c_str(), &information) != 0) {
        return std::nullopt;
    }
    return information.st_mtim.tv_sec * int64_t{1'000'000'000} + information.st_mtim.tv_nsec;
}

std::vector<fs::path> FILES_List(const fs::path& folder, std::string_view extension) {
    std::vector<fs::path> found;
    std::error_code error;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
        if (entry->path().extension() == extension) {
            found.push_back(entry->path());
        }
    }
    std::sort(found.begin(), found.end());
    return found;
}

std::string FILES_ProgramFolder() {
    return ownPath().parent_path().string() + "/";
}

std::string FILES_ProgramBaseName() {
    return ownPath().stem().string();
}

std::string FILES_BesideProgram(std::string_view extension) {
    return FILES_ProgramFolder() + FILES_ProgramBaseName() + "." + std::string(extension);
}

void FILES_SetProgramPath(const fs::path& path) {
    programPath = path;
}

fs::path FILES_UserConfigFolder() {
    if (const char* folder = std::getenv("XDG_CONFIG_HOME"); folder != nullptr && *folder == '/') {
        return fs::path(folder) / "calvorin";
    }
    const char* home = std::getenv("HOME");
    return home != nullptr ? fs::path(home) / ".config" / "calvorin" : fs::path();
}
