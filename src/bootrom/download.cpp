#include "bootrom/download.h"

#include "bootrom/handshake.h"
#include "bootrom/ram_image.h"
#include "link/password.h"
#include "link/target_link.h"
#include "notice/error.h"
#include "notice/log.h"
#include "notice/progress.h"
#include "notice/run.h"
#include "platform/clock.h"
#include "platform/format.h"

namespace {

constexpr int kLoaderStartMs = 100;

// An unattended run cannot ask; that it would have had to is said through the question notifier.
Result<> askForPassword() {
    if (RUN_IsUnattended()) {
        ERROR_Ask(nullptr, "A password is needed to connect", "Password", BOX_OK);
        return Failure{};
    }
    PROGRESS_BusyCursor(false);
    const bool given = PASSWORD_Dialog() == ANSWER_OK;
    PROGRESS_BusyCursor(true);
    return given ? Result<>() : Failure{TERR_REPORTED}; // the user knows
}

Result<> passwordReady() {
    return _IsBlank() || PASSWORD_GetLen() != 0 ? Result<>() : askForPassword();
}

Result<LoaderTransfer> loadImage(const BootRomProtocol& family, const std::string& path) {
    std::string text;
    if (!_LoadRamImage(path, text)) {
        return Failure{.reason = "Error reading RAM-Immage file"};
    }
    return family.PrepareImage(text);
}

} // namespace

Result<> _DownloadRamImage(const BootRomProtocol& family, const std::string& path,
                           bool showProgress) {
    RUN_SetExitCode(1);
    if (BOOT_GetState() == BOOT_RAMCODE) {
        _BootReset();
    }
    const Result<LoaderTransfer> transfer = loadImage(family, path);
    if (!transfer) {
        return transfer.error();
    }
    if (showProgress) {
        PROGRESS_Open("Download RAM-Image", nullptr);
    }
    if (Result<> begun = _BootHandshake(family); !begun) {
        return begun;
    }
    if (Result<> ready = passwordReady(); !ready) {
        return ready;
    }
    LOG_Add(formatText("Downloading RAM-Image started: %s", path.c_str()));
    if (Result<> sent = (*transfer)(showProgress); !sent) {
        return sent;
    }
    BOOT_SetState(BOOT_RAMCODE);
    RUN_SetExitCode(0);
    CLOCK_Sleep(kLoaderStartMs);
    return {};
}
