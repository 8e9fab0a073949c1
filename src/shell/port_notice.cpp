#include "shell/port_notice.h"

#include "link/target_link.h"
#include "link/target_state.h"
#include "notice/hint.h"
#include "notice/log.h"
#include "platform/clock.h"
#include "platform/files.h"
#include "serial/idle_rate.h"
#include "serial/sio.h"
#include "serial/terminal_history.h"
#include "shell/frame_rules.h"

namespace {

constexpr int kTries = 5; // one a second: what plugs a device in may give the right to it later
constexpr int kTryPauseMs = 1000;

bool deviceIsThere = true; // while nothing is wrong
bool lossIsTold = false;   // in the terminal
int triesLeft = 0;
Moment nextTry;

std::string deviceOfPort() {
    return SIO_GetPort() != 0 ? SIO_DeviceOfPort(SIO_GetPort()) : SIO_GetDevice();
}

void tellTerminal() {
    if (SIO_IsLost()) {
        if (!lossIsTold) {
            TERMHISTORY_Note("port lost: " + SIO_GetLoss());
        }
        lossIsTold = true;
    } else if (SIO_IsOpen()) {
        if (lossIsTold) {
            TERMHISTORY_Note("port open again: " + SIO_PortName());
        }
        lossIsTold = false;
    } else if (SIO_GetOpenFailure().empty()) {
        lossIsTold = false; // there is none to be opened
    }
}

// A device that comes or that was lost but is there is tried; one that has gone is let go of, for
// while it is held it comes back under another name.
void chooseTries(bool isNew, bool wasThere) {
    if (deviceIsThere && (!wasThere || isNew)) {
        triesLeft = kTries;
        nextTry = CLOCK_Now();
    } else if (!deviceIsThere) {
        const bool isHeld = SIO_IsLost() && deviceOfPort().starts_with('/');
        triesLeft = isHeld ? 1 : 0;
        nextTry = isHeld ? CLOCK_Now() : nextTry;
    }
}

} // namespace

Notice PORTNOTICE_Get() {
    if (SIO_IsLost()) {
        return {"The port is lost: " + SIO_GetLoss(), HINT_Text({Cause::portGone, SIO_GetLoss()})};
    }
    const std::string failure = SIO_GetOpenFailure();
    if (SIO_IsOpen() || failure.empty()) {
        return {};
    }
    return {"The port is not available: " + failure, HINT_Text(SIO_GetOpenHint())};
}

void PORTNOTICE_TryAgain() {
    if (!FRAMERULES_IsFree()) {
        return;
    }
    TARGET_Disconnect();
    SIO_TolerateOpenFailure(true);
    if (!SIO_Restart()) {
        LOG_Add(SIO_GetOpenFailure());
    }
    SIO_TolerateOpenFailure(false);
}

void PORTNOTICE_Watch() {
    const bool isNew = SIO_IsLost() && !lossIsTold;
    tellTerminal();
    if (FRAMERULES_IsFree() && TARGET_State().LinkState == LINK_IDLE && !BOOT_IsChipInRom()) {
        IDLERATE_Use();
    }
    if (PORTNOTICE_Get() == Notice{}) {
        deviceIsThere = true;
        triesLeft = 0;
        return;
    }
    const bool wasThere = deviceIsThere;
    deviceIsThere = FILES_Exists(deviceOfPort()); // never true of an address on the network
    chooseTries(isNew, wasThere);
    if (triesLeft > 0 && CLOCK_Now() >= nextTry && FRAMERULES_IsFree()) {
        --triesLeft;
        nextTry = CLOCK_After(kTryPauseMs);
        PORTNOTICE_TryAgain();
        tellTerminal();
    }
}
