// SPDX-License-Identifier: BSD-3-Clause
//
// Wrapping one compressed frame beside an alpha plane, and its checks in their order.
#include <gtest/gtest.h>

#include <string>

#include "box_builder.h"
#include "codec.h"
#include "guarded_buffer.h"

namespace {

using namespace test;

const bytes k_alpha = counting(8, 1);

class qcx_wrapping : public testing::Test {
  protected:
    outcome try_wrap(const frame_params& up, const bytes& qcx, const bytes* src = &k_alpha) {
        return wrap(encoder_, up, raw_alpha(), {wrap_record(1, static_cast<uint32_t>(qcx.size()))}, {qcx}, src, 8192);
    }

    encoder encoder_;
};

TEST_F(qcx_wrapping, puts_the_frame_before_a_raw_alpha_plane) {
    const bytes qcx = qcx_frame({1300, 4, 2, false});
    const outcome result =
        wrap(encoder_, frame_record(14, 1, 4, 2), raw_alpha(), {wrap_record(1, 45)}, {qcx}, &k_alpha);
    expect_bytes(result,
                 "62000000 'pack' "
                 "35000000 'QCXF' 30313233 343536fe 38393a3b 3c3d3e3f 40414243 44454647 0002 0004 4c4d4e4f 50515253 "
                 "54555657 00000514 5c "
                 "15000000 'sinf' 04000000 02000000 ' a08' 00 "
                 "10000000 'sdat' 01020304 05060708");
    EXPECT_EQ(result.data.size(), 98u);
}

TEST_F(qcx_wrapping, puts_the_frame_before_a_coded_alpha_plane) {
    const bytes qcx = qcx_frame({1270, 4, 2, false}, 46);
    const bytes alpha = from_hex("00010203 00010203");
    const outcome result =
        wrap(encoder_, frame_record(14, 1, 4, 2), coded_alpha(1), {wrap_record(1, 46)}, {qcx}, &alpha);
    expect_success(result);
    EXPECT_EQ(to_hex(result.frame()),
              to_hex(pack(box("QCXF", qcx) + bare_plane(4, 2, "rl08", from_hex("01bffffc6fffff90dfad54396aa0")))));
    EXPECT_EQ(result.data.size(), 1761u);
}

TEST_F(qcx_wrapping, takes_16_bit_alpha_strides_and_the_layout) {
    const bytes qcx = qcx_frame({1301, 2, 2, false});
    const bytes alpha = from_hex("01020304 ee 05060708 ee");
    const outcome result =
        wrap(encoder_, frame_record(14, 2, 2, 2, 5), raw_alpha(), {wrap_record(1, 45)}, {qcx}, &alpha);
    expect_success(result);
    EXPECT_EQ(to_hex(result.frame()), to_hex(pack(box("QCXF", qcx) + bare_plane(2, 2, " a16", counting(8, 1)))));
}

TEST_F(qcx_wrapping, gives_the_same_bytes_on_workers) {
    const bytes qcx = qcx_frame({1300, 4, 2, false});
    const bytes alpha = from_hex("00010203 00010203");
    for (const uint32_t threads : {2u, 3u, 8u}) {
        encoder with(threads);
        for (const stream_params& cp : {raw_alpha(), coded_alpha(2)}) {
            const auto one = wrap(with, frame_record(14, 1, 4, 2), cp, {wrap_record(1, 45)}, {qcx}, &alpha);
            const auto other = wrap(encoder_, frame_record(14, 1, 4, 2), cp, {wrap_record(1, 45)}, {qcx}, &alpha);
            expect_success(one);
            EXPECT_EQ(to_hex(one.frame()), to_hex(other.frame()));
        }
    }
}

TEST_F(qcx_wrapping, reads_back_through_plain_decoding) {
    const bytes qcx = qcx_frame({1300, 4, 2, false});
    const outcome wrapped = try_wrap(frame_record(14, 1, 4, 2), qcx);
    expect_bytes(decode(frame_record(14, 1, 4, 2), wrapped.frame()), "01020304 05060708");
}

TEST_F(qcx_wrapping, a_frame_of_44_bytes_is_too_small) {
    const bytes whole = qcx_frame({1300, 4, 2, false}, 45);
    expect_success(try_wrap(frame_record(14, 1, 4, 2), whole));
    for (const size_t size : {size_t{44}, size_t{8}, size_t{1}, size_t{0}}) {
        expect_failure(try_wrap(frame_record(14, 1, 4, 2),
                                bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size))),
                       "Size is too small to parse QCX header");
    }
}

