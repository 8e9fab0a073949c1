#include "ui/dump_scroll.h"

#include <algorithm>

namespace {

int wantedPosition(const DumpScroll& scroll, ScrollRequest request) {
    const int position = scroll.position;
    switch (request) {
    case ScrollRequest::lineUp:
        return position >= 1 ? position - 1 : position;
    case ScrollRequest::lineDown:
        return position < scroll.maximum ? position + 1 : position;
    case ScrollRequest::pageUp:
        return position >= scroll.page ? position - scroll.page : position;
    case ScrollRequest::pageDown:
        return position <= scroll.maximum - scroll.page ? position + scroll.page : position;
    case ScrollRequest::top:
        return 0;
    case ScrollRequest::bottom:
        return DUMPSCROLL_Last(scroll);
    }
    return position;
}

} // namespace

int DUMPSCROLL_Last(const DumpScroll& scroll) {
    return std::max(scroll.maximum - scroll.page + 1, 0);
}

int DUMPSCROLL_Move(const DumpScroll& scroll, ScrollRequest request) {
    return std::clamp(wantedPosition(scroll, request), 0, DUMPSCROLL_Last(scroll));
}

int DUMPSCROLL_Reveal(const DumpScroll& scroll, int line) {
    const int lowest = std::max(line - scroll.page + 1, 0);
    return std::clamp(std::clamp(scroll.position, lowest, line), 0, DUMPSCROLL_Last(scroll));
}
