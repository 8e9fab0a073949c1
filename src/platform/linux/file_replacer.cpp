// A file that gets new contents, in one step wherever the system can do that.
//
// What is written goes to a file without a name in the same folder, which gets one when it is
// complete and on the disk: whatever ends the program before leaves nothing behind. Only between
// getting a name of its own and taking the old file's place, one call on, could it stay; the next
// replacement in that folder then removes it. A lock tells a name in use from one left behind.
#include "platform/clock.h"
#include "platform/linux/descriptor_io.h"
#include "platform/linux/file_calls.h"
#include "platform/process.h"
#include "platform/second_buffer.h"

#include <algorithm>
#include <span>
#include <sys/file.h>
#include <utility>

namespace {

namespace fs = std::filesystem;

constexpr int64_t kReaderPollMs = 20; // nothing tells that a pipe has got a reader
constexpr int kMostLinks = 40;        // in a chain, as the system itself has it
constexpr uint64_t kWriteBackPiece = 1U << 20;
constexpr size_t kWorthAThread = 1U << 17; // bytes, many times what starting it costs
constexpr int kMostNames = 1000;           // of temporary files at the same time

bool isAnyOf(int error, std::initializer_list<int> errors) {
    return std::find(errors.begin(), errors.end(), error) != errors.end();
}

// Where the chain of symbolic links ends, also when nothing is there yet.
fs::path withoutLinks(fs::path path) {
    std::error_code error;
    for (int links = 0; links < kMostLinks; ++links) {
        const fs::path target = fs::read_symlink(path, error);
        if (error) {
            break;
        }
        path = path.parent_path() / target;
    }
    return path;
}

// The standard stream that a path like /dev/stdout leads to, -1 for any other file. What the
// stream's other users have written stays only when it is written to, not opened once more or
// replaced.
int standardStream(const struct stat& file) {
    for (const int stream : {STDOUT_FILENO, STDERR_FILENO}) {
        struct stat own {};
        if (filecall::fstat(stream, own) == 0 && own.st_dev == file.st_dev &&
            own.st_ino == file.st_ino) {
            return stream;
        }
    }
    return -1;
}

// Opens a device or a pipe; one without a reader is waited for. -1 with errno.
int openDirectly(const fs::path& path, const struct stat& file) {
    if (const int stream = standardStream(file); stream >= 0) {
        return ::fcntl(stream, F_DUPFD_CLOEXEC, 0);
    }
    while (true) {
        const int descriptor = filecall::open(path.c_str(), O_WRONLY | O_NOCTTY | O_NONBLOCK);
        if (descriptor >= 0) {
            ::fcntl(descriptor, F_SETFL, O_WRONLY);
            return descriptor;
        }
        if (errno != ENXIO || !S_ISFIFO(file.st_mode)) {
            return -1;
        }
        if (CLOCK_Wait(CLOCK_After(kReaderPollMs), PROCESS_IsEnding)) {
            errno = EINTR;
            return -1;
        }
    }
}

fs::path folderOf(const fs::path& path) {
    return path.has_parent_path() ? path.parent_path() : fs::path(".");
}

// Removes a name that a killed process has left. Its lock is held meanwhile, and a name is only
// given where there is none, so that it is still that file which goes.
void removeLeft(const fs::path& name) {
    int left = filecall::open(name.c_str(), O_RDONLY);
    struct stat opened {};
    struct stat named {};
    if (left >= 0 && ::flock(left, LOCK_EX | LOCK_NB) == 0 && filecall::fstat(left, opened) == 0 &&
        filecall::stat(name.c_str(), named) == 0 && opened.st_ino == named.st_ino) {
        filecall::unlink(name.c_str());
    }
    closeDescriptor(left);
}

// Calls `make` with names for a temporary file until one is free; what `make` has returned last.
template <class Make>
int makeNamed(const fs::path& folder, fs::path& name, Make make) {
    int made = -1;
    for (int number = 0; number < kMostNames; ++number) {
        // Short, so that it fits where the longest name does.
        name = folder / (".calvorin-" + std::to_string(number));
        made = make(name.c_str());
        if (made < 0 && errno == EEXIST) {
            removeLeft(name);
            made = make(name.c_str());
        }
        if (made >= 0 || errno != EEXIST) {
            break;
        }
    }
    if (made < 0) {
        name.clear();
    }
    return made;
}

// Makes room for `size` bytes beforehand, so that a full disk shows before the old contents are
// touched.
FileResult reserve(int descriptor, off_t size) {
    struct stat file {};
    filecall::fstat(descriptor, file);
    const int error = size > 0 ? filecall::allocate(descriptor, size) : 0;
    if (isAnyOf(error, {ENOSPC, EDQUOT, EFBIG})) {
        [[maybe_unused]] const int ignored = filecall::truncate(descriptor, file.st_size);
        return fileFailure(error);
    }
    return {};
}

FileResult copyContents(int from, int to) {
    const off_t size = ::lseek(from, 0, SEEK_END);
    FileResult result = reserve(to, size);
    ::lseek(from, 0, SEEK_SET);
    char buffer[65536];
    ssize_t count = 1;
    while (result.ok() && (count = filecall::read(from, buffer, sizeof buffer)) > 0) {
        result = writeAll(to, {buffer, static_cast<size_t>(count)}, false);
    }
    if (!result.ok()) {
        return result;
    }
    const bool written = count == 0 && filecall::truncate(to, size) == 0 && filecall::sync(to) == 0;
    return written ? FileResult{} : fileFailure(errno);
}

// A name is on the disk when its folder is. A folder that may not be read, or a file system that
// has nothing to do for it, is no failure.
FileResult syncFolder(const fs::path& folder) {
    int descriptor = filecall::open(folder.c_str(), O_RDONLY | O_DIRECTORY);
    const bool synced = descriptor < 0 || filecall::sync(descriptor) == 0 ||
                        isAnyOf(errno, {EINVAL, ENOSYS, EOPNOTSUPP, EROFS});
    const int error = errno;
    closeDescriptor(descriptor);
    return synced ? FileResult{} : fileFailure(error);
}

// Whether a file has exactly this content. Devices and pipes are not looked at.
bool holds(const fs::path& path, std::string_view text) {
    std::error_code none;
    std::string content;
    return fs::is_regular_file(path, none) && fs::file_size(path, none) == text.size() &&
           FILES_ReadAll(path, content, text.size()).ok() && content == text;
}

} // namespace

