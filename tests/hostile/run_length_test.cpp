// SPDX-License-Identifier: BSD-3-Clause
//
// Coded alpha whose payload lies: about its slices, its rows, its sizes, its runs and its end. Each payload goes to the
// decoder in every order that can hold it, with and without threads.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "box_builder.h"
#include "changed.h"
#include "coded_carriers.h"

namespace {

using namespace hostile;
using namespace test;

const char* const k_short = "rle payload is too short";
const char* const k_malformed = "rle index table is malformed";
const char* const k_exceeds = "rle run exceeds slice";

// Two rows of 0, 1, 2, 3 in 8 bits.
const char* const k_good_payload = "01bffffc6fffff90 dfad54396aa0";
// Two rows of the starting value, of either depth.
bytes plain_payload(uint32_t type) {
    return table({2, 0}, {2, 0}) + from_bits(run_bits(8, type));
}

// In every carrier of the type; a type of 0 stands for both.
void expect_everywhere(const bytes& payload, const std::string& outcome, uint32_t type = 0) {
    prober one(1);
    prober four(4);
    for (const carrier& in : carriers()) {
        if (type == 0 || in.type == type) {
            SCOPED_TRACE(in.name() + ": " + to_hex(payload));
            EXPECT_EQ(in.outcome(one, payload), outcome);
            EXPECT_EQ(in.outcome(four, payload), outcome);
        }
    }
}

// The same with tokens, which differ by the depth.
template <class make_type>
void expect_of_each_depth(make_type make, const std::string& outcome) {
    expect_everywhere(make(1u), outcome, 1);
    expect_everywhere(make(2u), outcome, 2);
}

std::string decoded_8(const bytes& payload, uint8_t fill = k_fill) {
    const bytes stream = single_plane(4, 2, "rl08", payload);
    slot source;
    slot target;
    source.place(stream, guard::behind);
    target.place(8, guard::behind, fill);
    decoder with;
    const frame_params up = frame_record(14, 1, 4, 2);
    EXPECT_EQ(QVRUncompressed_DecodeFrame(with.handle(), &up, source.data(), source.size(), target.data(), 8, nullptr),
              0u);
    return target.to_hex();
}

TEST(run_lengths, that_are_good_come_back_in_every_carrier) {
    expect_everywhere(from_hex(k_good_payload), "ok", 1);
    EXPECT_EQ(decoded_8(from_hex(k_good_payload)), canonical("00010203 00010203"));
    expect_of_each_depth(plain_payload, "ok");
    EXPECT_EQ(decoded_8(plain_payload(1)), canonical("7f7f7f7f 7f7f7f7f"));
}

TEST(run_lengths, of_no_slices_write_nothing) {
    for (const char* payload : {"00", "0000", "00ffffffffffffffffffffffff", "0001020304050607"}) {
        expect_everywhere(from_hex(payload), "ok");
        EXPECT_EQ(decoded_8(from_hex(payload), 0x00), canonical("00000000 00000000"));
        EXPECT_EQ(decoded_8(from_hex(payload), 0xff), canonical("ffffffff ffffffff"));
    }
}

TEST(run_lengths, of_slices_without_rows_write_nothing) {
    expect_everywhere(table({0}, {0}), "ok");
    expect_everywhere(table({0, 0, 0}, {0, 0, 0}), "ok");
    expect_everywhere(table(std::vector<uint32_t>(255), std::vector<uint32_t>(255)), "ok");
    EXPECT_EQ(decoded_8(table({0, 0}, {0, 0}), 0xee), canonical("eeeeeeee eeeeeeee"));
}

TEST(run_lengths, of_fewer_rows_than_the_plane_leave_the_rest) {
    const auto one_row = [](uint32_t type) { return table({2}, {1}) + from_bits(run_bits(4, type)); };
    expect_of_each_depth(one_row, "ok");
    EXPECT_EQ(decoded_8(one_row(1), 0x00), canonical("7f7f7f7f 00000000"));
    EXPECT_EQ(decoded_8(one_row(1), 0xff), canonical("7f7f7f7f ffffffff"));
}

TEST(run_lengths, of_more_rows_than_the_plane_are_refused) {
    const bytes runs = repeat(0x55, 20);
    expect_everywhere(table({2}, {3}) + runs, k_malformed);
    expect_everywhere(table({2, 2}, {1, 2}) + runs, k_malformed);
    expect_everywhere(table({2, 2}, {2, 1}) + runs, k_malformed);
    expect_everywhere(table({2, 2, 2}, {1, 1, 1}) + runs, k_malformed);
    expect_everywhere(table({2}, {0xfffffe}) + runs, k_malformed);
    // What the first difference can reach below zero is a number of 32 bits, and two such sums come round to 2.
    expect_everywhere(table({2}, {0xffffffffu}) + runs, k_malformed);
    expect_everywhere(table({2, 2}, {0xffffffffu, 3}) + runs, k_malformed);
    expect_everywhere(table({2, 2}, {3, 0xffffffffu}) + runs, k_malformed);
}

TEST(run_lengths, with_sizes_past_the_payload) {
    // The size of the last slice tells nothing: there is no slice behind it.
    for (const uint32_t size : {0u, 1u, 3u, 0xfffffeu, 0xffffffffu}) {
        expect_of_each_depth([&](uint32_t type) { return table({size}, {2}) + from_bits(run_bits(8, type)); }, "ok");
    }
    const auto two_slices = [](uint32_t size) {
        return [size](uint32_t type) {
            return table({size, size}, {1, 1}) + from_bits(run_bits(4, type)) + from_bits(run_bits(4, type));
        };
    };
    for (const uint32_t type : {1u, 2u}) {
        const auto true_size = static_cast<uint32_t>(from_bits(run_bits(4, type)).size());
        expect_everywhere(two_slices(true_size)(type), "ok", type);
        // One that starts where the payload ends finds nothing to read.
        expect_everywhere(two_slices(2 * true_size)(type), k_short, type);
        expect_everywhere(two_slices(2 * true_size + 1)(type), k_short, type);
    }
    for (const uint32_t size : {1000u, 0x7fffffu, 0xfffffeu, 0xffffffffu}) {
        expect_of_each_depth(two_slices(size), k_short);
    }
    // Sizes that come round to 1 in 32 bits.
    expect_everywhere(table({0xffffffffu, 2, 0}, {1, 0, 1}) + repeat(0x55, 8), k_short);
    // A slice without rows must start inside the payload all the same.
    expect_everywhere(table({0xfffffe, 0xfffffe}, {0, 0}), k_short);
}

TEST(run_lengths, of_zeros_alone) {
    for (size_t size = 1; size < 40; ++size) {
        expect_everywhere(repeat(0, size), "ok");  // no slices
    }
    for (const size_t size : {size_t{1}, size_t{8}, size_t{20}, size_t{4096}}) {
        expect_everywhere(bytes{1} + repeat(0, size), k_short);  // groups of no length
        expect_everywhere(bytes{255} + repeat(0, size), k_short);
        expect_everywhere(table({1}, {2}) + repeat(0, size), k_short);  // runs of no length
    }
}

TEST(run_lengths, of_ones_alone) {
    for (const size_t size : {size_t{1}, size_t{2}, size_t{8}, size_t{40}, size_t{4096}}) {
        expect_everywhere(repeat(0xff, size), k_short);  // 255 slices, and a prefix without an end
        expect_everywhere(bytes{1} + repeat(0xff, size), k_short);
    }
    // As tokens they are samples, 14 bits each of 8 bits and 18 of 16.
    const bytes start = table({1}, {2});
    expect_everywhere(start + repeat(0xff, 13), k_short, 1);
    expect_everywhere(start + repeat(0xff, 14), "ok", 1);
    expect_everywhere(start + repeat(0xff, 17), k_short, 2);
    expect_everywhere(start + repeat(0xff, 18), "ok", 2);
    EXPECT_EQ(decoded_8(start + repeat(0xff, 14)), canonical("6d4913cb 710587f7"));
}

TEST(run_lengths, that_end_one_past_the_slice_are_refused) {
    const auto runs = [](const std::vector<uint64_t>& lengths) {
        return [lengths](uint32_t type) {
            std::string text;
            for (const uint64_t length : lengths) {
                text += run_bits(length, type);
            }
            return table({1}, {2}) + from_bits(text) + repeat(0, 4);
        };
    };
    expect_of_each_depth(runs({8}), "ok");
    expect_of_each_depth(runs({9}), k_exceeds);
    expect_of_each_depth(runs({7, 1}), "ok");
    expect_of_each_depth(runs({7, 2}), k_exceeds);
    expect_of_each_depth(runs({1, 1, 1, 1, 1, 1, 1, 2}), k_exceeds);
    for (const uint64_t length : {uint64_t{1} << 16, (uint64_t{1} << 31) - 1, uint64_t{1} << 31,
                                  (uint64_t{1} << 32) - 1, uint64_t{1} << 32, (uint64_t{1} << 33) - 1}) {
        expect_of_each_depth(runs({length}), k_exceeds);
        expect_of_each_depth(runs({3, length}), k_exceeds);
    }
}

TEST(run_lengths, that_end_one_past_the_first_of_two_slices_are_refused) {
    const auto slices = [](uint64_t first, uint64_t second) {
        return [first, second](uint32_t type) {
            const bytes one = from_bits(run_bits(first, type));
            return table({static_cast<uint32_t>(one.size()), 0}, {1, 1}) + one + from_bits(run_bits(second, type));
        };
    };
    expect_of_each_depth(slices(4, 4), "ok");
    expect_of_each_depth(slices(5, 4), k_exceeds);
    expect_of_each_depth(slices(4, 5), k_exceeds);
    expect_of_each_depth(slices(5, 5), k_exceeds);
}

TEST(run_lengths, in_groups_past_the_last_value_are_refused) {
    // Three sizes in a group, where one slice was promised.
    const std::string group_of_3 =
        "00000001"
        "011"
        "0"
        "111111111111111111111101";
    expect_everywhere(from_bits(group_of_3) + repeat(0, 20), k_malformed);
    // The same in the row counts.
    const std::string size =
        "00000001"
        "1"
        "0"
        "111111111111111111111101";
    expect_everywhere(from_bits(size + "010"
                                       "0"
                                       "111111111111111111111001") +
                          repeat(0, 20),
                      k_malformed);
    // And a group that is as long as 33 bits can say.
    expect_everywhere(from_bits("00000001" + std::string(32, '0') + std::string(33, '1') + "0") + repeat(0, 20),
                      k_malformed);
}

TEST(run_lengths, cut_at_every_byte_are_refused) {
    prober one(1);
    prober four(4);
    for (const carrier& in : carriers()) {
        const bytes payload = in.type == 1 ? from_hex(k_good_payload) : plain_payload(2);
        for (size_t size = 1; size < payload.size(); ++size) {
            SCOPED_TRACE(in.name() + ", " + std::to_string(size) + " bytes");
            EXPECT_EQ(in.outcome(one, first_bytes(payload, size)), k_short);
            EXPECT_EQ(in.outcome(four, first_bytes(payload, size)), k_short);
            ASSERT_FALSE(testing::Test::HasFailure());
        }
    }
}

// The box goes on saying that all of the payload is there, while the frame and the source end earlier.
TEST(run_lengths, cut_with_the_source_at_every_byte_are_refused) {
    prober with;
    for (const carrier& in : carriers()) {
        const bytes payload = in.type == 1 ? from_hex(k_good_payload) : plain_payload(2);
        const question whole = in.with(payload);
        for (size_t missing = 1; missing < payload.size(); ++missing) {
            SCOPED_TRACE(in.name() + ", " + std::to_string(missing) + " bytes short");
            question cut = whole;
            cut.stream.resize(whole.stream.size() - missing);
            store_32(cut.stream, 0, static_cast<uint32_t>(cut.stream.size()));
            const answers heard = with.ask(cut);
            EXPECT_EQ(in.beside_qcx ? heard.unwrap : heard.decode, k_short);
            ASSERT_FALSE(testing::Test::HasFailure());
        }
    }
}

}  // namespace
