// SPDX-License-Identifier: BSD-3-Clause
//
// Every bit of coded payloads turned, every byte replaced, and index tables of any sizes and rows, against the model.
#include <gtest/gtest.h>

#include <vector>

#include "coded_carriers.h"
#include "random_source.h"

namespace {

using namespace hostile;
using namespace test;

// Two slices with tokens of both orders, both forms and several lengths.
bytes rich_payload(uint32_t type) {
    const bytes samples_8 = {0, 1, 2, 3, 200, 200, 200, 201};
    const bytes samples_16 = {0, 0, 1, 0, 2, 0, 3, 0, 0, 200, 0, 200, 0, 200, 1, 200};
    const model::rle_params params = {4, 2, type == 1 ? 8u : 16u, 2, 0};
    return model::rle_encode(params, view_of(type == 1 ? samples_8 : samples_16), 100000);
}

class coded_payloads : public testing::TestWithParam<size_t> {
  protected:
    const carrier& in_ = carriers()[GetParam()];
    prober one_{1};
    prober four_{4};
};

TEST_P(coded_payloads, with_any_bit_turned_have_one_outcome) {
    bytes payload = rich_payload(in_.type);
    ASSERT_EQ(in_.outcome(one_, payload), "ok");
    for (size_t bit = 0; bit < payload.size() * 8; ++bit) {
        SCOPED_TRACE(testing::Message() << in_.name() << ", bit " << bit);
        const auto mask = static_cast<uint8_t>(0x80u >> (bit % 8));
        payload[bit / 8] = static_cast<uint8_t>(payload[bit / 8] ^ mask);
        ASSERT_EQ(in_.outcome(one_, payload), in_.outcome(four_, payload));
        payload[bit / 8] = static_cast<uint8_t>(payload[bit / 8] ^ mask);
        ASSERT_FALSE(HasFailure());
    }
}

TEST_P(coded_payloads, with_any_byte_replaced_have_one_outcome) {
    const bytes payload = rich_payload(in_.type);
    for (size_t at = 0; at < payload.size(); ++at) {
        for (const uint8_t value : {uint8_t{0x00}, uint8_t{0x01}, uint8_t{0x7f}, uint8_t{0x80}, uint8_t{0xff}}) {
            SCOPED_TRACE(testing::Message() << in_.name() << ", byte " << at << ": " << int{value});
            bytes changed = payload;
            changed[at] = value;
            in_.outcome(one_, changed);
            changed.resize(at + 1);  // and nothing behind it
            in_.outcome(one_, changed);
            ASSERT_FALSE(HasFailure());
        }
    }
}

TEST_P(coded_payloads, of_random_bits_behind_a_good_table_have_one_outcome) {
    random_source random(GetParam());
    for (int round = 0; round < 150; ++round) {
        const bytes payload = table({random.below(9), random.below(9)}, {random.below(3), random.below(2)}) +
                              random.content(random.below(24));
        SCOPED_TRACE(in_.name() + ": " + to_hex(payload));
        ASSERT_EQ(in_.outcome(one_, payload), in_.outcome(four_, payload));
        ASSERT_FALSE(HasFailure());
    }
}

TEST_P(coded_payloads, with_tables_of_any_sizes_and_rows_have_one_outcome) {
    const uint32_t sizes[] = {0, 2, 3, 4, 5, 8, 9, 0x7fffff, 0xfffffe, 0xffffffffu};
    const uint32_t rows[] = {0, 1, 2, 3, 0xfffffe, 0xffffffffu};
    const bytes slices = from_bits(run_bits(4, in_.type)) + from_bits(run_bits(4, in_.type)) + repeat(0x5a, 3);
    for (const uint32_t size : sizes) {
        for (const uint32_t size2 : sizes) {
            for (const uint32_t row : rows) {
                for (const uint32_t row2 : rows) {
                    if (fits_table({size, size2}) && fits_table({row, row2})) {
                        SCOPED_TRACE(testing::Message() << in_.name() << ", sizes " << size << " and " << size2
                                                        << ", rows " << row << " and " << row2);
                        in_.outcome(one_, table({size, size2}, {row, row2}) + slices);
                        ASSERT_FALSE(HasFailure());
                    }
                }
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(carrier, coded_payloads, testing::Range(size_t{0}, carriers().size(), size_t{3}),
                         testing::PrintToStringParamName());

}  // namespace