FileReplacer::FileReplacer() = default;

FileReplacer::~FileReplacer() {
    background_.reset();
    closeDescriptor(descriptor_);
    closeDescriptor(inPlace_);
    if (!temporary_.empty()) {
        filecall::unlink(temporary_.c_str());
    }
}

FileResult FileReplacer::open(const fs::path& path, FileAccess access) {
    struct stat old {};
    const bool exists = filecall::stat(path.c_str(), old) == 0;
    if (path.empty() || (!exists && errno != ENOENT)) {
        return fileFailure(path.empty() ? ENOENT : errno);
    }
    if (exists && S_ISDIR(old.st_mode)) {
        return fileFailure(EISDIR);
    }
    if (exists && (!S_ISREG(old.st_mode) || standardStream(old) >= 0)) {
        direct_ = true;
        descriptor_ = openDirectly(path, old);
        return descriptor_ < 0 ? fileFailure(errno) : FileResult{};
    }
    target_ = withoutLinks(path);
    permissions_ = access == FileAccess::ownerOnly ? 0600 : 0666;
    if (!exists) {
        const int error = openTemporary();
        return error == 0 ? FileResult{} : fileFailure(error);
    }
    permissions_ = old.st_mode & (access == FileAccess::ownerOnly ? 0600 : 07777);
    if (filecall::access(target_.c_str()) != 0) {
        return fileFailure(errno); // the folder would let it be replaced, but its owner protects it
    }
    const int error = old.st_nlink > 1 ? 0 : openTemporary();
    if (error != 0 && !isAnyOf(error, {EACCES, EPERM, EROFS})) {
        return fileFailure(error);
    }
    return descriptor_ >= 0 && passesFor(old) ? FileResult{} : openInPlace();
}

// Opens the file that is to replace the other one; 0 or an errno.
int FileReplacer::openTemporary() {
    const fs::path folder = folderOf(target_);
    descriptor_ = filecall::open(folder.c_str(), O_TMPFILE | O_RDWR, permissions_);
    if (descriptor_ < 0 && isAnyOf(errno, {EOPNOTSUPP, EISDIR, EINVAL})) {
        descriptor_ = makeNamed(folder, temporary_, [this](const char* name) {
            return filecall::open(name, O_RDWR | O_CREAT | O_EXCL, permissions_);
        });
    }
    if (descriptor_ < 0) {
        return errno;
    }
    ::flock(descriptor_, LOCK_EX | LOCK_NB); // where the file system has none, so has nobody else
    return 0;
}

