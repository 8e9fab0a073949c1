// What the link to the chip is in at a glance: one of six states, from what port, boot ROM, loader
// and session say. No windows; whoever shows it chooses colours by the state. User-interface
// thread.
#pragma once

enum class LinkIndicator { noPort, portOpen, inBootRom, loaderRuns, busy, lost };

// What the state is made of.
struct LinkFacts {
    bool portOpen = false;
    bool portLost = false; // a lost port still counts as open
    bool busy = false;     // an operation that was started from the frame runs
    bool chipInRom = false;
    bool loaderRuns = false;
};

LinkFacts LINKINDICATOR_Facts();
// A port that is missing or gone outweighs all that is remembered of the chip behind it.
LinkIndicator LINKINDICATOR_Of(const LinkFacts& facts);
// The state in words, such as "Port open". Never nullptr.
const char* LINKINDICATOR_Text(LinkIndicator state);
