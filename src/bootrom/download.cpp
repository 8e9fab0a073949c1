#include "bootrom/download.h"

#include "bootrom/boot_wire.h"
#include "bootrom/handshake.h"
#include "bootrom/password_choice.h"
#include "bootrom/ram_image.h"
#include "link/password.h"
#include "link/target_link.h"
#include "link/target_state.h"
#include "notice/error.h"
#include "notice/log.h"
#include "notice/progress.h"
#include "notice/run.h"
#include "platform/clock.h"
#include "platform/format.h"
#include "serial/sio.h"
#include "serial/sio_line.h"

#include <mutex>

namespace {

constexpr int kLoaderStartMs = 100;

std::mutex loaderMutex; // of the text
std::string loaderSent;

// An unattended run cannot ask; that it would have had to is said through the question notifier.
Result<> askForPassword() {
    if (RUN_IsQuiet()) {
        ERROR_Ask(nullptr, "A password is needed to connect", "Password", BOX_OK);
        return Failure{.hint = passwordHint()};
    }
    PROGRESS_BusyCursor(false);
    const bool given = PASSWORD_Dialog() == ANSWER_OK;
    PROGRESS_BusyCursor(true);
    return given ? Result<>() : Failure{.hint = passwordHint()};
}

// Sends the loader behind one password after the other, each but the first after a new reset, until
// one is not refused.
Result<> transferWith(const BootRomProtocol& family, const LoaderTransfer& transfer,
                      const std::vector<BootPassword>& passwords, bool showProgress) {
    Result<> sent = Failure{TERR_TIMEOUT};
    for (const BootPassword& password : passwords) {
        if (&password != &passwords.front()) {
            if (!mayBeRefusal(sent.error()) || TARGET_State().Cancel != 0 || bootIsHopeless()) {
                break;
            }
            BOOT_SetState(BOOT_UNSYNCED);
            if (Result<> begun = _BootHandshake(family); !begun) {
                return begun;
            }
        }
        if (password.origin == BootPassword::Origin::image) {
            LOG_Add(
                formatText("Trying the password in the loaded file (%s)", password.places.c_str()));
        }
        const PasswordOffer offer(password);
        sent = transfer(showProgress);
        if (sent) {
            break;
        }
    }
    return sent;
}

Result<LoaderTransfer> loadImage(const BootRomProtocol& family, const std::string& path) {
    const Hint hint = {Cause::ramImage, path};
    std::string text;
    if (!_LoadRamImage(path, text)) {
        return Failure{.reason = "Error reading RAM-Immage file", .hint = hint};
    }
    return withHint(family.PrepareImage(text), hint);
}

void noteSent(const std::string& path, uint64_t bytes) {
    const std::lock_guard lock(loaderMutex);
    loaderSent = formatText("%s, %llu bytes sent", path.substr(path.rfind('/') + 1).c_str(),
                            static_cast<unsigned long long>(bytes));
}

} // namespace

// Where the port is lost, the password has nothing to do with it.
std::string downloadFailure() {
    return std::string("Could not download RAM image") +
           (SIO_IsLost() ? "" : ". Please check password");
}

std::string loaderSentText() {
    const std::lock_guard lock(loaderMutex);
    return loaderSent;
}

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
    std::vector<BootPassword> passwords = passwordsToTry(family);
    if (passwords.empty()) {
        if (Result<> asked = askForPassword(); !asked) {
            return asked;
        }
        passwords = {passwordInForce()};
    }
    LOG_Add(formatText("Downloading RAM-Image started: %s", path.c_str()));
    const uint64_t before = SIO_BytesWritten();
    if (Result<> sent = transferWith(family, *transfer, passwords, showProgress); !sent) {
        return sent;
    }
    noteSent(path, SIO_BytesWritten() - before);
    BOOT_SetState(BOOT_RAMCODE);
    BOOT_SetChipInRom(false);
    RUN_SetExitCode(0);
    CLOCK_Sleep(kLoaderStartMs);
    return {};
}
