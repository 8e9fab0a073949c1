#include "platform/files.h"

#include "platform/linux/descriptor_io.h"
#include "platform/linux/file_calls.h"

#include <algorithm>
#include <cstdlib>
#include <map>
#include <poll.h>
#include <utility>

namespace {

namespace fs = std::filesystem;

fs::path programPath;          // set by tests; empty: ask the system
std::function<int()> callHook; // set by tests

fs::path ownPath() {
    if (!programPath.empty()) {
        return programPath;
    }
    static const fs::path path = fs::read_symlink("/proc/self/exe");
    return path;
}

// Whether the program is a system's or a user's installation: lib/calvorin/calvorin, with a link
// to it in bin/.
bool isInstalled() {
    const fs::path folder = ownPath().parent_path();
    const fs::path lib = folder.parent_path();
    std::error_code none;
    return folder.filename() == "calvorin" && lib.filename() == "lib" &&
           fs::equivalent(lib.parent_path() / "bin" / ownPath().filename(), ownPath(), none);
}

// A folder of the program's among the user's: below the one that the variable names, else below
// `usual` of his home; empty when he has none.
fs::path userFolder(const char* variable, const char* usual) {
    if (const char* folder = std::getenv(variable); folder != nullptr && *folder == '/') {
        return fs::path(folder) / "calvorin";
    }
    const char* home = std::getenv("HOME");
    return home != nullptr ? fs::path(home) / usual / "calvorin" : fs::path();
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
    descriptor_ = filecall::open(path.c_str(), O_RDONLY | O_NOCTTY | O_NONBLOCK);
    if (descriptor_ < 0) {
        return fileFailure(errno);
    }
    struct stat information {};
    if (filecall::fstat(descriptor_, information) != 0) {
        return fileFailure(errno);
    }
    if (S_ISDIR(information.st_mode)) {
        closeDescriptor(descriptor_);
        return fileFailure(EISDIR);
    }
    size_ = static_cast<uint64_t>(information.st_size);
    return {};
}

ptrdiff_t FileReader::read(std::span<char> buffer) {
    while (true) {
        const ssize_t count = filecall::read(descriptor_, buffer.data(), buffer.size());
        const bool silent = count < 0 && errno == EAGAIN;
        if (silent ? !awaitDescriptor(descriptor_, POLLIN) : count >= 0 || errno != EINTR) {
            error_ = count < 0 ? errno : 0;
            return count;
        }
    }
}

FileResult FileReader::failure() const {
    return error_ != 0 ? fileFailure(error_) : FileResult{};
}

uint64_t FileReader::size() const {
    return size_;
}

AppendFile::~AppendFile() {
    close();
}

FileResult AppendFile::create(const fs::path& path) {
    return openWith(path, O_TRUNC);
}

FileResult AppendFile::open(const fs::path& path) {
    return openWith(path, 0);
}

FileResult AppendFile::openWith(const fs::path& path, int flag) {
    close();
    // Not blocking: a pipe that nobody reads costs the line, not the run.
    descriptor_ = filecall::open(
        path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_NOCTTY | O_NONBLOCK | flag, 0666);
    return descriptor_ < 0 ? fileFailure(errno) : FileResult{};
}

FileResult AppendFile::write(std::string_view text) {
    return isOpen() ? writeAll(descriptor_, text, false) : FileResult{};
}

FileResult AppendFile::flush() {
    return isOpen() && filecall::sync(descriptor_) != 0 ? fileFailure(errno) : FileResult{};
}

void AppendFile::close() {
    closeDescriptor(descriptor_);
}

FileResult FILES_ReadAll(const fs::path& path, std::string& text, size_t most) {
    text.clear();
    FileReader reader;
    if (FileResult result = reader.open(path); !result.ok()) {
        return result;
    }
    if (reader.size() > most) {
        return fileFailure(EFBIG);
    }
    char buffer[16384];
    ptrdiff_t count = 0;
    while ((count = reader.read(buffer)) > 0) {
        if (text.size() + static_cast<size_t>(count) > most) {
            text.clear();
            return fileFailure(EFBIG); // a device has no size and need not have an end
        }
        text.append(buffer, static_cast<size_t>(count));
    }
    return count < 0 ? reader.failure() : FileResult{};
}

std::optional<FileStamp> FILES_Stamp(const fs::path& path) {
    struct stat file {};
    if (filecall::stat(path.c_str(), file) != 0 || !S_ISREG(file.st_mode)) {
        return std::nullopt;
    }
    constexpr int64_t kNsPerSecond = 1'000'000'000;
    return FileStamp{static_cast<uint64_t>(file.st_size),
                     file.st_mtim.tv_sec * kNsPerSecond + file.st_mtim.tv_nsec, file.st_ino};
}

bool FILES_Exists(const fs::path& path) {
    std::error_code none;
    return fs::exists(path, none);
}

bool FILES_IsStream(const fs::path& path) {
    std::error_code none;
    return fs::is_other(path, none);
}

FileResult FILES_Rename(const fs::path& from, const fs::path& to) {
    return filecall::rename(from.c_str(), to.c_str()) != 0 ? fileFailure(errno) : FileResult{};
}

std::optional<int64_t> FILES_WriteTime(const fs::path& path) {
    struct stat information {};
    if (filecall::stat(path.c_str(), information) != 0) {
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

void FILES_SetCallHook(std::function<int()> hook) {
    callHook = std::move(hook);
}

const std::function<int()>& fileCallHook() {
    return callHook;
}

void FILES_SetProgramPath(const fs::path& path) {
    programPath = path;
}

fs::path FILES_UserConfigFolder() {
    return userFolder("XDG_CONFIG_HOME", ".config");
}

bool FILES_IsPortable() {
    return !isInstalled() && ::access(FILES_ProgramFolder().c_str(), W_OK) == 0;
}

std::string FILES_KeptFolder(Kept what) {
    if (FILES_IsPortable()) {
        return FILES_ProgramFolder();
    }
    const fs::path folder = what == Kept::settings ? FILES_UserConfigFolder()
                            : what == Kept::state  ? userFolder("XDG_STATE_HOME", ".local/state")
                                                   : userFolder("XDG_DATA_HOME", ".local/share");
    return folder.empty() ? FILES_ProgramFolder() : folder.string() + "/";
}

void FILES_MakeKeptFolders() {
    for (const Kept what : {Kept::settings, Kept::state}) {
        std::error_code ignored;
        fs::create_directories(FILES_KeptFolder(what), ignored);
    }
}

std::string FILES_KeptFile(Kept what, std::string_view extension) {
    return FILES_KeptFolder(what) + FILES_ProgramBaseName() + "." + std::string(extension);
}

std::string FILES_SharedFile(const std::string& name) {
    const std::string own = FILES_KeptFolder(Kept::data) + name;
    return FILES_Exists(own) ? own : FILES_ProgramFolder() + name;
}

std::vector<fs::path> FILES_ListShared(const std::string& folder, std::string_view extension) {
    std::map<std::string, fs::path> found;
    for (const std::string& place : {FILES_KeptFolder(Kept::data), FILES_ProgramFolder()}) {
        for (const fs::path& path : FILES_List(place + folder, extension)) {
            found.emplace(path.filename(), path);
        }
    }
    std::vector<fs::path> paths;
    paths.reserve(found.size());
    for (const auto& [name, path] : found) {
        paths.push_back(path);
    }
    return paths;
}
