// SPDX-License-Identifier: BSD-3-Clause
//
// A million boxes of the smallest sizes. A reader that looked back at those it has seen would not come to an end here.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "box_builder.h"
#include "probe.h"

namespace {

using namespace hostile;
using namespace test;

constexpr uint32_t k_million = 1000000;

bytes repeated(const bytes& one, uint32_t count) {
    bytes all;
    all.reserve(one.size() * count + 200);
    for (uint32_t i = 0; i < count; ++i) {
        all.insert(all.end(), one.begin(), one.end());
    }
    return all;
}

const bytes k_plane = bare_plane(2, 1, " a08", {7, 9});

// All five calls, without the model.
struct reader {
    explicit reader(const bytes& content) : source(content) { source.make_read_only(); }

    std::string metadata() {
        frame_params up = frame_record(0, 0, 0, 0);
        return with.told(QVRUncompressed_ReadMetadata(with.handle(), source.data(), source.size32(), &up));
    }
    std::string decode() {
        const frame_params up = frame_record(14, 1, 2, 1);
        guarded_buffer target(2);
        const std::string heard = with.told(
            QVRUncompressed_DecodeFrame(with.handle(), &up, source.data(), source.size32(), target.data(), 2, nullptr));
        return heard == "ok" ? to_hex(target.copy()) : heard;
    }
    std::string wrap_metadata(std::vector<wrap_params>& records) {
        frame_params up = frame_record(0, 0, 0, 0);
        return with.told(QVRUncompressed_ReadWrapMetadata(with.handle(), source.data(), source.size32(), &up,
                                                          records.data(), static_cast<uint32_t>(records.size())));
    }
    uint32_t wrap_count() { return QVRUncompressed_ReadWrapCount(source.data(), source.size32()); }
    // `targets` may be the same buffer over and over: the payloads here are empty.
    std::string unwrap(const std::vector<wrap_params>& records, uint8_t* payload_target) {
        const frame_params up = frame_record(14, 1, 2, 1);
        guarded_buffer target(2);
        const std::vector<uint8_t*> pointers(records.size(), payload_target);
        return with.told(QVRUncompressed_DecodeAndUnwrapFrame(
            with.handle(), &up, records.data(), static_cast<uint32_t>(records.size()), source.data(), source.size32(),
            target.data(), 2, pointers.data(), nullptr));
    }

