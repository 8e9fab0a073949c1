#include "shell/link_indicator.h"

#include "link/target_link.h"
#include "link/target_state.h"
#include "serial/sio.h"
#include "shell/session.h"

LinkFacts LINKINDICATOR_Facts() {
    return {.portOpen = SIO_IsOpen(),
            .portLost = SIO_IsLost(),
            .busy = SESSION_Get().targetBusy,
            .chipInRom = BOOT_IsChipInRom(),
            .loaderRuns = TARGET_State().LinkState == LINK_RAMCODE};
}

LinkIndicator LINKINDICATOR_Of(const LinkFacts& facts) {
    if (facts.portLost) {
        return LinkIndicator::lost;
    }
    if (!facts.portOpen) {
        return LinkIndicator::noPort;
    }
    if (facts.busy) {
        return LinkIndicator::busy;
    }
    if (facts.loaderRuns) {
        return LinkIndicator::loaderRuns;
    }
    return facts.chipInRom ? LinkIndicator::inBootRom : LinkIndicator::portOpen;
}

const char* LINKINDICATOR_Text(LinkIndicator state) {
    switch (state) {
    case LinkIndicator::noPort:
        return "No port";
    case LinkIndicator::portOpen:
        return "Port open";
    case LinkIndicator::inBootRom:
        return "Chip in its boot ROM";
    case LinkIndicator::loaderRuns:
        return "Loader running";
    case LinkIndicator::busy:
        return "Busy";
    case LinkIndicator::lost:
        return "Port lost";
    }
    return "";
}
