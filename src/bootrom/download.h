// Getting the RAM loader to run: handshake, password, transfer. User-interface thread, the link in
// LINK_BOOTROM.
#pragma once

#include "bootrom/family.h"

#include <string>

// A progress display that `showProgress` opens is left open.
Result<> _DownloadRamImage(const BootRomProtocol& family, const std::string& path,
                           bool showProgress);
// What is said of a download that failed without a reason of its own.
std::string downloadFailure();
// What the chip was sent last: "vt-b.s, 1312 bytes sent". Any thread.
std::string loaderSentText();