TEST_F(qcx_wrapping, an_unknown_compression_id_is_refused) {
    for (const uint32_t id : {0u, 1234u, 1236u, 1239u, 1240u, 1245u, 1249u, 1254u, 1255u, 1257u, 1261u, 1269u, 1275u,
                              1299u, 1302u, 0xffffffffu, 0x14050000u}) {
        SCOPED_TRACE(id);
        expect_failure(try_wrap(frame_record(14, 1, 4, 2), qcx_frame({id, 4, 2, false})),
                       "Invalid compression ID in QCX header");
    }
}

struct id_row {
    uint32_t id;
    uint32_t width;
    uint32_t height;
    bool interlaced;
};

const id_row k_id_rows[] = {
    {1235, 1920, 1080, false}, {1237, 1920, 1080, false}, {1238, 1920, 1080, false}, {1253, 1920, 1080, false},
    {1256, 1920, 1080, false}, {1241, 1920, 1080, true},  {1242, 1920, 1080, true},  {1243, 1920, 1080, true},
    {1244, 1440, 1080, true},  {1259, 1440, 1080, false}, {1260, 1440, 1080, true},  {1250, 1280, 720, false},
    {1251, 1280, 720, false},  {1252, 1280, 720, false},  {1258, 960, 720, false},   {1270, 770, 330, false},
    {1271, 771, 331, false},   {1272, 772, 332, false},   {1273, 773, 333, false},   {1274, 774, 334, false},
    {1300, 775, 335, false},   {1301, 776, 336, false},
};

// The header says something else where the ID alone decides.
bytes frame_of(const id_row& row) {
    const bool by_header = row.id >= 1270;
    return qcx_frame({row.id, static_cast<uint16_t>(by_header ? row.width : 5),
                      static_cast<uint16_t>(by_header ? row.height : 7), false});
}

TEST_F(qcx_wrapping, each_compression_id_names_its_width) {
    for (const id_row& row : k_id_rows) {
        SCOPED_TRACE(row.id);
        expect_failure(try_wrap(frame_record(14, 1, 5, 7), frame_of(row)),
                       "Uncompressed params width 5 is not equal QCX width " + std::to_string(row.width));
    }
}

TEST_F(qcx_wrapping, each_compression_id_names_its_height) {
    for (const id_row& row : k_id_rows) {
        SCOPED_TRACE(row.id);
        expect_failure(try_wrap(frame_record(14, 1, row.width, 2), frame_of(row)),
                       "Uncompressed params height 2 is not equal QCX height " + std::to_string(row.height));
    }
}

TEST_F(qcx_wrapping, each_compression_id_names_its_layout_and_then_the_alpha_source_is_wanted) {
    sparse_buffer target(1u << 22);
    for (const id_row& row : k_id_rows) {
        const bytes qcx = frame_of(row);
        const uint8_t* const payloads[] = {qcx.data()};
        const wrap_params record = wrap_record(1, 45);
        const stream_params cp = raw_alpha();
        for (const uint32_t layout : {0u, 1u, 2u}) {
            SCOPED_TRACE(testing::Message() << row.id << ", layout " << layout);
            const frame_params up = frame_record(14, 1, row.width, row.height, 0, 0, layout);
            encoder_.messages().clear();
            EXPECT_EQ(QVRUncompressed_EncodeAndWrapFrame(encoder_.handle(), &up, &cp, &record, 1, nullptr, 0, payloads,
                                                         target.data(), 1u << 22, nullptr),
                      1u);
            const char* expected = "src buffer is null";
            if (row.interlaced && layout != 1) {
                expected = "Uncompressed params frame layout is not compatible with interlaced QCX";
            } else if (!row.interlaced && layout != 0) {
                expected = "Uncompressed params frame layout is not compatible with progressive QCX";
            }
            EXPECT_EQ(encoder_.messages(), message_list{expected});
        }
    }
}

