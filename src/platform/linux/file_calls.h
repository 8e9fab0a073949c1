// The system's calls on files. All of the program's go through here, so that a test can count them,
// let any one of them fail and end the process in front of it (FILES_SetCallHook). As the system's
// own they return -1 with errno.
#pragma once

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <functional>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

// Asked in front of each call: 0 lets it through, anything else is the errno that it fails with.
const std::function<int()>& fileCallHook();

template <class Call>
auto fileCall(Call call) -> decltype(call()) {
    if (const auto& hook = fileCallHook(); hook) {
        if (const int error = hook(); error != 0) {
            errno = error;
            return -1;
        }
    }
    return call();
}

namespace filecall {

inline int open(const char* path, int flags, mode_t mode = 0) {
    return fileCall([=] { return ::open(path, flags | O_CLOEXEC, mode); });
}
inline int memfd() {
    return fileCall([] { return ::memfd_create("calvorin", MFD_CLOEXEC); });
}
inline int fstat(int descriptor, struct stat& file) {
    return fileCall([descriptor, &file] { return ::fstat(descriptor, &file); });
}
inline int stat(const char* path, struct stat& file) {
    return fileCall([path, &file] { return ::stat(path, &file); });
}
inline int access(const char* path) { // whether it may be written
    return fileCall([path] { return ::faccessat(AT_FDCWD, path, W_OK, AT_EACCESS); });
}
inline ssize_t read(int descriptor, void* bytes, size_t size) {
    return fileCall([=] { return ::read(descriptor, bytes, size); });
}
inline ssize_t write(int descriptor, const void* bytes, size_t size) {
    return fileCall([=] { return ::write(descriptor, bytes, size); });
}
inline int sync(int descriptor) {
    return fileCall([descriptor] { return ::fsync(descriptor); });
}
inline int close(int descriptor) { // closed also when it fails
    const int closed = ::close(descriptor);
    return fileCall([closed] { return closed; });
}
inline int truncate(int descriptor, off_t size) {
    return fileCall([=] { return ::ftruncate(descriptor, size); });
}
inline int chown(int descriptor, uid_t user, gid_t group) {
    return fileCall([=] { return ::fchown(descriptor, user, group); });
}
inline int chmod(int descriptor, mode_t mode) {
    return fileCall([=] { return ::fchmod(descriptor, mode); });
}
inline int link(const char* from, const char* to) {
    return fileCall([=] { return ::linkat(AT_FDCWD, from, AT_FDCWD, to, AT_SYMLINK_FOLLOW); });
}
inline int rename(const char* from, const char* to) {
    return fileCall([=] { return ::rename(from, to); });
}
inline int unlink(const char* path) {
    return fileCall([=] { return ::unlink(path); });
}
// The error itself and no errno, as the system's call has it.
inline int allocate(int descriptor, off_t size) {
    return fileCall([=] {
               errno = ::posix_fallocate(descriptor, 0, size);
               return errno == 0 ? 0 : -1;
           }) == 0
               ? 0
               : errno;
}

} // namespace filecall
