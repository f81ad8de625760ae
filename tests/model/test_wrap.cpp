// SPDX-License-Identifier: BSD-3-Clause
#include "test_helpers.h"

using namespace model_test;
using model::bytes;

namespace {

bytes qcx(std::uint32_t id, std::uint16_t width, std::uint16_t height, std::size_t size = 45) {
    bytes data(size, 0);
    data[24] = static_cast<std::uint8_t>(height >> 8);
    data[25] = static_cast<std::uint8_t>(height & 0xFF);
    data[26] = static_cast<std::uint8_t>(width >> 8);
    data[27] = static_cast<std::uint8_t>(width & 0xFF);
    data[42] = static_cast<std::uint8_t>(id >> 8);
    data[43] = static_cast<std::uint8_t>(id & 0xFF);
    return data;
}

const model::stream_params raw_stream{0, 0};

std::string wrap_failure(const model::frame_params& params, const bytes& payload, const bytes& alpha) {
    const auto size = static_cast<std::uint32_t>(payload.size());
    return failure_of([&] {
        model::encode_and_wrap(params, raw_stream, {{1, size}}, 1, look(alpha), {look(payload)}, 10000000);
    });
}

}  // namespace

TEST(model_wrap, wraps_three_chunks) {
    const bytes a = counting(10), b = counting(20), c = counting(30);
    const std::vector<model::wrap_params> wraps = {{2, 10}, {2, 20}, {2, 30}};
    const bytes stream =
        model::encode_and_wrap(frame(0, 0, 7, 3), raw_stream, wraps, 3, {}, {look(a), look(b), look(c)}, 121);
    EXPECT_EQ(stream, box("pack", sinf(7, 3, "stch") + box("sdat", box("stch", a) + box("tile", b) + box("tile", c))));
    EXPECT_EQ(model::compressed_wrap_size(frame(0, 0, 7, 3), raw_stream, wraps, 3), 121u);
    EXPECT_EQ(model::read_wrap_count(look(stream)), 3u);
    const model::wrap_metadata metadata = model::read_wrap_metadata(look(stream), 3);
    EXPECT_EQ(metadata.frame.order, 0u);
    EXPECT_EQ(metadata.frame.width, 7u);
    EXPECT_EQ(metadata.wraps[0].type, 2u);
    EXPECT_EQ(metadata.wraps[1].type, 3u);
    EXPECT_EQ(metadata.wraps[2].type, 3u);
    EXPECT_EQ(metadata.wraps[2].size, 30u);
    EXPECT_EQ(model::read_wrap_metadata(look(stream), 4).failure_text, "Can't read 4 wrap boxes, only 3 found");
    const model::unwrapped out = model::decode_and_unwrap({}, wraps, 2, look(stream), {});
    EXPECT_EQ(out.written, 0u);
    EXPECT_EQ(out.payloads, (std::vector<bytes>{a, b}));
}

TEST(model_wrap, wraps_a_compressed_frame_with_alpha) {
    const bytes payload = qcx(1300, 4, 2);
    const bytes alpha = counting(8);
    const std::vector<model::wrap_params> wraps = {{1, 45}};
    const bytes stream =
        model::encode_and_wrap(frame(14, 1, 4, 2), raw_stream, wraps, 1, look(alpha), {look(payload)}, 98);
    EXPECT_EQ(stream, box("pack", box("QCXF", payload) + sinf(4, 2, " a08") + box("sdat", alpha)));
    bytes out(8, 0);
    const model::unwrapped back = model::decode_and_unwrap(frame(14, 1, 4, 2), wraps, 1, look(stream), into(out));
    EXPECT_EQ(out, alpha);
    EXPECT_EQ(back.written, 8u);
    EXPECT_EQ(back.payloads, (std::vector<bytes>{payload}));
}

TEST(model_wrap, checks_the_compressed_frame) {
    const bytes alpha(1440 * 1080, 0);
    model::frame_params params = frame(14, 1, 1440, 1080);
    EXPECT_EQ(wrap_failure(params, qcx(1259, 0, 0), alpha), "no failure");
    EXPECT_EQ(wrap_failure(params, bytes(44, 0), alpha), "Size is too small to parse QCX header");
    EXPECT_EQ(wrap_failure(params, bytes(45, 0), alpha), "Invalid compression ID in QCX header");
    bytes flagged = qcx(1259, 0, 0);
    flagged[7] = 1;
    EXPECT_EQ(wrap_failure(params, flagged, alpha), "Can't wrap uncompressed alpha and QCX with alpha flag set");
    EXPECT_EQ(wrap_failure(params, qcx(1235, 0, 0), alpha),
              "Uncompressed params width 1440 is not equal QCX width 1920");
    EXPECT_EQ(wrap_failure(params, qcx(1300, 1440, 1), alpha),
              "Uncompressed params height 1080 is not equal QCX height 1");
    EXPECT_EQ(wrap_failure(params, qcx(1244, 0, 0), alpha),
              "Uncompressed params frame layout is not compatible with interlaced QCX");
    params.frame_layout = 1;
    EXPECT_EQ(wrap_failure(params, qcx(1244, 0, 0), alpha), "no failure");
    EXPECT_EQ(wrap_failure(params, qcx(1259, 0, 0), alpha),
              "Uncompressed params frame layout is not compatible with progressive QCX");
}

