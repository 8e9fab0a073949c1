// Where a hex dump moves when it is asked to scroll: arithmetic only, in lines.
#pragma once

enum class ScrollRequest { lineUp, lineDown, pageUp, pageDown, top, bottom };

struct DumpScroll {
    int position = 0; // the line shown at the top
    int page = 1;     // lines that fit into the window, at least 1
    int maximum = 0;  // the last line
};

// The last position: the one at which the last line is the lowest shown. 0 when all lines fit.
int DUMPSCROLL_Last(const DumpScroll& scroll);
// The new position. A page that would pass the start is not taken at all, nor one whose top line
// would lie behind the last line.
int DUMPSCROLL_Move(const DumpScroll& scroll, ScrollRequest request);
// The position, moved as little as possible, at which `line` can be seen.
int DUMPSCROLL_Reveal(const DumpScroll& scroll, int line);
