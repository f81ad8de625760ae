// SPDX-License-Identifier: BSD-3-Clause
//
// The goals, all of them. One thread unless a row says otherwise; allocations are those of two threads as well.
#include "goals.h"

namespace bench {

namespace {

constexpr decided_by k_worst = decided_by::smallest;
constexpr decided_by k_mean = decided_by::geometric_mean;
constexpr decided_by k_most = decided_by::largest;
constexpr double k_none = -1;

}  // namespace

const std::vector<goal>& all_goals() {
    static const std::vector<goal> rows = {
        // clang-format off
        // Pairs of order and type beside memcpy                                                      1080  2160
        {"8 bits, alpha interleaved: encode", "pairs/encode/(3|4|7|8|12)-\\w+/1-U8", "memcpy", k_worst, 0.75, 1.15},
        {"8 bits, alpha interleaved: decode", "pairs/decode/(3|4|7|8|12)-\\w+/1-U8", "memcpy", k_worst, 0.95, 1.0},
        {"8 bits, orders 1, 6, 15", "pairs/(en|de)code/(1|6|15)-\\w+/1-U8", "memcpy", k_worst, 0.9, 0.95},
        {"8 bits, orders 1, 6, 15, beside libyuv", "libyuv/(en|de)code/(1|6|15)-\\w+/1-U8", "libyuv", k_worst, 1.0, 1.0},
        {"stored as they are, orders 2, 5, 9, 10, 13, 14, 16", "pairs/(en|de)code/(2|5|9|10|13|14|16)-\\w+/(1|2|6|7|214)-\\w+", "memcpy", k_worst, 0.95, 0.95},
        {"types 3 and 4 narrowed, orders 2, 5", "pairs/encode/(2|5)-\\w+/(3|4)-\\w+", "memcpy", k_worst, 0.7, 0.85},
        {"the same with SSSE3 alone", "instruction-sets/ssse3/encode/(2|5)-\\w+/(3|4)-\\w+", "memcpy", k_worst, 0.6, 0.7},
        {"types 3 and 4 widened, orders 2, 5", "pairs/decode/(2|5)-\\w+/(3|4)-\\w+", "memcpy", k_worst, 0.6, 0.65},
        {"types 3 and 4, alpha interleaved: encode", "pairs/encode/(3|4|7|8|11|12)-\\w+/(3|4)-\\w+", "memcpy", k_worst, 0.75, 0.88},
        {"type 5 narrowed", "pairs/encode/2-\\w+/5-\\w+", "memcpy", k_worst, 0.6, 0.75},
        {"type 5 widened", "pairs/decode/2-\\w+/5-\\w+", "memcpy", k_worst, 0.5, 0.5},
        {"fixed point stored", "pairs/encode/(2|5|9)-\\w+/214-\\w+", "memcpy", k_worst, 0.9, 0.95},
        {"fixed point decoded as float", "pairs/decode-as-float/(2|5|9)-.*", "memcpy", k_worst, 0.9, 0.95},
        {"mean of all pairs: encode", "pairs/encode/.*", "memcpy", k_mean, 0.85, 0.95},
        {"mean of all pairs: decode", "pairs/decode/.*", "memcpy", k_mean, 0.8, 0.9},
        {"worst of all pairs", "pairs/(en|de)code/.*", "memcpy", k_worst, 0.5, 0.5},

        // Coded alpha, encoding
        {"circle, title, hair, 8 bits: encode", "alpha/encode/(circle|title|hair)/8-bit", "lz4", k_worst, 1.5, 1.5},
        {"circle, title, hair, 8 bits: encode", "alpha/encode/(circle|title|hair)/8-bit", "zstd-1", k_worst, 2.0, 2.0},
        {"circle, title, hair, 16 bits: encode", "alpha/encode/(circle|title|hair)/16-bit", "lz4", k_worst, 1.0, 1.0},
        {"circle, title, hair, 16 bits: encode", "alpha/encode/(circle|title|hair)/16-bit", "zstd-1", k_worst, 2.0, 2.0},
        {"solid: encode", "alpha/encode/solid/.*", "lz4", k_worst, 2.5, 2.5},
        {"lower third: encode", "alpha/encode/lower-third/.*", "lz4", k_worst, 1.2, 1.2},
        {"noisy key, 8 bits: encode", "alpha/encode/noisy-key/8-bit", "lz4", k_worst, 1.5, 1.5},
        {"noisy key, 16 bits: encode", "alpha/encode/noisy-key/16-bit", "lz4", k_worst, 0.4, 0.4},

        // Coded alpha, decoding
        {"circle, 8 bits: decode", "alpha/decode/circle/8-bit", "lz4", k_worst, 0.3, 0.3},
        {"title, 8 bits: decode", "alpha/decode/title/8-bit", "lz4", k_worst, 0.4, 0.4},
        {"hair, 8 bits: decode", "alpha/decode/hair/8-bit", "lz4", k_worst, 0.2, 0.2},
        {"circle, 16 bits: decode", "alpha/decode/circle/16-bit", "lz4", k_worst, 0.22, 0.22},
        {"title, 16 bits: decode", "alpha/decode/title/16-bit", "lz4", k_worst, 0.3, 0.3},
        {"hair, 16 bits: decode", "alpha/decode/hair/16-bit", "lz4", k_worst, 0.3, 0.3},
        {"circle, title, hair: G tokens a second", "alpha/decode/(circle|title|hair)/.*", "tokens a second", k_worst, 0.5, 0.5},
        {"solid: decode", "alpha/decode/solid/.*", "lz4", k_worst, 3.0, 3.0},
        {"lower third, 8 bits: decode", "alpha/decode/lower-third/8-bit", "lz4", k_worst, 0.45, 0.45},
        {"lower third, 16 bits: decode", "alpha/decode/lower-third/16-bit", "lz4", k_worst, 0.8, 0.8},

        // Threads and memory
        {"two threads, types 3 to 5", "threads/(en|de)code/[^/]+/[345]-\\w+", "2 threads / 1", k_worst, k_none, 1.7},
        {"two threads, coded alpha", "threads/(en|de)code/coded-alpha/.*", "2 threads / 1", k_worst, k_none, 1.7},
        {"allocations a call, at most", "allocations/.*", "allocations.*", k_most, 0, k_none},
        // clang-format on
    };
    return rows;
}

}  // namespace bench
