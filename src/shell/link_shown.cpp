#include "shell/link_shown.h"

#include "link/target_link.h"
#include "link/target_state.h"
#include "serial/sio.h"
#include "shell/session.h"

LinkShown LINKSHOWN_Get() {
    if (SESSION_Get().targetBusy) {
        return LinkShown::busy;
    }
    if (SIO_IsLost()) {
        return LinkShown::lost;
    }
    if (!SIO_IsOpen()) {
        return LinkShown::noPort;
    }
    const int link = TARGET_State().LinkState;
    if (link == LINK_RAMCODE) {
        return LinkShown::loader;
    }
    return link == LINK_BOOTROM || BOOT_IsChipInRom() ? LinkShown::bootRom : LinkShown::portOpen;
}

const char* LINKSHOWN_Text(LinkShown state) {
    switch (state) {
    case LinkShown::noPort:
        return "No port";
    case LinkShown::portOpen:
        return "Port open";
    case LinkShown::bootRom:
        return "Boot ROM";
    case LinkShown::loader:
        return "Loader runs";
    case LinkShown::busy:
        return "Busy";
    case LinkShown::lost:
        break;
    }
    return "Port lost";
}