TEST_F(qcx_wrapping, an_interlaced_frame_is_stored_as_interlaced) {
    const bytes qcx = qcx_frame({1244, 0, 0, false});
    const bytes alpha(1440 * 1080, 7);
    const outcome result =
        wrap(encoder_, frame_record(14, 1, 1440, 1080, 0, 0, 1), raw_alpha(), {wrap_record(1, 45)}, {qcx}, &alpha);
    expect_success(result);
    EXPECT_TRUE(result.frame() == pack(box("QCXF", qcx) + bare_plane(1440, 1080, " a08", alpha, 1)));
}

TEST_F(qcx_wrapping, a_frame_with_the_alpha_flag_is_refused_before_sizes_are_compared) {
    expect_failure(try_wrap(frame_record(14, 1, 4, 2), qcx_frame({1300, 4, 2, true})),
                   "Can't wrap uncompressed alpha and QCX with alpha flag set");
    expect_failure(try_wrap(frame_record(14, 1, 4, 2), qcx_frame({1241, 9, 9, true})),
                   "Can't wrap uncompressed alpha and QCX with alpha flag set");
}

TEST_F(qcx_wrapping, width_comes_before_height_and_height_before_layout) {
    expect_failure(try_wrap(frame_record(14, 1, 4, 2, 0, 0, 1), qcx_frame({1300, 5, 3, false})),
                   "Uncompressed params width 4 is not equal QCX width 5");
    expect_failure(try_wrap(frame_record(14, 1, 4, 2, 0, 0, 1), qcx_frame({1300, 4, 3, false})),
                   "Uncompressed params height 2 is not equal QCX height 3");
    expect_failure(try_wrap(frame_record(14, 1, 4, 2, 0, 0, 1), qcx_frame({1300, 4, 2, false})),
                   "Uncompressed params frame layout is not compatible with progressive QCX");
}

TEST_F(qcx_wrapping, the_header_size_is_two_big_endian_words) {
    expect_failure(try_wrap(frame_record(14, 1, 4, 2), qcx_frame({1300, 0x1234, 0xfedc, false})),
                   "Uncompressed params width 4 is not equal QCX width 4660");
    expect_failure(try_wrap(frame_record(14, 1, 4, 2), qcx_frame({1300, 4, 0xfedc, false})),
                   "Uncompressed params height 2 is not equal QCX height 65244");
}

TEST_F(qcx_wrapping, the_parameter_rules_come_first) {
    const bytes tiny = {1};
    EXPECT_EQ(wrap(encoder_, frame_record(14, 3, 4, 2), coded_alpha(), {wrap_record(1, 1), wrap_record(1, 1)},
                   {tiny, tiny}, &k_alpha, 0)
                  .messages,
              message_list{"Only 8 and 16 bit alpha supported for RLE compression"});
    EXPECT_EQ(wrap(encoder_, frame_record(1, 1, 3, 2), raw_alpha(), {wrap_record(1, 1), wrap_record(1, 1)},
                   {tiny, tiny}, &k_alpha, 0)
                  .messages,
              message_list{"Width must be multiple of 2 for 422 and 420 subsampling"});
    EXPECT_EQ(wrap(encoder_, frame_record(10, 1, 2, 3), raw_alpha(), {wrap_record(1, 1)}, {tiny}, &k_alpha, 0).messages,
              message_list{"Height must be multiple of 2 for 420 subsampling"});
}

