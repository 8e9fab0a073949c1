#include "serial/terminal_history.h"

#include <gtest/gtest.h>

namespace {

using enum TerminalSource;

void add(TerminalSource source, std::string_view bytes) {
    TERMHISTORY_Add(source, {reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size()});
}

TEST(TerminalHistory, KeepsTheOrderAndTheNewestHalfMegabyte) {
    TERMHISTORY_Clear();
    const uint64_t start = TERMHISTORY_Since(UINT64_MAX).end;
    add(received, "> ");
    add(sent, "x\r");
    add(received, "x\r");
    const uint64_t middle = TERMHISTORY_Since(start).end;
    add(received, "\nok\n");
    add(received, "> ");
    TERMHISTORY_Note("lost");
    std::string order;
    for (const TerminalPiece& piece : TERMHISTORY_Since(start).pieces) {
        order += "RSN"[static_cast<int>(piece.source)] + piece.bytes + "|";
    }
    EXPECT_EQ(order, "R> |Sx\r|Rx\r\nok\n|R> |Nlost|");
    EXPECT_EQ(TERMHISTORY_Since(middle).pieces.front().bytes, "\nok\n") << "a piece seen in part";

    const std::string line(39, 'a');
    for (size_t bytes = 0; bytes < 2 * kHistoryBytes; bytes += line.size() + 1) {
        add(received, line + "\n");
    }
    TerminalNews news = TERMHISTORY_Since(start);
    EXPECT_GE(news.end - start - news.missing, kHistoryBytes);
    EXPECT_LE(news.end - start - news.missing, kHistoryBytes + line.size() + 1);
    EXPECT_TRUE(TERMHISTORY_Since(news.end).pieces.empty());
    for (size_t i = 0; i < kHistoryPieces + 10; ++i) {
        add(received, "\n");
    }
    EXPECT_EQ(TERMHISTORY_Since(start).pieces.size(), kHistoryPieces);
    add(received, std::string(kHistoryBytes * 2, 'b'));
    news = TERMHISTORY_Since(start);
    EXPECT_GE(news.end - start - news.missing, kHistoryBytes);
    TERMHISTORY_Clear();
    EXPECT_TRUE(TERMHISTORY_Since(0).pieces.empty());
}

} // namespace
