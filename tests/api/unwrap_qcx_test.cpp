// SPDX-License-Identifier: BSD-3-Clause
//
// Taking one compressed frame and its alpha plane out of a bitstream, and the checks in their order.
#include <gtest/gtest.h>

#include "box_builder.h"
#include "codec.h"

namespace {

using namespace test;

const bytes k_frame = counting(20, 0x40);
const bytes k_plane = bare_plane(4, 2, " a08", counting(8, 1));
const bytes k_stream = pack(box("QCXF", k_frame) + k_plane);
const frame_params k_up = frame_record(14, 1, 4, 2);
const std::vector<wrap_params> k_record = {wrap_record(1, 20)};

class qcx_unwrapping : public testing::Test {
  protected:
    outcome try_unwrap(const frame_params& up, const std::vector<wrap_params>& records, const bytes& stream,
                       std::optional<uint32_t> dst_size = 64, std::optional<uint32_t> count = std::nullopt) {
        return unwrap(decoder_, up, records, stream, dst_size, count);
    }

    decoder decoder_;
};

TEST_F(qcx_unwrapping, gives_the_frame_and_raw_alpha) {
    const outcome result = try_unwrap(k_up, k_record, k_stream, 8);
    expect_bytes(result, "01020304 05060708");
    EXPECT_EQ(to_hex(result.payloads[0]), to_hex(k_frame));
}

TEST_F(qcx_unwrapping, gives_coded_alpha_with_its_stride) {
    const bytes coded = from_hex("01bffffc6fffff90dfad54396aa0");
    const bytes stream = pack(box("QCXF", k_frame) + bare_plane(4, 2, "rl08", coded));
    for (const uint32_t threads : {1u, 2u, 8u}) {
        decoder with(threads);
        const outcome result = unwrap(with, frame_record(14, 1, 4, 2, 6), k_record, stream, 12);
        expect_bytes(result, "00010203 0001 00010203 cccc");
        EXPECT_EQ(to_hex(result.payloads[0]), to_hex(k_frame));
    }
}

TEST_F(qcx_unwrapping, leaves_padding_between_raw_rows_alone) {
    expect_bytes(try_unwrap(frame_record(14, 1, 4, 2, 6), k_record, k_stream, 12), "01020304 cccc 05060708 cccc");
}

TEST_F(qcx_unwrapping, of_16_bit_alpha) {
    const bytes stream = pack(box("QCXF", k_frame) + bare_plane(2, 2, " a16", counting(8, 1)));
    expect_bytes(try_unwrap(frame_record(14, 2, 2, 2), k_record, stream, 8), "01020304 05060708");
}

TEST_F(qcx_unwrapping, finds_the_frame_behind_the_plane) {
    const outcome result = try_unwrap(k_up, k_record, pack(k_plane + box("QCXF", k_frame)), 8);
    expect_bytes(result, "01020304 05060708");
    EXPECT_EQ(to_hex(result.payloads[0]), to_hex(k_frame));
}

TEST_F(qcx_unwrapping, takes_the_first_of_two_frames) {
    const outcome result = try_unwrap(k_up, k_record, pack(box("QCXF", k_frame) + box("QCXF", {1}) + k_plane), 8);
    expect_success(result);
    EXPECT_EQ(to_hex(result.payloads[0]), to_hex(k_frame));
}

TEST_F(qcx_unwrapping, checks_the_stride_first) {
    expect_failure(try_unwrap(frame_record(14, 1, 4, 2, 3), k_record, {}, std::nullopt),
                   "rowBytes is too small, it should be at least 4 according to uncompressed params");
}

TEST_F(qcx_unwrapping, then_that_there_is_a_destination) {
    expect_failure(try_unwrap(k_up, k_record, {}, std::nullopt), "dst buffer is null");
}

TEST_F(qcx_unwrapping, then_the_size_of_the_destination) {
    expect_failure(try_unwrap(k_up, k_record, {}, 7), "dst size is too small");
    expect_failure(try_unwrap(frame_record(14, 1, 4, 2, 5), k_record, {}, 9), "dst size is too small");
}

TEST_F(qcx_unwrapping, then_the_stream) {
    expect_failure(try_unwrap(k_up, {wrap_record(1, 1), wrap_record(1, 1)}, {}, 8), "buffer size should be at least 8");
}

TEST_F(qcx_unwrapping, then_the_count_of_records) {
    const char* message = "Only single QCX wrap chunk supported for decode";
    expect_failure(try_unwrap(k_up, {wrap_record(1, 20), wrap_record(1, 20)}, pack(k_plane)), message);
    expect_failure(try_unwrap(k_up, k_record, k_stream, 8, 0), message);
    expect_failure(try_unwrap(k_up, {wrap_record(3, 20), wrap_record(2, 20)}, k_stream), message);
}

TEST_F(qcx_unwrapping, then_that_there_is_a_wrap_box) {
    const char* message = "0 wrap boxes found in bytestream, but 1 expected according to wrap params";
    expect_failure(try_unwrap(k_up, {wrap_record(1, 1)}, pack(k_plane)), message);
    expect_failure(try_unwrap(k_up, {wrap_record(0, 1)}, pack(k_plane)), message);
}

TEST_F(qcx_unwrapping, then_its_size) {
    for (const uint32_t size : {19u, 21u, 0u}) {
        expect_failure(try_unwrap(k_up, {wrap_record(3, size)}, k_stream),
                       "'QCXF' box size is not equal wrap params size");
    }
}

TEST_F(qcx_unwrapping, then_its_type) {
    const bytes without_alpha = pack(box("QCXF", k_frame) + bare_plane(4, 2, "rg08", counting(24)));
    for (const uint32_t type : {0u, 3u, 77u}) {
        expect_failure(try_unwrap(k_up, {wrap_record(type, 20)}, without_alpha),
                       "'QCXF' box type is not equal to wrap params type");
    }
}

TEST_F(qcx_unwrapping, then_that_there_is_an_alpha_plane) {
    const char* message = "Alpha plane is not found";
    expect_failure(try_unwrap(k_up, k_record, pack(box("QCXF", k_frame) + bare_plane(9, 9, "rg08", counting(243)))),
                   message);
    expect_failure(try_unwrap(k_up, {wrap_record(1, 3)}, single_plane(4, 2, "stch", box("stch", {1, 2, 3}))), message);
    expect_failure(try_unwrap(k_up, {wrap_record(3, 3)}, single_plane(4, 2, "stch", box("tile", {1, 2, 3}))), message);
}

TEST_F(qcx_unwrapping, then_the_caller_against_the_stream) {
    expect_failure(try_unwrap(frame_record(14, 2, 5, 3), k_record, k_stream),
                   "width in src metadata is different than width in uncompressed params");
    expect_failure(try_unwrap(frame_record(14, 2, 4, 3), k_record, k_stream),
                   "height in src metadata is different than height in uncompressed params");
    expect_failure(try_unwrap(frame_record(14, 2, 4, 2), k_record, k_stream),
                   "bit depth in src metadata is different than bit depth in uncompressed params");
    expect_failure(try_unwrap(frame_record(5, 1, 4, 2), k_record, k_stream),
                   "src metadata type is incompatible with color component order or component type");
    expect_failure(try_unwrap(frame_record(14, 1, 4, 2), k_record,
                              pack(box("QCXF", k_frame) + component(4, 2, "y208", counting(16)) +
                                   component(4, 2, " a08", counting(8)))),
                   "src metadata type is incompatible with color component order or component type");
}

TEST_F(qcx_unwrapping, copies_nothing_when_a_check_fails) {
    const outcome result = try_unwrap(frame_record(14, 2, 4, 2), k_record, k_stream);
    EXPECT_EQ(result.status, 1u);
    EXPECT_EQ(result.payloads[0], repeat(k_fill, 20));
    EXPECT_EQ(result.data, repeat(k_fill, 64));
}

TEST_F(qcx_unwrapping, refuses_a_frame_that_does_not_lie_inside_the_source) {
    const bytes stream = pack(k_plane + box_with_size("QCXF", 30, k_frame));
    expect_failure(try_unwrap(k_up, {wrap_record(1, 22)}, stream), "can't read 22 bytes at offset 53");
}

TEST_F(qcx_unwrapping, takes_a_frame_that_runs_past_the_pack_but_not_past_the_source) {
    const bytes stream = pack(k_plane + box_with_size("QCXF", 28, counting(19, 0x40))) + bytes{0x53};
    const outcome result = try_unwrap(k_up, k_record, stream, 8);
    expect_bytes(result, "01020304 05060708");
    EXPECT_EQ(to_hex(result.payloads[0]), to_hex(k_frame));
}

TEST_F(qcx_unwrapping, of_an_empty_frame_box) {
    expect_bytes(try_unwrap(k_up, {wrap_record(1, 0)}, pack(box("QCXF", {}) + k_plane), 8), "01020304 05060708");
}

TEST_F(qcx_unwrapping, undoes_wrapping) {
    const bytes qcx = qcx_frame({1300, 4, 2, false}, 60);
    const bytes alpha = from_hex("00000000 7f8090ff");
    for (const uint32_t threads : {1u, 2u, 3u, 8u}) {
        for (const stream_params& cp : {raw_alpha(), coded_alpha(1), coded_alpha(2)}) {
            encoder out(threads);
            decoder in(threads);
            const outcome wrapped = wrap(out, k_up, cp, {wrap_record(1, 60)}, {qcx}, &alpha);
            expect_success(wrapped);
            const outcome result = unwrap(in, k_up, {wrap_record(1, 60)}, wrapped.frame(), 8);
            expect_bytes(result, "00000000 7f8090ff");
            EXPECT_EQ(to_hex(result.payloads[0]), to_hex(qcx));
        }
    }
}

}  // namespace
