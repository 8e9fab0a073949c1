#include "platform/linux/descriptor_io.h"

#include "platform/linux/descriptor_wait.h"
#include "platform/linux/file_calls.h"
#include "platform/linux/line_limits.h"
#include "platform/process.h"

#include <algorithm>
#include <poll.h>

namespace {

constexpr size_t kPipePiece = 4096; // bytes, that a pipe takes at once when it takes any

} // namespace

FileResult fileFailure(int error) {
    const FileStatus status =
        error == ENOENT || error == ENOTDIR ? FileStatus::notFound : FileStatus::failed;
    return {status, systemText(error)};
}

void closeDescriptor(int& descriptor) {
    if (descriptor >= 0) {
        ::close(descriptor);
        descriptor = -1;
    }
}

bool awaitDescriptor(int descriptor, short events) {
    if (waitDescriptor(descriptor, events, kNever, PROCESS_IsEnding) != 0) {
        return true;
    }
    errno = EINTR;
    return false;
}

FileResult writeAll(int descriptor, std::string_view text, bool waits) {
    while (!text.empty()) {
        if (waits && !awaitDescriptor(descriptor, POLLOUT)) {
            return fileFailure(errno);
        }
        const size_t most = waits ? kPipePiece : text.size();
        const ssize_t written =
            filecall::write(descriptor, text.data(), std::min(text.size(), most));
        if (written < 0 && errno != EINTR) {
            return fileFailure(errno);
        }
        text.remove_prefix(written > 0 ? static_cast<size_t>(written) : 0);
    }
    return {};
}
