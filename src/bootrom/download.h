// Transferring the RAM image into the target's RAM: what both families have in common, and the two
// transfers. User-interface thread, the link in LINK_BOOTROM.
#pragma once

#include "link/failure.h"

#include <functional>
#include <string>

struct LoaderDownload {
    std::function<Result<>(const std::string& text)> accept; // whether the image can be sent
    std::function<Result<>()> handshake;
    std::function<Result<>(bool showProgress)> transfer; // to the boot ROM's acceptance
};

// Gets the loader to run. A progress display that `showProgress` opens is left open.
Result<> _DownloadRamImage(const std::string& path, bool showProgress,
                           const LoaderDownload& family);

Result<> _DownloadTypeA(const std::string& path, bool showProgress);
Result<> _DownloadTypeB(const std::string& path, bool showProgress);