TEST_F(qcx_wrapping, then_the_wrap_records) {
    const bytes tiny = {1};
    expect_failure(wrap(encoder_, frame_record(5, 1, 4, 2), raw_alpha(), {wrap_record(0, 1)}, {tiny}, &k_alpha, 0),
                   "Unknown wrap type");
    expect_failure(wrap(encoder_, frame_record(5, 1, 4, 2), raw_alpha(), {wrap_record(1, 1), wrap_record(0, 1)},
                        {tiny, tiny}, &k_alpha, 0),
                   "Unknown wrap type");
    expect_failure(wrap(encoder_, frame_record(5, 1, 4, 2), raw_alpha(), {wrap_record(1, 1), wrap_record(1, 1)},
                        {tiny, tiny}, &k_alpha, 0),
                   "Single QCX wrap params expected");
    expect_failure(wrap(encoder_, frame_record(14, 1, 4, 2), raw_alpha(), {wrap_record(1, 1)}, {tiny}, &k_alpha, 0, 0),
                   "Single QCX wrap params expected");
}

TEST_F(qcx_wrapping, then_the_kind_of_plane) {
    for (const frame_params& up : {frame_record(5, 1, 4, 2), frame_record(14, 3, 4, 2), frame_record(14, 7, 4, 2),
                                   frame_record(13, 1, 4, 2), frame_record(0, 1, 4, 2), frame_record(17, 2, 4, 2)}) {
        expect_failure(wrap(encoder_, up, raw_alpha(), {wrap_record(1, 1)}, {bytes{1}}, &k_alpha, 0),
                       "8/16 bit single alpha plane expected");
    }
}

TEST_F(qcx_wrapping, then_the_destination_size) {
    const bytes qcx = qcx_frame({1, 9, 9, true}, 44);
    // 8 + 8 + 44 + 29 + 8
    const outcome result =
        wrap(encoder_, frame_record(14, 1, 4, 2), raw_alpha(), {wrap_record(1, 44)}, {qcx}, &k_alpha, 96);
    expect_failure(result, "dst size is too small");
    EXPECT_EQ(result.data, repeat(k_fill, 96));
    expect_failure(wrap(encoder_, frame_record(14, 1, 4, 2), raw_alpha(), {wrap_record(1, 44)}, {qcx}, &k_alpha, 97),
                   "Size is too small to parse QCX header");
}

TEST_F(qcx_wrapping, then_a_raw_alpha_source) {
    const bytes qcx = qcx_frame({1300, 4, 2, false});
    expect_failure(try_wrap(frame_record(14, 1, 4, 2, 3), qcx, nullptr), "src buffer is null");
    const bytes seven = counting(7);
    expect_failure(try_wrap(frame_record(14, 1, 4, 2, 3), qcx, &seven),
                   "rowBytes is too small, it should be at least 4 according to uncompressed params");
    expect_failure(try_wrap(frame_record(14, 1, 4, 2), qcx, &seven), "src size is too small");
    expect_failure(try_wrap(frame_record(14, 1, 4, 2, 5), qcx, &k_alpha), "src size is too small");
}

