// SPDX-License-Identifier: BSD-3-Clause
//
// The token stream of one slice.
#include <gtest/gtest.h>

#include "guarded_buffer.h"
#include "random_source.h"
#include "rle/slice_decoder.h"
#include "rle/slice_encoder.h"
#include "rle_testing.h"

namespace {

using test::bytes;
using test::from_bits;
using test::from_hex;

bytes encoded_8(const bytes& samples, cpu_features features = detected_cpu_features()) {
    bytes out(samples.size() * 11 / 8 + 16);
    const auto width = static_cast<std::uint32_t>(samples.size());
    out.resize(encode_slice<std::uint8_t>({samples.data(), width, 1, width}, out.data(), out.size(),
                                          rle_kernels_for(features)));
    return out;
}

bytes encoded_16(const std::vector<std::uint16_t>& samples) {
    bytes out(samples.size() * 19 / 8 + 16);
    const auto width = static_cast<std::uint32_t>(samples.size());
    out.resize(encode_slice<std::uint16_t>({reinterpret_cast<const std::uint8_t*>(samples.data()), width, 1, 2 * width},
                                           out.data(), out.size(), rle_kernels_for(detected_cpu_features())));
    return out;
}

template <class Sample>
slice_result decode_slice(const std::uint8_t* source, std::size_t size, const slice_rows<std::uint8_t>& rows,
                          cpu_features features = detected_cpu_features()) {
    coded_slice slice = {source, size, rows, slice_result::ok};
    decode_slices<Sample>(&slice, 1, rle_kernels_for(features));
    return slice.result;
}

slice_result decode_8(const bytes& source, bytes& out, std::uint32_t width) {
    out.assign(width, 0xcc);
    return decode_slice<std::uint8_t>(source.data(), source.size(), {out.data(), width, 1, width});
}

TEST(slice, the_worked_example_is_six_tokens) {
    EXPECT_EQ(encoded_8(test::example_plane()), from_hex("df ad 54 39 6a a0"));
    EXPECT_EQ(encoded_8(test::example_plane()), from_bits("1 1 0 11111101"
                                                          "0 1 1 0 10"
                                                          "1 010 1 0 00"
                                                          "0 1 1 10 01"
                                                          "0 1 1 0 10"
                                                          "1 010 1 0 00"));
}

TEST(slice, a_constant_plane_is_two_tokens) {
    // 9 - 127 = -118: a tie of both orders, code 235; then seven samples of nothing new.
    EXPECT_EQ(encoded_8(bytes(8, 9)), from_bits("1 1 0 11101011  0 00111 1 0 00"));
}

TEST(slice, a_plane_of_the_starting_value_is_one_token) {
    EXPECT_EQ(encoded_8(bytes(8, 127)), from_bits("0 0001000 1 0 00"));
    EXPECT_EQ(encoded_16(std::vector<std::uint16_t>(8, 32767)), from_bits("0 0001000 1 0 000000"));
}

TEST(slice, the_rice_form_ends_at_code_20_of_8_bits) {
    // Differences +9 (18), -10 (19) and +10 (20) from the start; the first sample always ties.
    EXPECT_EQ(encoded_8({127 + 9}), from_bits("1 1 1 11110 10"));
    EXPECT_EQ(encoded_8({127 - 10}), from_bits("1 1 1 11110 11"));
    EXPECT_EQ(encoded_8({127 + 10}), from_bits("1 1 0 00010100"));
}

TEST(slice, the_rice_form_ends_at_code_576_of_16_bits) {
    EXPECT_EQ(encoded_16({32767 - 288}), from_bits("1 1 1 111111110 111111"));
    EXPECT_EQ(encoded_16({32767 + 288}), from_bits("1 1 0 0000001001000000"));
}

TEST(slice, differences_wrap_at_the_sample_width) {
    // 127 to 255 is +128, which in 8 bits is -128: code 255.
    EXPECT_EQ(encoded_8({255}), from_bits("1 1 0 11111111"));
    bytes out;
    EXPECT_EQ(decode_8(from_bits("1 1 0 11111111"), out, 1), slice_result::ok);
    EXPECT_EQ(out, bytes{255});
}

TEST(slice, every_feature_subset_gives_the_same_bytes_at_every_length) {
    test::random_source random(21);
    for (std::size_t size = 1; size < 300; ++size) {
        const bytes samples = size % 2 == 0 ? random.runs(size) : random.content(size);
        const test::guarded_buffer source(samples);
        const bytes expected = encoded_8(samples, cpu_scalar);
        for (const unsigned features :
             {cpu_ssse3 | 0u, cpu_ssse3 | cpu_avx2 | 0u, cpu_ssse3 | cpu_avx2 | cpu_avx512 | 0u}) {
            if ((features & detected_cpu_features()) == features) {
                EXPECT_EQ(encoded_8(samples, static_cast<cpu_features>(features)), expected) << size;
            }
        }
        bytes out;
        ASSERT_EQ(decode_8(expected, out, static_cast<std::uint32_t>(size)), slice_result::ok);
        EXPECT_EQ(out, samples) << size;
    }
}

// Rows at odd distances between inaccessible pages, at both sample widths.
template <class Sample>
void round_trip_strided(std::uint32_t width, std::uint32_t rows, std::uint64_t stride) {
    test::random_source random(width * 31 + rows);
    const bytes plane = random.runs(stride * (rows - 1) + width * sizeof(Sample));
    const test::guarded_buffer source(plane);
    bytes compact;
    for (std::uint32_t i = 0; i < rows; ++i) {
        const auto row = plane.begin() + static_cast<std::ptrdiff_t>(i * stride);
        compact.insert(compact.end(), row, row + static_cast<std::ptrdiff_t>(width * sizeof(Sample)));
    }
    const auto& kernels = rle_kernels_for(detected_cpu_features());
    bytes strided(compact.size() * 2 + 64);
    bytes gapless(compact.size() * 2 + 64);
    strided.resize(encode_slice<Sample>({source.data(), width, rows, stride}, strided.data(), strided.size(), kernels));
    gapless.resize(encode_slice<Sample>({compact.data(), width, rows, width * sizeof(Sample)}, gapless.data(),
                                        gapless.size(), kernels));
    EXPECT_EQ(strided, gapless) << width << " x " << rows << ", stride " << stride;

    test::guarded_buffer out(compact.size());
    const test::guarded_buffer payload(strided);
    ASSERT_EQ(decode_slice<Sample>(payload.data(), payload.size(), {out.data(), width, rows, width * sizeof(Sample)}),
              slice_result::ok);
    EXPECT_EQ(out.copy(), compact);
}

TEST(slice, rows_with_gaps_give_the_bytes_of_rows_without) {
    for (const std::uint32_t width : {1u, 2u, 3u, 15u, 16u, 17u, 63u, 64u, 65u, 66u, 127u, 128u, 129u, 200u}) {
        for (const std::uint32_t rows : {1u, 2u, 5u}) {
            for (const std::uint32_t gap : {0u, 1u, 3u, 16u}) {
                round_trip_strided<std::uint8_t>(width, rows, width + gap);
                round_trip_strided<std::uint16_t>(width, rows, 2 * width + gap);
            }
        }
    }
}

TEST(slice, a_token_longer_than_64_bits_is_written_whole) {
    // 1 + 61 + 4 bits.
    const std::uint32_t width = (1u << 30) + 5;
    const test::sparse_buffer zeros(width);  // takes no memory: only read
    bytes out(64);
    out.resize(encode_slice<std::uint8_t>({const_cast<test::sparse_buffer&>(zeros).data(), width, 1, width}, out.data(),
                                          out.size(), rle_kernels_for(detected_cpu_features())));
    // First 0 - 127: code 253, raw; then 2^30 + 4 zeros.
    EXPECT_EQ(out, from_bits("1 1 0 11111101"
                             "0 000000000000000000000000000000 1000000000000000000000000000100 1 0 00"));
}

TEST(slice, tokens_past_the_end_of_the_source_are_refused) {
    const bytes whole = from_hex("df ad 54 39 6a a0");
    for (std::size_t size = 0; size < whole.size(); ++size) {
        const test::guarded_buffer cut(bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)));
        test::guarded_buffer out(8);
        EXPECT_EQ(decode_slice<std::uint8_t>(cut.data(), cut.size(), {out.data(), 8, 1, 8}), slice_result::too_short);
    }
}

