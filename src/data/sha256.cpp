#include "data/sha256.h"

#include "platform/format.h"

#include <bit>

namespace {

constexpr size_t kLengthBytes = 8;
constexpr std::array<uint32_t, 64> kRoundConstants = {
    0x428a2f98, 0x71374491, 0xb5c0fbcf, 0xe9b5dba5, 0x3956c25b, 0x59f111f1, 0x923f82a4, 0xab1c5ed5,
    0xd807aa98, 0x12835b01, 0x243185be, 0x550c7dc3, 0x72be5d74, 0x80deb1fe, 0x9bdc06a7, 0xc19bf174,
    0xe49b69c1, 0xefbe4786, 0x0fc19dc6, 0x240ca1cc, 0x2de92c6f, 0x4a7484aa, 0x5cb0a9dc, 0x76f988da,
    0x983e5152, 0xa831c66d, 0xb00327c8, 0xbf597fc7, 0xc6e00bf3, 0xd5a79147, 0x06ca6351, 0x14292967,
    0x27b70a85, 0x2e1b2138, 0x4d2c6dfc, 0x53380d13, 0x650a7354, 0x766a0abb, 0x81c2c92e, 0x92722c85,
    0xa2bfe8a1, 0xa81a664b, 0xc24b8b70, 0xc76c51a3, 0xd192e819, 0xd6990624, 0xf40e3585, 0x106aa070,
    0x19a4c116, 0x1e376c08, 0x2748774c, 0x34b0bcb5, 0x391c0cb3, 0x4ed8aa4a, 0x5b9cca4f, 0x682e6ff3,
    0x748f82ee, 0x78a5636f, 0x84c87814, 0x8cc70208, 0x90befffa, 0xa4506ceb, 0xbef9a3f7, 0xc67178f2};

uint32_t mixed(uint32_t word, int first, int second, int third) {
    return std::rotr(word, first) ^ std::rotr(word, second) ^ std::rotr(word, third);
}

// The 16 words of the block and the 48 that are made of them.
std::array<uint32_t, 64> schedule(std::span<const uint8_t, 64> block) {
    std::array<uint32_t, 64> words{};
    for (size_t i = 0; i < block.size(); ++i) {
        words[i / 4] = words[i / 4] << 8 | block[i];
    }
    for (size_t i = 16; i < words.size(); ++i) {
        const uint32_t early = words[i - 15];
        const uint32_t late = words[i - 2];
        words[i] = words[i - 16] + (std::rotr(early, 7) ^ std::rotr(early, 18) ^ early >> 3) +
                   words[i - 7] + (std::rotr(late, 17) ^ std::rotr(late, 19) ^ late >> 10);
    }
    return words;
}

} // namespace

void Sha256::compress() {
    const std::array<uint32_t, 64> words = schedule(block_);
    auto [a, b, c, d, e, f, g, h] = hash_;
    for (size_t i = 0; i < words.size(); ++i) {
        const uint32_t first =
            h + mixed(e, 6, 11, 25) + ((e & f) ^ (~e & g)) + kRoundConstants[i] + words[i];
        const uint32_t second = mixed(a, 2, 13, 22) + ((a & b) ^ (a & c) ^ (b & c));
        h = g;
        g = f;
        f = e;
        e = d + first;
        d = c;
        c = b;
        b = a;
        a = first + second;
    }
    const std::array<uint32_t, 8> state = {a, b, c, d, e, f, g, h};
    for (size_t i = 0; i < state.size(); ++i) {
        hash_[i] += state[i];
    }
    used_ = 0;
}

void Sha256::put(uint8_t byte) {
    block_[used_++] = byte;
    if (used_ == block_.size()) {
        compress();
    }
}

void Sha256::add(std::span<const char> bytes) {
    for (const char byte : bytes) {
        put(static_cast<uint8_t>(byte));
    }
    bits_ += uint64_t{bytes.size()} * 8;
}

std::string Sha256::finish() {
    put(0x80);
    while (used_ != block_.size() - kLengthBytes) {
        put(0);
    }
    for (int shift = 56; shift >= 0; shift -= 8) {
        put(static_cast<uint8_t>(bits_ >> shift));
    }
    std::string digits;
    for (const uint32_t word : hash_) {
        digits += formatText("%08x", word);
    }
    return digits;
}