TEST_F(qcx_wrapping, or_a_coded_alpha_source_in_the_words_of_its_coder) {
    const auto try_coded = [this](const frame_params& up, const bytes& qcx, const bytes* src) {
        return wrap(encoder_, up, coded_alpha(1), {wrap_record(1, 45)}, {qcx}, src, 8192);
    };
    const bytes qcx = qcx_frame({1300, 4, 2, false});
    const bytes seven = counting(7);
    expect_failure(try_coded(frame_record(14, 1, 0, 2), qcx_frame({1300, 0, 2, false}), nullptr), "Invalid width");
    expect_failure(try_coded(frame_record(14, 1, 4, 0), qcx_frame({1300, 4, 0, false}), nullptr), "Invalid height");
    expect_failure(try_coded(frame_record(14, 1, 4, 2, 3), qcx, nullptr),
                   "row_bytes is too small, it should be at least 4 according to params");
    expect_failure(try_coded(frame_record(14, 2, 4, 2, 7), qcx, &seven),
                   "row_bytes is too small, it should be at least 8 according to params");
    expect_failure(try_coded(frame_record(14, 1, 4, 2), qcx, nullptr), "src and buffers required to be non-null");
    expect_failure(try_coded(frame_record(14, 1, 4, 2), qcx, &seven), "src buffer is too small according to metadata");
    expect_failure(try_coded(frame_record(14, 1, 4, 2, 5), qcx, &k_alpha),
                   "src buffer is too small according to metadata");
}

TEST_F(qcx_wrapping, of_an_empty_alpha_plane_leaves_the_headers) {
    const bytes none;
    const bytes qcx = qcx_frame({1300, 0, 2, false});
    const outcome result = try_wrap(frame_record(14, 1, 0, 2), qcx, &none);
    expect_success(result);
    EXPECT_EQ(to_hex(result.frame()), to_hex(pack(box("QCXF", qcx) + bare_plane(0, 2, " a08", {}))));
}

TEST_F(qcx_wrapping, a_first_type_of_3_or_more_wraps_nothing) {
    const bytes junk = {1, 2};
    const char* plain = "2d000000 'pack' 15000000 'sinf' 04000000 02000000 ' a08' 00 10000000 'sdat' 0102030405060708";
    for (const uint32_t type : {3u, 4u, 0xffffffffu}) {
        SCOPED_TRACE(type);
        const frame_params up = frame_record(14, 1, 4, 2);
        expect_bytes(wrap(encoder_, up, raw_alpha(), {wrap_record(type, 2)}, {junk}, &k_alpha), plain);
        expect_bytes(wrap(encoder_, up, raw_alpha(), {wrap_record(type, 2), wrap_record(1, 2)}, {junk, junk}, &k_alpha),
                     plain);
        expect_bytes(wrap(encoder_, up, raw_alpha(), {wrap_record(type, 2)}, {}, &k_alpha, std::nullopt, 0), plain);
        expect_failure(
            wrap(encoder_, frame_record(5, 1, 4, 2), raw_alpha(), {wrap_record(type, 2)}, {junk}, &k_alpha, 64),
            "8/16 bit single alpha plane expected");
    }
}

TEST_F(qcx_wrapping, a_first_type_of_0_with_a_count_of_0_wraps_nothing) {
    expect_bytes(
        wrap(encoder_, frame_record(14, 1, 4, 2), raw_alpha(), {wrap_record(0, 2)}, {}, &k_alpha, std::nullopt, 0),
        "2d000000 'pack' 15000000 'sinf' 04000000 02000000 ' a08' 00 10000000 'sdat' 0102030405060708");
}

TEST_F(qcx_wrapping, bytes_written_may_be_null) {
    const bytes qcx = qcx_frame({1300, 4, 2, false});
    const uint8_t* const payloads[] = {qcx.data()};
    const wrap_params record = wrap_record(1, 45);
    const frame_params up = frame_record(14, 1, 4, 2);
    const stream_params cp = raw_alpha();
    guarded_buffer target(98);
    EXPECT_EQ(QVRUncompressed_EncodeAndWrapFrame(encoder_.handle(), &up, &cp, &record, 1, k_alpha.data(), 8, payloads,
                                                 target.data(), 98, nullptr),
              0u);
}

uint32_t wrap_size(const frame_params& up, const stream_params& cp, const std::vector<wrap_params>& records,
                   uint32_t count) {
    return QVRUncompressed_GetCompressedWrapBufSize(&up, &cp, records.data(), count);
}

