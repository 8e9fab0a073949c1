#include "serial/poll_fold.h"

#include <gtest/gtest.h>

// What is written of entries; "(" and ")" begin and end a poll, "!" writes what is known, "x" comes
// from somebody else, "+" lets five seconds pass. Every entry takes a millisecond.
TEST(PollFold, WritesWhatIsNewAndCountsTheRest) {
    const std::pair<const char*, const char*> cases[] = {
        {"(ab)(ab)(ab)!", "a0 b1 [2/4]5"},
        {"(ab)(ab)(ac)(ac)!", "a0 b1 [1/2]3 a4 c5 [1/2]7"},             // another answer
        {"(ab)(ab)(a)(ab)", "a0 b1 [1/2]3 a4 a5 b6"},                   // none
        {"(ab)(ab)x(ab)(ab)!", "a0 b1 [1/2]3 x4 a5 b6 [1/2]8"},         // between
        {"(ab)(axb)(ab)", "a0 b1 a2 x3 b4 a5 b6"},                      // within
        {"(ab)(ab)(a!b)(ab)!", "a0 b1 [1/2]3 a4 b5 [1/2]7"},            // written within
        {"(ab)(ab)+(ab)+(ab)(ab)!", "a0 b1 [3/10006]10007 [1/2]10009"}, // not for ever
        {"ab(cd)ab!", "a0 b1 c2 d3 a4 b5"},
        {"!()", ""},
    };
    for (const auto& [script, written] : cases) {
        PollFold fold;
        std::vector<LogEntry> out;
        uint32_t now = 0;
        bool poll = false;
        for (const char c : std::string(script)) {
            if (c == '(') {
                fold.beginPoll();
                poll = true;
            } else if (c == ')') {
                fold.endPoll(now == 0 ? 0 : now - 1, out);
                poll = false;
            } else if (c == '!') {
                fold.flush(out);
            } else if (c == '+') {
                now += 5000;
            } else {
                fold.take({now++, std::string(1, c)}, poll && c != 'x', out);
            }
        }
        std::string text;
        for (const LogEntry& entry : out) {
            unsigned lines = 0;
            unsigned times = 0;
            unsigned span = 0;
            const bool counted = std::sscanf(entry.text.c_str(),
                                             "           The %u lines above came %u times more "
                                             "within %u ms",
                                             &lines, &times, &span) == 3;
            EXPECT_TRUE(!counted || lines == 2);
            text += (text.empty() ? "" : " ") +
                    (counted ? "[" + std::to_string(times) + "/" + std::to_string(span + 1) + "]"
                             : entry.text) +
                    std::to_string(entry.atMs);
        }
        EXPECT_EQ(text, written) << script;
    }
}