TEST(slice, a_run_past_the_last_sample_is_refused_and_not_written) {
    const bytes nine = from_bits("0 0001001 1 0 00");
    test::guarded_buffer out(8, test::guard::behind, 0x55);
    EXPECT_EQ(decode_slice<std::uint8_t>(nine.data(), nine.size(), {out.data(), 8, 1, 8}), slice_result::run_too_long);
    EXPECT_EQ(out.copy(), bytes(8, 0x55));
}

TEST(slice, a_run_past_the_end_whose_token_is_cut_short_is_too_short) {
    const bytes cut = from_bits("0 0001001");
    bytes out;
    EXPECT_EQ(decode_8(cut, out, 8), slice_result::too_short);
}

TEST(slice, a_run_of_length_zero_writes_nothing_and_goes_on) {
    // 32 zeros and 33 bits that are zero as well; then the eight samples.
    const bytes source = from_bits("0" + std::string(65, '0') + "1 0 01" + "0 0001000 1 0 00");
    bytes out;
    EXPECT_EQ(decode_8(source, out, 8), slice_result::ok);
    EXPECT_EQ(out, bytes(8, 127));
}

TEST(slice, a_prefix_of_nine_ones_counts_as_eight) {
    // Eight ones are taken and one bit behind them, here a one as well; then two low bits: 8 x 4 + 3 = 35, -18.
    bytes out;
    EXPECT_EQ(decode_8(from_bits("0 1 1 111111111 11"), out, 1), slice_result::ok);
    EXPECT_EQ(out, bytes{127 - 18});
}

TEST(slice, second_order_runs_bend) {
    // d = +1 on a line: 127 + 0 + 1, then steps of 2 and 3.
    bytes out;
    EXPECT_EQ(decode_8(from_bits("1 011 1 0 10"), out, 3), slice_result::ok);
    EXPECT_EQ(out, (bytes{128, 130, 133}));
}

TEST(slice, a_ramp_goes_on_from_the_last_two_samples) {
    // 128, 129 by first-order steps, then a second-order run without residual, wrapping at 255.
    bytes out;
    EXPECT_EQ(decode_8(from_bits("0 1 1 110 10"), out, 1), slice_result::ok);
    EXPECT_EQ(out, bytes{127 + 5});
    EXPECT_EQ(decode_8(from_bits("0 1 0 01010000  1 00100 1 0 00"), out, 5), slice_result::ok);
    EXPECT_EQ(out, (bytes{167, 207, 247, 31, 71}));
}

}  // namespace