TEST(wrap_size_query, counts_the_frame_and_the_alpha_plane) {
    EXPECT_EQ(wrap_size(frame_record(14, 1, 4, 2), raw_alpha(), {wrap_record(1, 45)}, 1), 98u);
    EXPECT_EQ(wrap_size(frame_record(14, 2, 4, 2), raw_alpha(), {wrap_record(1, 1000)}, 1), 1061u);
    EXPECT_EQ(wrap_size(frame_record(14, 1, 4, 2), coded_alpha(1), {wrap_record(1, 45)}, 1), 1760u);
    EXPECT_EQ(wrap_size(frame_record(14, 2, 4, 2), coded_alpha(1), {wrap_record(1, 45)}, 1), 1768u);
    EXPECT_EQ(wrap_size(frame_record(14, 1, 4, 2), raw_alpha(), {wrap_record(1, 0)}, 1), 53u);
}

TEST(wrap_size_query, counts_stitched_chunks) {
    EXPECT_EQ(wrap_size(frame_record(1, 1, 3, 3), raw_alpha(),
                        {wrap_record(2, 10), wrap_record(2, 20), wrap_record(2, 30)}, 3),
              121u);
    EXPECT_EQ(wrap_size(frame_record(0, 0, 0, 0), coded_alpha(), {wrap_record(2, 0)}, 1), 45u);
    EXPECT_EQ(wrap_size(frame_record(0, 0, 0, 0), raw_alpha(), {wrap_record(2, 10)}, 0), 37u);
}

TEST(wrap_size_query, counts_alpha_alone_for_other_types) {
    EXPECT_EQ(wrap_size(frame_record(14, 1, 4, 2), raw_alpha(), {wrap_record(3, 99)}, 1), 45u);
    EXPECT_EQ(wrap_size(frame_record(14, 1, 4, 2), raw_alpha(), {wrap_record(0, 99)}, 0), 45u);
    EXPECT_EQ(wrap_size(frame_record(14, 1, 4, 2), coded_alpha(1), {wrap_record(7, 99)}, 1), 1707u);
}

TEST(wrap_size_query, returns_low_32_bits) {
    EXPECT_EQ(wrap_size(frame_record(14, 1, 4, 2), raw_alpha(), {wrap_record(1, 0xffffffffu)}, 1), 52u);
    EXPECT_EQ(
        wrap_size(frame_record(0, 0, 4, 2), raw_alpha(), {wrap_record(2, 0xffffffffu), wrap_record(2, 0xffffffffu)}, 2),
        51u);
}

TEST(wrap_size_query, fails_with_0) {
    EXPECT_EQ(wrap_size(frame_record(14, 1, 4, 2), raw_alpha(), {wrap_record(0, 45)}, 1), 0u);
    EXPECT_EQ(wrap_size(frame_record(14, 1, 4, 2), raw_alpha(), {wrap_record(2, 45), wrap_record(0, 1)}, 2), 0u);
    EXPECT_EQ(wrap_size(frame_record(14, 1, 4, 2), raw_alpha(), {wrap_record(1, 45), wrap_record(1, 1)}, 2), 0u);
    EXPECT_EQ(wrap_size(frame_record(14, 1, 4, 2), raw_alpha(), {wrap_record(1, 45)}, 0), 0u);
    EXPECT_EQ(wrap_size(frame_record(5, 1, 4, 2), raw_alpha(), {wrap_record(1, 45)}, 1), 0u);
    EXPECT_EQ(wrap_size(frame_record(14, 3, 4, 2), raw_alpha(), {wrap_record(3, 45)}, 1), 0u);
}

TEST(wrap_size_query, does_not_look_at_the_payload_or_the_parameter_rules) {
    EXPECT_EQ(wrap_size(frame_record(14, 1, 4, 2, 1), raw_alpha(), {wrap_record(1, 1)}, 1), 54u);
}

}  // namespace
