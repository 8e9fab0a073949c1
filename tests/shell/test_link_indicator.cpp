#include "shell/link_indicator.h"

#include <gtest/gtest.h>

TEST(LinkIndicator, SaysWhatMattersMost) {
    const struct {
        LinkFacts facts; // open, lost, busy, in its boot ROM, loader runs
        const char* text;
    } cases[] = {
        {{false, false, true, true, true}, "No port"},
        {{true, false, false, false, false}, "Port open"},
        {{true, false, false, true, false}, "Chip in its boot ROM"},
        {{true, false, false, true, true}, "Loader running"},
        {{true, false, true, true, true}, "Busy"},
        {{true, true, true, true, true}, "Port lost"},
    };
    for (const auto& one : cases) {
        EXPECT_STREQ(LINKINDICATOR_Text(LINKINDICATOR_Of(one.facts)), one.text);
    }
}