TEST(model_wrap, checks_the_records) {
    const auto run = [](const model::frame_params& params, const std::vector<model::wrap_params>& wraps,
                        std::uint32_t count) {
        return failure_of([&] { model::plan_wrapped_frame(params, raw_stream, wraps, count); });
    };
    EXPECT_EQ(run(frame(14, 1, 1, 1), {{2, 1}, {0, 1}}, 2), "Unknown wrap type");
    EXPECT_EQ(run(frame(14, 1, 1, 1), {{1, 1}, {1, 1}}, 2), "Single QCX wrap params expected");
    EXPECT_EQ(run(frame(14, 1, 1, 1), {{1, 1}}, 0), "Single QCX wrap params expected");
    EXPECT_EQ(run(frame(14, 3, 1, 1), {{3, 1}}, 1), "8/16 bit single alpha plane expected");
    EXPECT_EQ(run(frame(5, 1, 1, 1), {{3, 1}}, 1), "8/16 bit single alpha plane expected");
    EXPECT_EQ(model::plan_wrapped_frame(frame(14, 1, 4, 2), raw_stream, {{3, 9}}, 1).total() == 45, true);
    EXPECT_EQ(model::plan_wrapped_frame(frame(14, 1, 4, 2), raw_stream, {{0, 9}}, 0).total() == 45, true);
    EXPECT_EQ(model::plan_wrapped_frame(frame(14, 1, 4, 2), raw_stream, {{2, 9}}, 0).total() == 37, true);
}

TEST(model_wrap, checks_the_stream_when_unwrapping) {
    const bytes payload = qcx(1300, 4, 2);
    const bytes plain = box("pack", sinf(4, 2, " a08") + box("sdat", bytes(8, 0)));
    const bytes wrapped = box("pack", box("QCXF", payload) + sinf(4, 2, " a08") + box("sdat", bytes(8, 0)));
    const bytes colour = box("pack", box("QCXF", payload) + sinf(4, 2, "rg08") + box("sdat", bytes(24, 0)));
    bytes out(8, 0);
    const auto run = [&](const bytes& stream, model::wrap_params record, std::uint32_t count, std::size_t room) {
        return failure_of([&] {
            model::decode_and_unwrap(frame(14, 1, 4, 2), {record}, count, look(stream), {out.data(), room});
        });
    };
    EXPECT_EQ(failure_of([&] {
                  model::decode_and_unwrap(frame(14, 1, 4, 2), {{1, 45}}, 1, look(wrapped), {});
              }),
              "dst buffer is null");
    EXPECT_EQ(run(wrapped, {1, 45}, 1, 7), "dst size is too small");
    EXPECT_EQ(run(wrapped, {1, 45}, 2, 8), "Only single QCX wrap chunk supported for decode");
    EXPECT_EQ(run(plain, {1, 45}, 1, 8), "0 wrap boxes found in bytestream, but 1 expected according to wrap params");
    EXPECT_EQ(run(wrapped, {1, 44}, 1, 8), "'QCXF' box size is not equal wrap params size");
    EXPECT_EQ(run(wrapped, {3, 45}, 1, 8), "'QCXF' box type is not equal to wrap params type");
    EXPECT_EQ(run(colour, {1, 45}, 1, 8), "Alpha plane is not found");
    EXPECT_EQ(run(wrapped, {2, 44}, 1, 8), "Extra box size is not equal wrap params size");
    EXPECT_EQ(run(wrapped, {2, 44}, 3, 8), "1 wrap boxes found in bytestream, but 3 expected according to wrap params");
    EXPECT_EQ(run(wrapped, {1, 45}, 1, 8), "no failure");
}

TEST(model_wrap, copies_only_payloads_inside_the_source) {
    const bytes stream = box("pack", sinf(4, 2, " a08") + box("sdat", bytes(8, 0)) + sized_box("QCXF", 100, {}));
    bytes out(8, 0);
    EXPECT_EQ(model::read_wrap_count(look(stream)), 1u);
    EXPECT_EQ(failure_of([&] {
                  model::decode_and_unwrap(frame(14, 1, 4, 2), {{1, 92}}, 1, look(stream), into(out));
              }),
              "can't read 92 bytes at offset 53");
}

TEST(model_wrap, compares_raw_alpha_with_the_rows_of_the_caller) {
    const auto run = [](const std::string& name, std::uint32_t height, std::size_t size) {
        const bytes stream = box("pack", box("QCXF", {}) + box("icmp", sinf(1, 1, "rg08") + box("sdat", bytes(3, 0))) +
                                             box("icmp", sinf(1, height, name) + box("sdat", counting(size))));
        bytes out(6, 0);
        return failure_of([&] { model::decode_and_unwrap(frame(5, 1, 1, 1), {{1, 0}}, 1, look(stream), into(out)); });
    };
    const char* const misfit = "Alpha plane with different width or height is not supported by this decoder";
    EXPECT_EQ(run(" a16", 1, 2), misfit);        // a row of two bytes does not fit one of one
    EXPECT_EQ(run(" a08", 2, 2), "no failure");  // the caller has a row less
    EXPECT_EQ(run(" a08", 1, 1), "no failure");
}
