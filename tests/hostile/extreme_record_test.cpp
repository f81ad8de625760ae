// SPDX-License-Identifier: BSD-3-Clause
//
// Widths, heights and strides of 0, 1, 0x7fffffff, 0x80000000 and 0xffffffff in every record and every stream.
#include <gtest/gtest.h>

#include <vector>

#include "box_builder.h"
#include "changed.h"
#include "encode_probe.h"
#include "good_streams.h"

namespace {

using namespace hostile;
using namespace test;

struct strides {
    uint32_t first;
    uint32_t second;
};

const strides k_strides[] = {{0, 0},           {1, 1},           {0x7fffffffu, 0x7fffffffu}, {0x80000000u, 0x80000000u},
                             {0xffffffffu, 0}, {0, 0xffffffffu}, {0xffffffffu, 0xffffffffu}};

const uint32_t k_component_types[] = {0, 1, 2, 3, 4, 5, 6, 7, 214, 0xffffffffu};

// Calls `ask` with every record of one order.
template <class ask_type>
void for_each_record(uint32_t order, ask_type ask) {
    for (const uint32_t type : k_component_types) {
        for (const uint32_t width : extremes()) {
            for (const uint32_t height : extremes()) {
                for (const strides& stride : k_strides) {
                    SCOPED_TRACE(testing::Message() << "type " << type << ", " << width << " x " << height
                                                    << ", strides " << stride.first << " and " << stride.second);
                    ask(frame_record(order, type, width, height, stride.first, stride.second));
                    ASSERT_FALSE(testing::Test::HasFailure());
                }
            }
        }
    }
}

class extreme_records : public testing::TestWithParam<uint32_t> {};

TEST_P(extreme_records, are_answered_by_the_size_queries) {
    for_each_record(GetParam(), [](const frame_params& up) {
        const model::frame_params frame = to_model(up);
        ASSERT_EQ(QVRUncompressed_GetUncompressedBufSize(&up), model::uncompressed_size(frame));
        for (const stream_params& cp : {raw_alpha(), coded_alpha(0), coded_alpha(255)}) {
            const model::stream_params stream = {cp.alphaCompression, cp.rleSlices};
            ASSERT_EQ(QVRUncompressed_GetCompressedBufSize(&up, &cp), model::compressed_size(frame, stream));
            for (const uint32_t type : {1u, 2u, 3u}) {
                const wrap_params records[] = {wrap_record(type, 0xffffffffu), wrap_record(3, 0xffffffffu)};
                const uint32_t count = type == 1 ? 1 : 2;
                ASSERT_EQ(QVRUncompressed_GetCompressedWrapBufSize(&up, &cp, records, count),
                          model::compressed_wrap_size(frame, stream, {{type, 0xffffffffu}, {3, 0xffffffffu}}, count));
            }
        }
    });
}

TEST_P(extreme_records, have_one_outcome_on_encoding) {
    encode_prober with;
    for_each_record(GetParam(), [&](const frame_params& up) {
        with.ask({up, raw_alpha(), counting(40), 3000, {}, {}});
        with.ask({up, coded_alpha(3), counting(40), 3000, {}, {}});
    });
}

// Only order 14 is wrapped with alpha, its neighbours are refused, and chunks take any order.
class extreme_wrapped_records : public testing::TestWithParam<uint32_t> {};

TEST_P(extreme_wrapped_records, have_one_outcome) {
    encode_prober with;
    for_each_record(GetParam(), [&](const frame_params& up) {
        with.ask({up, raw_alpha(), counting(40), 3000, {wrap_record(1, 45)}, {qcx_frame({1300, 1, 1, false})}});
        with.ask({up, coded_alpha(3), counting(40), 3000, {wrap_record(1, 45)}, {qcx_frame({1300, 1, 1, false})}});
        with.ask({up, raw_alpha(), counting(40), 3000, {wrap_record(3, 2)}, {counting(2)}});
        with.ask({up, raw_alpha(), {}, 3000, {wrap_record(2, 2)}, {counting(2)}});
    });
}

TEST_P(extreme_records, have_one_outcome_on_decoding) {
    prober with;
    std::vector<question> about;
    for (const char* name : {"two_planes", "planar_with_alpha", "coded_alpha_8", "qcx_with_coded_alpha"}) {
        about.push_back(ask_about(good(name), good(name).stream));
    }
    for_each_record(GetParam(), [&](const frame_params& up) {
        const size_t turn = (up.width % 7 + up.height % 5 + up.rowBytes % 3) % about.size();
        about[turn].up = up;
        with.ask(about[turn]);
    });
}

INSTANTIATE_TEST_SUITE_P(order, extreme_wrapped_records, testing::Range(13u, 16u), testing::PrintToStringParamName());
INSTANTIATE_TEST_SUITE_P(order, extreme_records, testing::Range(0u, 18u), testing::PrintToStringParamName());

class extreme_planes : public testing::TestWithParam<std::string> {};

// The fields of one plane's description, of each plane in turn and of all at once.
TEST_P(extreme_planes, have_one_outcome) {
    const good_stream& family = good(GetParam());
    ASSERT_TRUE(proves_good(family));
    prober one(1);
    prober four(4);
    std::vector<size_t> descriptions;
    for (const found_box& box : boxes_of(family.stream)) {
        if (box.type == "sinf") {
            descriptions.push_back(box.offset);
        }
    }
    for (size_t which = 0; which <= descriptions.size(); ++which) {
        for (const uint32_t width : extremes()) {
            for (const uint32_t height : extremes()) {
                SCOPED_TRACE(testing::Message() << "plane " << which << ", " << width << " x " << height);
                bytes stream = family.stream;
                for (size_t i = 0; i < descriptions.size(); ++i) {
                    if (i == which || which == descriptions.size()) {
                        store_32(stream, descriptions[i] + 8, width);
                        store_32(stream, descriptions[i] + 12, height);
                    }
                }
                question asked = ask_about(family, stream);
                one.ask(asked);
                one.ask_trusting(stream);
                asked.up.width = width;
                asked.up.height = height;
                one.ask(asked);
                four.ask(asked);
                ASSERT_FALSE(HasFailure());
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(family, extreme_planes, testing::ValuesIn(family_names()),
                         [](const auto& named) { return named.param; });

TEST(extreme_record, of_any_size_is_told_by_the_first_thing_that_is_wrong_with_it) {
    encode_prober with;
    const auto encoded = [&](const frame_params& up) {
        return with.ask({up, raw_alpha(), counting(40), 3000, {}, {}});
    };
    EXPECT_EQ(encoded(frame_record(1, 1, 0xffffffffu, 1)), "Width must be multiple of 2 for 422 and 420 subsampling");
    EXPECT_EQ(encoded(frame_record(10, 1, 0x80000000u, 0xffffffffu)),
              "Height must be multiple of 2 for 420 subsampling");
    EXPECT_EQ(encoded(frame_record(3, 7, 0xffffffffu, 1, 0xffffffffu)),
              "rowBytes is too small, it should be at least 68719476720 according to uncompressed params");
    EXPECT_EQ(encoded(frame_record(16, 2, 0x80000000u, 1, 0, 0xffffffffu)),
              "rowBytes2 is too small, it should be at least 4294967296 according to uncompressed params");
    EXPECT_EQ(encoded(frame_record(5, 1, 0x7fffffffu, 0x80000000u)), "src size is too small");
    EXPECT_EQ(encoded(frame_record(5, 1, 0, 0xffffffffu)), "ok");
    EXPECT_EQ(encoded(frame_record(5, 1, 0xffffffffu, 0)), "ok");
    EXPECT_EQ(encoded(frame_record(5, 1, 0, 0xffffffffu, 1)), "src size is too small");
    EXPECT_EQ(encoded(frame_record(0, 1, 0xffffffffu, 0xffffffffu)),
              "combination of color component order and component type is not supported");
}

}  // namespace
