// SPDX-License-Identifier: BSD-3-Clause
//
// Reading the boxes of a bitstream: what is accepted, what is refused, and with which words.
#include <gtest/gtest.h>

#include <string>

#include "box_builder.h"
#include "codec.h"

namespace {

using namespace test;

// The same words from the metadata reader and from the frame decoder.
void expect_refused(const bytes& stream, const std::string& message) {
    const metadata read = read_metadata(stream);
    EXPECT_EQ(read.status, 1u);
    EXPECT_EQ(read.messages, message_list{message});
    EXPECT_EQ(read.up.width, 0u) << "the record was touched";
    expect_failure(decode(frame_record(14, 1, 2, 1), stream), message);
    EXPECT_EQ(read_wrap_count(stream), 0u);
}

void expect_accepted(const bytes& stream) {
    const outcome result = decode(frame_record(14, 1, 2, 1), stream);
    expect_success(result);
    EXPECT_EQ(to_hex(result.frame()), "0102");
}

const bytes k_samples = {1, 2};

TEST(reader, accepts_a_bare_plane) {
    expect_accepted(single_plane(2, 1, " a08", k_samples));
}

TEST(reader, ignores_bytes_behind_the_pack) {
    expect_accepted(single_plane(2, 1, " a08", k_samples) + repeat(0xff, 40));
}

TEST(reader, refuses_fewer_than_8_bytes) {
    for (const size_t size : {size_t{0}, size_t{1}, size_t{7}}) {
        bytes stream = single_plane(2, 1, " a08", k_samples);
        stream.resize(size);
        expect_refused(stream, "buffer size should be at least 8");
    }
}

TEST(reader, refuses_another_first_box) {
    expect_refused(box("pakk", bare_plane(2, 1, " a08", k_samples)), "'pack' box expected at offset 4");
    expect_refused(bare_plane(2, 1, " a08", k_samples), "'pack' box expected at offset 4");
}

TEST(reader, refuses_a_pack_larger_than_the_buffer) {
    bytes stream = single_plane(2, 1, " a08", k_samples);
    stream.pop_back();
    expect_refused(stream, "pack box size(39) is greater than buffer size(38)");
    expect_refused(box_with_size("pack", 0xffffffffu, {}), "pack box size(4294967295) is greater than buffer size(8)");
}

TEST(reader, looks_at_the_type_of_the_first_box_before_its_size) {
    expect_refused(box_with_size("kcap", 0xffffffffu, {}), "'pack' box expected at offset 4");
}

TEST(reader, refuses_a_pack_without_planes) {
    const char* message = "at least one 'sinf' and one 'sdat' box expected";
    expect_refused(pack({}), message);
    expect_refused(pack(repeat(0, 7)), message);
    expect_refused(pack(box("free", counting(10)) + box("skip", {})), message);
    // The planes lie behind the declared end.
    expect_refused(box_with_size("pack", 8, bare_plane(2, 1, " a08", k_samples)), message);
    expect_refused(box_with_size("pack", 15, bare_plane(2, 1, " a08", k_samples)), message);
    expect_refused(box_with_size("pack", 0, bare_plane(2, 1, " a08", k_samples)), message);
    expect_refused(box_with_size("pack", 7, bare_plane(2, 1, " a08", k_samples)), message);
}

TEST(reader, skips_unknown_boxes_by_their_size) {
    expect_accepted(pack(box("free", counting(10)) + bare_plane(2, 1, " a08", k_samples) + box("more", counting(3))));
    expect_accepted(pack(bare_plane(2, 1, " a08", k_samples) + box_with_size("huge", 0xffffffffu, counting(3))));
}

TEST(reader, skips_an_unknown_box_of_a_size_below_8_as_8_bytes) {
    for (uint32_t size = 0; size < 8; ++size) {
        SCOPED_TRACE(size);
        expect_accepted(pack(box_with_size("tiny", size, {}) + bare_plane(2, 1, " a08", k_samples)));
    }
}

TEST(reader, ignores_up_to_7_trailing_bytes_in_the_pack) {
    for (size_t count = 1; count < 8; ++count) {
        SCOPED_TRACE(count);
        expect_accepted(pack(bare_plane(2, 1, " a08", k_samples) + repeat(0xff, count)));
    }
}

TEST(reader, skips_an_sdat_or_pack_that_stands_alone) {
    expect_accepted(pack(sdat(counting(4)) + box("pack", {}) + bare_plane(2, 1, " a08", k_samples)));
}

TEST(reader, allows_a_single_bare_plane_only) {
    const char* message = "only single 'sinf' box allowed outside of 'icmp' box";
    const bytes plane = bare_plane(2, 1, " a08", k_samples);
    expect_refused(pack(plane + plane), message);
    expect_refused(pack(component(2, 1, "y208", counting(4)) + plane), message);
}

TEST(reader, accepts_a_component_behind_a_bare_plane) {
    const bytes stream = pack(bare_plane(2, 1, "y208", counting(4, 1)) + component(2, 1, " a08", {9, 8}));
    expect_bytes(decode(frame_record(16, 1, 2, 1), stream), "01020304 0908");
}

TEST(reader, accepts_a_single_plane_inside_a_component) {
    expect_accepted(pack(component(2, 1, " a08", k_samples)));
}

TEST(reader, refuses_a_component_without_a_plane_description) {
    expect_refused(pack(box("icmp", {})), "can't read box header(8 bytes) at offset 16");
    expect_refused(pack(box("icmp", sdat(k_samples))), "'sinf' box expected at offset 20");
    expect_refused(pack(box("free", {}) + box("icmp", box("fnis", counting(20)))), "'sinf' box expected at offset 28");
}

TEST(reader, refuses_a_plane_description_without_data) {
    expect_refused(pack(sinf(2, 1, " a08")), "can't read box header(8 bytes) at offset 29");
    expect_refused(pack(sinf(2, 1, " a08") + repeat(0, 7)), "can't read box header(8 bytes) at offset 29");
    expect_refused(pack(sinf(2, 1, " a08") + box("tads", k_samples)), "'sdat' box expected at offset 33");
    expect_refused(pack(sinf(2, 1, " a08") + box("free", {}) + sdat(k_samples)), "'sdat' box expected at offset 33");
    expect_refused(pack(box("icmp", sinf(2, 1, " a08") + box("free", {}))), "'sdat' box expected at offset 41");
}

TEST(reader, headers_may_not_reach_past_the_pack_even_where_the_buffer_goes_on) {
    const bytes inner = sinf(2, 1, " a08") + sdat(k_samples);
    expect_refused(box_with_size("pack", 36, inner), "can't read box header(8 bytes) at offset 29");
}

TEST(reader, skips_what_a_component_holds_behind_its_data) {
    const bytes stuffed = box("icmp", bare_plane(2, 1, "y208", counting(4, 1)) + box("free", counting(11)) + bytes{7});
    expect_bytes(decode(frame_record(16, 1, 2, 1), pack(stuffed + component(2, 1, " a08", {9, 8}))), "01020304 0908");
}

TEST(reader, skips_to_the_declared_end_of_a_component_however_far) {
    expect_accepted(pack(box_with_size("icmp", 0xffffffffu, bare_plane(2, 1, " a08", k_samples)) + box("QCXF", {})));
}

TEST(reader, goes_on_behind_the_data_when_a_component_declares_too_little) {
    const bytes plane = bare_plane(2, 1, "y208", counting(4, 1));
    for (const uint32_t size : {0u, 7u, 8u, 29u, 40u}) {
        SCOPED_TRACE(size);
        const bytes stream = pack(box_with_size("icmp", size, plane) + component(2, 1, " a08", {9, 8}));
        if (size >= 8) {
            expect_bytes(decode(frame_record(16, 1, 2, 1), stream), "01020304 0908");
        } else {
            expect_failure(decode(frame_record(16, 1, 2, 1), stream),
                           "'icmp' box size expected to be at least 8 at offset 8");
        }
    }
}

TEST(reader, refuses_qcx_boxes_smaller_than_their_header) {
    for (uint32_t size = 0; size < 8; ++size) {
        SCOPED_TRACE(size);
        expect_refused(pack(box("free", {}) + box_with_size("QCXF", size, {}) + bare_plane(2, 1, " a08", k_samples)),
                       "'QCXF' box size expected to be at least 8 at offset 16");
    }
}

TEST(reader, refuses_component_boxes_smaller_than_their_header) {
    for (uint32_t size = 0; size < 8; ++size) {
        SCOPED_TRACE(size);
        expect_refused(pack(box_with_size("icmp", size, bare_plane(2, 1, " a08", k_samples))),
                       "'icmp' box size expected to be at least 8 at offset 8");
    }
}

TEST(plane_description, of_20_bytes_is_progressive) {
    const bytes stream = pack(short_sinf(2, 1, " a08") + sdat(k_samples));
    expect_accepted(stream);
    EXPECT_EQ(read_metadata(stream).up.frameLayout, 0u);
}

TEST(plane_description, of_21_bytes_carries_the_layout) {
    EXPECT_EQ(read_metadata(single_plane(2, 1, " a08", k_samples, 0)).up.frameLayout, 0u);
    EXPECT_EQ(read_metadata(single_plane(2, 1, " a08", k_samples, 1)).up.frameLayout, 1u);
}

TEST(plane_description, of_more_bytes_is_skipped_behind_the_layout) {
    const bytes stream = pack(long_sinf(2, 1, " a08", 1, repeat(0xff, 37)) + sdat(k_samples));
    expect_accepted(stream);
    EXPECT_EQ(read_metadata(stream).up.frameLayout, 1u);
}

TEST(plane_description, of_19_bytes_or_less_is_refused) {
    for (const uint32_t size : {0u, 7u, 8u, 19u}) {
        SCOPED_TRACE(size);
        bytes plane = sinf(2, 1, " a08");
        plane[0] = static_cast<uint8_t>(size);
        expect_refused(pack(plane + sdat(k_samples)), "sinf box size expected to be at least 20 bytes at offset 8");
        expect_refused(pack(box("icmp", plane + sdat(k_samples))),
                       "sinf box size expected to be at least 20 bytes at offset 16");
    }
}

TEST(plane_description, with_another_layout_than_0_and_1_is_refused) {
    expect_refused(single_plane(2, 1, " a08", k_samples, 2), "Undefined value of frame layout: 2");
    expect_refused(single_plane(2, 1, " a08", k_samples, 255), "Undefined value of frame layout: 255");
    expect_refused(pack(long_sinf(2, 1, " a08", 3, {0}) + sdat(k_samples)), "Undefined value of frame layout: 3");
}

TEST(plane_description, fields_that_run_past_the_pack_are_refused) {
    const bytes plane = sinf(2, 1, " a08");
    expect_refused(box_with_size("pack", 28, plane), "can't read 21 bytes at offset 8");
    expect_refused(box_with_size("pack", 16, plane), "can't read 21 bytes at offset 8");
    expect_refused(box_with_size("pack", 27, short_sinf(2, 1, " a08")), "can't read 20 bytes at offset 8");
    expect_refused(pack(box("icmp", bytes(plane.begin(), plane.begin() + 20))), "can't read 21 bytes at offset 16");
}

TEST(plane_description, that_skips_past_the_pack_leaves_no_data_box) {
    bytes plane = sinf(2, 1, " a08");
    plane[0] = 200;
    expect_refused(pack(plane + sdat(k_samples)), "can't read box header(8 bytes) at offset 208");
    plane[0] = plane[1] = plane[2] = plane[3] = 0xff;
    expect_refused(pack(plane + sdat(k_samples)), "can't read box header(8 bytes) at offset 4294967303");
}

TEST(plane_data, smaller_than_its_rows_is_refused) {
    expect_refused(single_plane(2, 1, " a08", {1}), "'sdat' box size expected to be at least 10 at offset 29");
    expect_refused(pack(component(2, 1, "y210", counting(4))),
                   "'sdat' box size expected to be at least 13 at offset 37");
    expect_refused(pack(sinf(2, 1, " a08") + box_with_size("sdat", 0, k_samples)),
                   "'sdat' box size expected to be at least 10 at offset 29");
}

TEST(plane_data, of_a_coded_plane_needs_9_bytes) {
    expect_refused(single_plane(2, 1, "rl08", {}), "'sdat' box size expected to be at least 9 at offset 29");
    EXPECT_EQ(read_metadata(single_plane(2, 1, "rl08", {0})).status, 0u);
    EXPECT_EQ(read_metadata(single_plane(20000, 10000, "rl16", {0})).status, 0u);
}

TEST(plane_data, that_must_reach_past_the_pack_is_refused) {
    expect_refused(pack(sinf(2, 1, " a08") + box_with_size("sdat", 10, {1})), "can't read 10 bytes at offset 37");
    expect_refused(pack(sinf(2, 1, "rl08") + box_with_size("sdat", 100, {})), "can't read 9 bytes at offset 37");
    expect_refused(box_with_size("pack", 38, bare_plane(2, 1, " a08", k_samples)), "can't read 10 bytes at offset 37");
}

TEST(plane_data, larger_than_its_rows_is_accepted) {
    expect_accepted(single_plane(2, 1, " a08", {1, 2, 3, 4, 5}));
    const bytes stream = pack(component(2, 1, "y208", counting(9, 1)) + component(2, 1, " a08", {9, 8, 7}));
    expect_bytes(decode(frame_record(16, 1, 2, 1), stream), "01020304 0908");
}

TEST(plane_data, may_declare_to_run_past_the_pack) {
    expect_accepted(pack(sinf(2, 1, " a08") + box_with_size("sdat", 0xffffffffu, k_samples)));
}

TEST(plane_data, whose_least_size_passes_32_bits_is_too_small) {
    expect_refused(single_plane(0xffffffffu, 0xffffffffu, " a08", k_samples),
                   "'sdat' box size expected to be at least 18446744065119617033 at offset 29");
    // 65536 x 65536 bytes are 0 modulo 2^32.
    expect_refused(single_plane(65536, 65536, " a08", k_samples),
                   "'sdat' box size expected to be at least 4294967304 at offset 29");
}

TEST(plane_data, of_a_plane_without_pixels_needs_its_header_only) {
    EXPECT_EQ(read_metadata(single_plane(0, 5, " a16", {})).status, 0u);
    EXPECT_EQ(read_metadata(single_plane(5, 0, "rg08", {})).status, 0u);
}

TEST(reader, every_truncation_of_a_frame_is_refused) {
    const bytes whole = pack(component(2, 1, "y208", counting(4)) + component(2, 1, " a08", {9, 8}));
    ASSERT_EQ(read_metadata(whole).status, 0u);
    decoder with;
    for (size_t size = 0; size < whole.size(); ++size) {
        SCOPED_TRACE(size);
        const bytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
        expect_failure(decode(with, frame_record(16, 1, 2, 1), cut),
                       size < 8 ? "buffer size should be at least 8"
                                : "pack box size(" + std::to_string(whole.size()) + ") is greater than buffer size(" +
                                      std::to_string(size) + ")");
    }
}

}  // namespace
