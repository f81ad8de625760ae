// SPDX-License-Identifier: BSD-3-Clause
#include "container/frame_layout.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "api/base/errors.h"
#include "container/box_writer.h"
#include "container/parse.h"
#include "guarded_buffer.h"

namespace {

using container::frame_layout_plan;
using test::bytes;
using test::from_hex;

frame_layout_plan plan_of(std::uint32_t order, std::uint32_t type, std::uint32_t width, std::uint32_t height,
                          std::uint8_t coded = 0, std::uint8_t slices = 0, std::uint32_t layout = 0) {
    return container::plan_frame({36, order, type, width, height, 0, layout, 0}, {10, coded, slices});
}

template <class Failure, class Call>
std::string message_of(Call call) {
    try {
        call();
    } catch (const Failure& failure) {
        return failure.what();
    }
    return "no failure of this class";
}

TEST(frame_layout, a_single_plane_has_29_bytes_before_it) {
    const frame_layout_plan plan = plan_of(5, 1, 4, 2);
    ASSERT_EQ(plan.planes.size(), 1u);
    EXPECT_EQ(plan.planes[0].offset, 37u);
    EXPECT_EQ(plan.planes[0].size, 24u);
    EXPECT_EQ(plan.total, 61u);
}

TEST(frame_layout, two_planes_have_37_bytes_before_each) {
    const frame_layout_plan plan = plan_of(3, 1, 4, 2);
    ASSERT_EQ(plan.planes.size(), 2u);
    EXPECT_EQ(plan.planes[0].offset, 45u);
    EXPECT_EQ(plan.planes[1].offset, 45u + 24 + 37);
    EXPECT_EQ(plan.total, 114u);
}

TEST(frame_layout, chroma_is_halved_and_rounded_up) {
    const frame_layout_plan plan = plan_of(13, 1, 1921, 1081);
    ASSERT_EQ(plan.planes.size(), 4u);
    EXPECT_EQ(plan.planes[1].width, 961u);
    EXPECT_EQ(plan.planes[2].height, 541u);
    EXPECT_EQ(plan.planes[3].width, 1921u);
    EXPECT_EQ(plan_of(10, 1, 0xffffffff, 1).planes[1].width, 0x80000000u);
}

TEST(frame_layout, a_coded_plane_is_planned_at_its_worst_case) {
    const frame_layout_plan plan = plan_of(14, 1, 4, 2, 1, 1);
    EXPECT_EQ(plan.planes[0].type, fourcc("rl08"));
    EXPECT_EQ(plan.planes[0].size, 1659u + 11);
    EXPECT_EQ(plan.total, 37u + 1659 + 11);
}

TEST(frame_layout, the_last_plane_can_shrink_to_its_coded_size) {
    frame_layout_plan plan = plan_of(3, 1, 4, 2, 7, 1);
    plan.set_last_plane_size(14);
    EXPECT_EQ(plan.total, 45u + 24 + 37 + 14);
    EXPECT_EQ(plan.planes.back().size, 14u);
}

TEST(frame_layout, totals_are_exact_past_64_bits) {
    EXPECT_EQ(decimal(plan_of(5, 7, 0xffffffff, 0xffffffff).total), "221360928781435404337");
}

TEST(frame_layout, an_entry_that_has_its_place_adds_no_overhead_behind_it) {
    frame_layout_plan plan = plan_of(3, 1, 4, 2);
    plan.planes[0].offset = 1000;
    plan.planes[1].offset = 0;
    container::lay_out_frame(plan);
    EXPECT_EQ(plan.planes[1].offset, 1024u);
}

TEST(frame_layout, wrapped_boxes_come_before_the_planes) {
    frame_layout_plan plan;
    plan.wrap_boxes.push_back({container::k_qcxf, 10, 0});
    container::add_plane(plan, fourcc(" a08"), {36, 14, 1, 2, 1, 0, 0, 0}, 0);
    container::lay_out_frame(plan);
    EXPECT_EQ(plan.wrap_boxes[0].offset, 16u);
    EXPECT_EQ(plan.planes[0].offset, 26u + 29);
    EXPECT_EQ(plan.total, 57u);
}

TEST(frame_layout, roles_are_found_in_any_order_of_planes) {
    frame_layout_plan plan = plan_of(13, 1, 4, 2);
    std::swap(plan.planes[0], plan.planes[3]);
    const container::plane_roles roles = plan.roles();
    EXPECT_EQ(roles.main, &plan.planes[3]);
    EXPECT_EQ(roles.cb, &plan.planes[1]);
    EXPECT_EQ(roles.cr, &plan.planes[2]);
    EXPECT_EQ(roles.alpha, &plan.planes[0]);
    const frame_layout_plan lone = plan_of(14, 2, 4, 2);
    EXPECT_EQ(lone.roles().main, lone.roles().alpha);
    plan.planes[1].type = 0;
    EXPECT_EQ(message_of<invalid_argument>([&] { plan.roles(); }), "unsupported plane type");
}

TEST(metadata, a_main_plane_that_no_frame_has_is_refused) {
    frame_layout_plan plan = plan_of(10, 1, 4, 2);
    plan.planes[0].type = plan.planes[1].type;  // no luma
    plan.planes[1].type = plan.planes[2].type = fourcc(" a08");
    EXPECT_EQ(message_of<invalid_argument>([&] { container::read_metadata(plan); }), "Plane type is not supported");
}

TEST(frame_layout, a_plane_list_counts_more_planes_than_it_keeps) {
    container::plane_list planes;
    for (int i = 0; i < 1000000; ++i) {
        planes.push_back({});
    }
    EXPECT_EQ(planes.size(), 1000000u);
    EXPECT_EQ(planes.end() - planes.begin(), 4);
    EXPECT_EQ(message_of<invalid_argument>([&] { planes.check_combination(); }), "Invalid combination of planes");
}

TEST(write_container, writes_headers_and_leaves_payloads_alone) {
    const frame_layout_plan plan = plan_of(5, 1, 2, 1, 0, 0, 0x101);
    test::guarded_buffer out(43, test::guard::behind, 0xee);
    container::write_container(plan, out.data(), 43);
    EXPECT_EQ(test::to_hex(out.copy()), test::to_hex(from_hex("2b000000 'pack'"
                                                              "15000000 'sinf' 02000000 01000000 'rg08' 01"
                                                              "0e000000 'sdat' eeeeeeeeeeee")));
}

TEST(write_container, two_planes_stand_in_boxes_of_their_own) {
    const frame_layout_plan plan = plan_of(3, 1, 1, 1);
    test::guarded_buffer out(86, test::guard::behind, 0xee);
    container::write_container(plan, out.data(), 86);
    EXPECT_EQ(test::to_hex(out.copy()),
              test::to_hex(from_hex("56000000 'pack'"
                                    "28000000 'icmp' 15000000 'sinf' 01000000 01000000 'rg08' 00"
                                    "0b000000 'sdat' eeeeee"
                                    "26000000 'icmp' 15000000 'sinf' 01000000 01000000 20613038 00"
                                    "09000000 'sdat' ee")));
}

TEST(write_container, refuses_a_buffer_that_is_too_small) {
    const frame_layout_plan plan = plan_of(5, 1, 2, 1);
    test::guarded_buffer out(42, test::guard::behind, 0xee);
    EXPECT_EQ(message_of<invalid_argument>([&] { container::write_container(plan, out.data(), 42); }),
              "buffer is too small");
    EXPECT_EQ(out.copy(), bytes(42, 0xee));
}

TEST(box_writer, refuses_a_null_buffer_and_never_passes_its_end) {
    EXPECT_EQ(message_of<invalid_buffer>([] { container::box_writer(nullptr, 8); }), "buffer is null");
    test::guarded_buffer out(8);
    container::box_writer writer(out.data(), out.size());
    writer.write_header(8, container::k_pack);
    EXPECT_THROW(writer.write_32(0), invalid_argument);
    EXPECT_THROW(writer.skip(1), invalid_argument);
    EXPECT_EQ(out.copy(), from_hex("08000000 'pack'"));
}

}  // namespace
