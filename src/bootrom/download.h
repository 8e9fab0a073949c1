// Transferring the RAM image into the target's RAM: what both families have in common, and the two
// transfers. User-interface thread, the link in LINK_BOOTROM.
#pragma once

#include <functional>
#include <string>

struct LoaderDownload {
    std::function<bool(const std::string& text)> accept; // whether the image can be sent; reports
    std::function<int()> handshake;                      // 0 done
    std::function<int(bool showProgress)> transfer;      // 0 accepted by the boot ROM
};

// 1: the loader runs; 0: failed, reported unless the reason is silent. A progress display that
// `showProgress` opens is left open.
int _DownloadRamImage(const std::string& path, bool showProgress, const LoaderDownload& family);

int _DownloadTypeA(const std::string& path, bool showProgress);
int _DownloadTypeB(const std::string& path, bool showProgress);
