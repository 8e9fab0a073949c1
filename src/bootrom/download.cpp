#include "bootrom/download.h"

#include "bootrom/boot_wire.h"
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
bool askForPassword() {
    if (RUN_IsUnattended()) {
        ERROR_Ask(nullptr, "A password is needed to connect", "Password", BOX_OK);
        return false;
    }
    PROGRESS_BusyCursor(false);
    const bool given = PASSWORD_Dialog() == ANSWER_OK;
    PROGRESS_BusyCursor(true);
    if (!given) {
        _BootNeedsNoReport();
    }
    return given;
}

bool passwordReady() {
    return _IsBlank() || PASSWORD_GetLen() != 0 || askForPassword();
}

bool loadImage(const std::string& path, const LoaderDownload& family) {
    std::string text;
    if (!_LoadRamImage(path, text)) {
        _BootFail("Error reading RAM-Immage file");
        return false;
    }
    return family.accept(text);
}

} // namespace

int _DownloadRamImage(const std::string& path, bool showProgress, const LoaderDownload& family) {
    RUN_SetExitCode(1);
    _BootForgetReports();
    if (BOOT_GetState() == BOOT_RAMCODE) {
        _BootReset();
    }
    if (!loadImage(path, family)) {
        return 0;
    }
    if (showProgress) {
        PROGRESS_Open("Download RAM-Image", nullptr);
    }
    if (family.handshake() != 0 || !passwordReady()) {
        return 0;
    }
    LOG_Add(formatText("Downloading RAM-Image started: %s", path.c_str()));
    BOOT_SetResult(0);
    if (family.transfer(showProgress) != 0) {
        return 0;
    }
    RUN_SetExitCode(BOOT_GetResult() == 1 ? 0 : 1);
    CLOCK_Sleep(kLoaderStartMs);
    return BOOT_GetResult();
}