// Gives the new file the old one's owner and permissions; false when it may not have them.
bool FileReplacer::passesFor(const struct stat& old) const {
    struct stat own {};
    filecall::fstat(descriptor_, own);
    const bool sameOwner = own.st_uid == old.st_uid && own.st_gid == old.st_gid;
    if (!sameOwner && filecall::chown(descriptor_, old.st_uid, old.st_gid) != 0) {
        return false;
    }
    filecall::chmod(descriptor_, permissions_); // where the file system has such
    return true;
}

// A file that cannot be replaced, or would lose its owner or its other names, keeps its place: it
// gets the new contents when they are complete.
FileResult FileReplacer::openInPlace() {
    inPlace_ = filecall::open(target_.c_str(), O_WRONLY);
    if (inPlace_ < 0) {
        return fileFailure(errno);
    }
    filecall::chmod(inPlace_, permissions_); // refused for another owner's file
    if (descriptor_ < 0) {
        descriptor_ = filecall::memfd();
    }
    return descriptor_ < 0 ? fileFailure(errno) : FileResult{};
}

FileResult FileReplacer::write(std::string_view text) {
    FileResult result = writeAll(descriptor_, text, direct_);
    if (result.ok() && !direct_ && inPlace_ < 0) {
        beginWriteBack(text.size());
    }
    return result;
}

// A device takes its own time, and what fits into one small piece is written at once.
FileResult FileReplacer::pass(std::string& text) {
    if (!background_ && (direct_ || text.size() < kWorthAThread)) {
        return write(text);
    }
    if (!background_) {
        background_ = std::make_unique<SecondBuffer>([this](const std::string& piece) {
            if (passed_.ok()) {
                passed_ = write(piece);
            }
        });
    }
    background_->await();
    if (!passed_.ok()) {
        return passed_;
    }
    background_->exchange(text);
    return {};
}

// The disk begins while the rest is being made, so that the commit waits for less of it. What goes
// wrong shows there.
void FileReplacer::beginWriteBack(size_t count) {
    written_ += count;
    if (written_ - onItsWay_ >= kWriteBackPiece) {
        ::sync_file_range(descriptor_, static_cast<off_t>(onItsWay_),
                          static_cast<off_t>(written_ - onItsWay_), SYNC_FILE_RANGE_WRITE);
        onItsWay_ = written_;
    }
}

FileResult FileReplacer::commit() {
    background_.reset(); // when all of it is written
    FileResult result = passed_;
    if (!result.ok()) {
        return result;
    }
    if (direct_) {
        const int closed = filecall::close(std::exchange(descriptor_, -1));
        return closed == 0 ? FileResult{} : fileFailure(errno);
    }
    if (inPlace_ >= 0) {
        result = copyContents(descriptor_, inPlace_);
    } else {
        result = filecall::sync(descriptor_) == 0 ? takePlace() : fileFailure(errno);
    }
    closeDescriptor(descriptor_);
    return result;
}

// The complete file gets its name, in one step.
FileResult FileReplacer::takePlace() {
    const std::string own = "/proc/self/fd/" + std::to_string(descriptor_);
    const auto link = [&own](const char* name) { return filecall::link(own.c_str(), name); };
    const fs::path folder = folderOf(target_);
    if (temporary_.empty()) {
        if (link(target_.c_str()) == 0) {
            return syncFolder(folder);
        }
        if (errno != EEXIST || makeNamed(folder, temporary_, link) < 0) {
            return fileFailure(errno);
        }
    }
    if (filecall::rename(temporary_.c_str(), target_.c_str()) == 0) {
        temporary_.clear();
        return syncFolder(folder);
    }
    // Another's file in a folder like /tmp, or one that a container has mounted alone.
    if (!isAnyOf(errno, {EACCES, EPERM, EBUSY})) {
        return fileFailure(errno);
    }
    const FileResult opened = openInPlace();
    return opened.ok() ? copyContents(descriptor_, inPlace_) : opened;
}

FileResult FILES_Replace(const fs::path& path, std::string_view text, FileAccess access) {
    if (holds(path, text)) {
        struct stat file {};
        if (access == FileAccess::ownerOnly && filecall::stat(path.c_str(), file) == 0 &&
            (file.st_mode & 077) != 0) {
            ::chmod(path.c_str(), file.st_mode & 0600);
        }
        return {};
    }
    FileReplacer file;
    FileResult result = file.open(path, access);
    if (result.ok()) {
        result = file.write(text);
    }
    return result.ok() ? file.commit() : result;
}
