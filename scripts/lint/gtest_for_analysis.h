// What clang-tidy sees in place of the assertions of GoogleTest: the same expressions, evaluated
// once, without the library's machinery, through which the path analyser would follow every
// assertion of a test twice (four fifths of its time in a test file). Read by scripts/tidy.py
// alone; no build uses it.
#pragma once
// As the library's own header: what it instantiates is not the test's fault.
#pragma GCC system_header
#include <gtest/gtest.h>

namespace analysis {
struct Sink {
    explicit Sink(bool) {}
    template <typename T>
    const Sink& operator<<(const T&) const {
        return *this;
    }
};
struct Leave {
    void operator=(const Sink&) const {}
};
template <typename A, typename B>
bool equal(const A& a, const B& b) {
    return a == b;
}
template <typename A, typename B>
bool less(const A& a, const B& b) {
    return a < b;
}
template <typename A, typename B>
bool atMost(const A& a, const B& b) {
    return a <= b;
}
} // namespace analysis

#undef EXPECT_TRUE
#undef EXPECT_FALSE
#undef EXPECT_EQ
#undef EXPECT_NE
#undef EXPECT_LT
#undef EXPECT_LE
#undef EXPECT_GT
#undef EXPECT_GE
#undef ASSERT_TRUE
#undef ASSERT_FALSE
#undef ASSERT_EQ
#undef ASSERT_NE
#define EXPECT_TRUE(a) ::analysis::Sink(static_cast<bool>(a))
#define EXPECT_FALSE(a) ::analysis::Sink(!static_cast<bool>(a))
#define EXPECT_EQ(a, b) ::analysis::Sink(::analysis::equal(a, b))
#define EXPECT_NE(a, b) ::analysis::Sink(!::analysis::equal(a, b))
#define EXPECT_LT(a, b) ::analysis::Sink(::analysis::less(a, b))
#define EXPECT_LE(a, b) ::analysis::Sink(::analysis::atMost(a, b))
#define EXPECT_GT(a, b) ::analysis::Sink(::analysis::less(b, a))
#define EXPECT_GE(a, b) ::analysis::Sink(::analysis::atMost(b, a))
#define ANALYSIS_ASSERT(condition)                                                                 \
    if (condition) {                                                                               \
    } else                                                                                         \
        return ::analysis::Leave() = ::analysis::Sink(false)
#define ASSERT_TRUE(a) ANALYSIS_ASSERT(static_cast<bool>(a))
#define ASSERT_FALSE(a) ANALYSIS_ASSERT(!static_cast<bool>(a))
#define ASSERT_EQ(a, b) ANALYSIS_ASSERT(::analysis::equal(a, b))
#define ASSERT_NE(a, b) ANALYSIS_ASSERT(!::analysis::equal(a, b))