    prober with;
    guarded_buffer source;
};

void expect_refused(reader& all, const std::string& message) {
    std::vector<wrap_params> records(1, wrap_record(1, 0));
    EXPECT_EQ(all.metadata(), message);
    EXPECT_EQ(all.decode(), message);
    EXPECT_EQ(all.wrap_metadata(records), message);
    EXPECT_EQ(all.wrap_count(), 0u);
    EXPECT_EQ(all.unwrap({wrap_record(1, 0)}, nullptr), "status 2 with 0 messages");
    uint8_t unused = 0;
    EXPECT_EQ(all.unwrap({wrap_record(1, 0)}, &unused), message);
}

TEST(a_million_boxes, of_unknown_types_are_passed) {
    for (const char* type : {"free", "pack", "sdat", "stch", "tile"}) {
        for (const uint32_t size : {0u, 7u, 8u}) {
            SCOPED_TRACE(testing::Message() << type << " of " << size);
            reader all(pack(repeated(box_with_size(type, size, {}), k_million) + k_plane));
            std::vector<wrap_params> records(1, wrap_record(1, 0));
            EXPECT_EQ(all.metadata(), "ok");
            EXPECT_EQ(all.decode(), "0709");
            EXPECT_EQ(all.wrap_metadata(records), "Can't read 1 wrap boxes, only 0 found");
            EXPECT_EQ(all.wrap_count(), 0u);
        }
    }
}

TEST(a_million_boxes, of_unknown_types_without_a_plane_are_refused) {
    reader all(pack(repeated(box_with_size("free", 0, {}), k_million)));
    expect_refused(all, "at least one 'sinf' and one 'sdat' box expected");
}

TEST(a_million_boxes, of_wrapped_frames_are_counted) {
    reader all(pack(repeated(box("QCXF", {}), k_million) + k_plane));
    EXPECT_EQ(all.metadata(), "ok");
    EXPECT_EQ(all.decode(), "0709");
    EXPECT_EQ(all.wrap_count(), k_million);
    std::vector<wrap_params> records(k_million, wrap_record(77, 78));
    ASSERT_EQ(all.wrap_metadata(records), "ok");
    for (const wrap_params& record : records) {
        ASSERT_EQ(record.wrapType, 1u);
        ASSERT_EQ(record.dataSize, 0u);
    }
    records.push_back(wrap_record(77, 78));
    EXPECT_EQ(all.wrap_metadata(records), "Can't read 1000001 wrap boxes, only 1000000 found");
    uint8_t unused = 0x55;
    EXPECT_EQ(all.unwrap({wrap_record(1, 0)}, &unused), "ok");
    EXPECT_EQ(all.unwrap(std::vector<wrap_params>(k_million, wrap_record(1, 0)), &unused),
              "Only single QCX wrap chunk supported for decode");
    EXPECT_EQ(unused, 0x55u);
}

TEST(a_million_boxes, of_wrapped_frames_with_a_bad_one_last_are_refused) {
    reader all(pack(k_plane + repeated(box("QCXF", {}), k_million) + box_with_size("QCXF", 7, {})));
    expect_refused(all, "'QCXF' box size expected to be at least 8 at offset 8000039");
}

TEST(a_million_boxes, of_stitched_chunks_are_taken_out) {
    const bytes chunks = box("stch", {}) + repeated(box("tile", {}), k_million - 1);
    reader all(single_plane(2, 1, "stch", chunks));
    EXPECT_EQ(all.metadata(), "ok");
    EXPECT_EQ(all.wrap_count(), k_million);
    std::vector<wrap_params> records(k_million, wrap_record(77, 78));
    ASSERT_EQ(all.wrap_metadata(records), "ok");
    EXPECT_EQ(records.front().wrapType, 2u);
    EXPECT_EQ(records.back().wrapType, 3u);
    uint8_t unused = 0x55;
    EXPECT_EQ(all.unwrap(records, &unused), "ok");
    EXPECT_EQ(unused, 0x55u);
    records.push_back(wrap_record(3, 0));
    EXPECT_EQ(all.unwrap(records, &unused),
              "1000000 wrap boxes found in bytestream, but 1000001 expected according to wrap params");
}

TEST(a_million_boxes, of_no_size_among_stitched_chunks_are_passed) {
    const bytes chunks = repeated(box_with_size("free", 0, {}), k_million) + box("stch", {4});
    reader all(single_plane(2, 1, "stch", chunks));
    EXPECT_EQ(all.wrap_count(), 1u);
    uint8_t payload = 0;
    EXPECT_EQ(all.unwrap({wrap_record(2, 1)}, &payload), "ok");
    EXPECT_EQ(payload, 4u);
}

// The least plane there can be takes 37 bytes: no rows, and so no data.
TEST(a_million_boxes, of_planes_are_refused_as_a_combination) {
    reader all(pack(repeated(component(0, 0, " a08", {}), k_million)));
    expect_refused(all, "Invalid combination of planes");
}

TEST(a_million_boxes, of_planes_with_unknown_types_are_refused_as_a_combination) {
    reader all(pack(repeated(component(0, 0, "????", {}), k_million) + component(2, 1, " a08", {7, 9})));
    expect_refused(all, "Invalid combination of planes");
}

// Each plane has chunks of its own, and all of them go into one list before the planes are looked at.
TEST(a_million_boxes, in_many_stitched_planes_are_refused_as_a_combination) {
    const bytes chunks = box("stch", {}) + box("tile", {}) + box("tile", {});
    reader all(pack(repeated(component(2, 1, "stch", chunks), k_million / 4)));
    expect_refused(all, "Invalid combination of planes");
}

// One box inside the other, as deep as a million headers go: only the outermost level means anything.
TEST(a_million_boxes, inside_each_other_are_refused_at_the_second) {
    bytes nested;
    nested.reserve(8 * k_million);
    for (uint32_t i = 0; i < k_million; ++i) {
        const bytes header = box_with_size(i == 0 ? "pack" : "icmp", 8 * (k_million - i), {});
        nested.insert(nested.end(), header.begin(), header.end());
    }
    reader all(nested);
    expect_refused(all, "'sinf' box expected at offset 20");
}

// A plane that says too much hides nothing: the frame goes on behind what it holds when its box says too little.
TEST(a_million_boxes, that_end_before_their_plane_does_are_left_behind_it) {
    const bytes short_component = box_with_size("icmp", 8, bare_plane(0, 0, " a08", {}));
    reader all(pack(repeated(short_component, k_million)));
    expect_refused(all, "Invalid combination of planes");
}

}  // namespace
