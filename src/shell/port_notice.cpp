#include "shell/port_notice.h"

#include "link/target_link.h"
#include "notice/hint.h"
#include "notice/log.h"
#include "platform/files.h"
#include "serial/sio.h"
#include "shell/frame_rules.h"

namespace {

bool deviceIsThere = true; // while nothing is wrong

bool isThere() {
    const std::string device =
        SIO_GetPort() != 0 ? SIO_DeviceOfPort(SIO_GetPort()) : SIO_GetDevice();
    return FILES_Exists(device); // never true of an address on the network
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
    if (!FRAMERULES_MayOpenFile()) {
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
    if (PORTNOTICE_Get() == Notice{}) {
        deviceIsThere = true;
        return;
    }
    const bool wasThere = deviceIsThere;
    deviceIsThere = isThere();
    if (deviceIsThere && !wasThere) {
        PORTNOTICE_TryAgain();
    }
}
