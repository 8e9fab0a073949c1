#include "data/hex_codec.h"

#include "persist/chars.h"

#include <array>
#include <cstddef>
#include <cstring>
#include <functional>
#include <numeric>

namespace {

// What a character that is no digit counts as: bits that no digit has.
constexpr uint8_t kNoDigit = 0xF0;

constexpr std::array<uint8_t, 256> kDigits = [] {
    std::array<uint8_t, 256> digits{};
    for (size_t c = 0; c < digits.size(); ++c) {
        const int digit = hexDigitValue(static_cast<char>(c));
        digits[c] = digit < 0 ? kNoDigit : static_cast<uint8_t>(digit);
    }
    return digits;
}();

constexpr std::array<std::array<char, 2>, 256> kPairs = [] {
    constexpr char kCharacters[] = "0123456789ABCDEF";
    std::array<std::array<char, 2>, 256> pairs{};
    for (size_t byte = 0; byte < pairs.size(); ++byte) {
        pairs[byte] = {kCharacters[byte >> 4], kCharacters[byte & 0x0F]};
    }
    return pairs;
}();

constexpr size_t kBlock = 16; // bytes
// The compiler's own vectors: it makes of them what the processor has.
using Lanes [[gnu::vector_size(kBlock)]] = uint8_t;

Lanes digitsOf(const char* text) {
    Lanes characters;
    std::memcpy(&characters, text, sizeof characters);
    const Lanes decimal = characters - '0';
    const Lanes letter = (characters | 0x20) - 'a';
    const Lanes none = Lanes{} + kNoDigit;
    return decimal < 10 ? decimal : (letter < 6 ? letter + 10 : none);
}

// One block from 32 characters; `seen` collects the bits of all digits.
Lanes decodeBlock(const char* text, Lanes& seen) {
    const Lanes first = digitsOf(text);
    const Lanes second = digitsOf(text + kBlock);
    seen |= first | second;
    const Lanes high = __builtin_shufflevector(first, second, 0, 2, 4, 6, 8, 10, 12, 14, 16, 18, 20,
                                               22, 24, 26, 28, 30);
    const Lanes low = __builtin_shufflevector(first, second, 1, 3, 5, 7, 9, 11, 13, 15, 17, 19, 21,
                                              23, 25, 27, 29, 31);
    return high << 4 | low;
}

Lanes charactersOf(const Lanes& digits) {
    return digits < 10 ? digits + '0' : digits + ('A' - 10);
}

void encodeBlock(char* text, const Lanes& bytes) {
    const Lanes high = charactersOf(bytes >> 4);
    const Lanes low = charactersOf(bytes & 0x0F);
    const Lanes first =
        __builtin_shufflevector(high, low, 0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23);
    const Lanes second = __builtin_shufflevector(high, low, 8, 24, 9, 25, 10, 26, 11, 27, 12, 28,
                                                 13, 29, 14, 30, 15, 31);
    std::memcpy(text, &first, sizeof first);
    std::memcpy(text + kBlock, &second, sizeof second);
}

template <class Combine>
uint8_t reduce(const Lanes& lanes, const Combine& combine) {
    std::array<uint8_t, kBlock> values;
    std::memcpy(values.data(), &lanes, sizeof lanes);
    return std::accumulate(values.begin(), values.end(), uint8_t{0}, combine);
}

} // namespace

// The sum is kept in a local: the compiler cannot know that no byte written is that of `sum`.
bool decodeHex(const char* text, std::span<uint8_t> bytes, uint8_t& sum) {
    Lanes seenLanes{};
    Lanes sums{};
    const size_t size = bytes.size();
    uint8_t* const to = bytes.data();
    size_t at = 0;
    for (; at + kBlock <= size; at += kBlock) {
        const Lanes block = decodeBlock(text + 2 * at, seenLanes);
        std::memcpy(to + at, &block, sizeof block);
        sums += block;
    }
    uint8_t seen = 0;
    uint8_t total = sum;
    if (at > 0) {
        seen = reduce(seenLanes, std::bit_or<uint8_t>());
        total = static_cast<uint8_t>(total + reduce(sums, std::plus<uint8_t>()));
    }
    for (; at < size; ++at) {
        const uint8_t high = kDigits[static_cast<uint8_t>(text[2 * at])];
        const uint8_t low = kDigits[static_cast<uint8_t>(text[2 * at + 1])];
        seen |= high | low;
        to[at] = static_cast<uint8_t>(high << 4 | low);
        total = static_cast<uint8_t>(total + to[at]);
    }
    sum = total;
    return (seen & kNoDigit) == 0;
}

char* encodeHex(char* text, std::span<const uint8_t> bytes, uint8_t& sum) {
    uint8_t total = sum;
    if (bytes.size() >= kBlock) {
        Lanes sums{};
        for (; bytes.size() >= kBlock; bytes = bytes.subspan(kBlock)) {
            Lanes block;
            std::memcpy(&block, bytes.data(), sizeof block);
            encodeBlock(text, block);
            sums += block;
            text += 2 * kBlock;
        }
        total = static_cast<uint8_t>(total + reduce(sums, std::plus<uint8_t>()));
    }
    for (const uint8_t byte : bytes) {
        std::memcpy(text, kPairs[byte].data(), 2);
        text += 2;
        total = static_cast<uint8_t>(total + byte);
    }
    sum = total;
    return text;
}
