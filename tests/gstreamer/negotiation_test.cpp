// SPDX-License-Identifier: BSD-3-Clause
//
// What the elements take, what they offer, and what they say when neither fits.
#include <gst/check/gstharness.h>
#include <gst/video/video.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "media.h"

using media::bytes;

namespace {

constexpr const char* k_coded_caps =
    "video/x-qvr-uncompressed,parsed=true,width=4,height=2,framerate=25/1,interlace-mode=progressive";

// One element whose messages are kept.
class watched {
  public:
    explicit watched(const std::string& description, const char* name)
        : harness(gst_harness_new_parse(description.c_str())), element(gst_harness_find_element(harness, name)) {
        gst_element_set_bus(element, bus);
    }
    ~watched() {
        gst_element_set_bus(element, nullptr);
        gst_object_unref(bus);
        gst_object_unref(element);
        gst_harness_teardown(harness);
    }
    watched(const watched&) = delete;
    watched& operator=(const watched&) = delete;

    // Of that kind since the last call: message and details.
    std::vector<std::string> messages(GstMessageType type) const {
        std::vector<std::string> result;
        while (GstMessage* const message = gst_bus_pop_filtered(bus, type)) {
            GError* error = nullptr;
            gchar* details = nullptr;
            (type == GST_MESSAGE_ERROR ? gst_message_parse_error : gst_message_parse_warning)(message, &error,
                                                                                              &details);
            result.push_back(std::string(error->message) + " / " + (details != nullptr ? details : ""));
            g_error_free(error);
            g_free(details);
            gst_message_unref(message);
        }
        return result;
    }
    std::string caps() const {
        GstCaps* const now = gst_pad_get_current_caps(harness->sinkpad);
        gchar* const text = gst_caps_to_string(now);
        std::string result = text;
        g_free(text);
        gst_caps_unref(now);
        return result;
    }
    GstFlowReturn push(const bytes& content) const { return gst_harness_push(harness, media::buffer_of(content)); }

    GstBus* const bus = gst_bus_new();
    GstHarness* const harness;
    GstElement* const element;
};

bool has(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

bytes stream_of(const media::raw_format& format) {
    const std::string caps = media::caps_text(format, 4, 2);
    GstBuffer* const raw = media::random_buffer(format, caps, 1);
    const bytes result = media::encoded(format, 4, 2, media::pixels_of(raw, caps));
    gst_buffer_unref(raw);
    return result;
}

bool takes_caps(GstHarness* harness, const std::string& text) {
    GstCaps* const caps = gst_caps_from_string(text.c_str());
    const bool accepted = gst_pad_query_accept_caps(GST_PAD_PEER(harness->srcpad), caps) != FALSE;
    gst_caps_unref(caps);
    return accepted;
}

}  // namespace

// No more than 2^32 - 1 bytes at eight for each pixel, whatever a pixel takes: parser and decoder draw the same line.
TEST(negotiation, the_encoder_takes_no_frame_that_the_others_refuse) {
    for (const char* format : {"GRAY8", "UYVY", "I420"}) {
        const watched encoder("qvrenc threads=1", "qvrenc");
        const auto offer = [&](const char* height) {
            const std::string start = std::string("video/x-raw,framerate=25/1,width=32768,format=") + format;
            gst_harness_set_src_caps_str(encoder.harness, (start + ",height=" + height).c_str());
            return encoder.messages(GST_MESSAGE_ERROR);
        };
        EXPECT_TRUE(offer("16382").empty()) << format;
        EXPECT_TRUE(has(encoder.caps(), "height=(int)16382")) << format;
        const auto errors = offer("16384");
        ASSERT_FALSE(errors.empty()) << format;
        EXPECT_TRUE(has(errors[0], "the frame is too large")) << errors[0];
    }
}

TEST(negotiation, fields_in_buffers_of_their_own_are_refused) {
    GstHarness* const encoder = gst_harness_new("qvrenc");
    const std::string caps = "video/x-raw,format=UYVY,width=4,height=4,framerate=25/1";
    EXPECT_TRUE(takes_caps(encoder, caps));
    for (const char* mode : {"progressive", "interleaved", "mixed"}) {
        EXPECT_TRUE(takes_caps(encoder, caps + ",interlace-mode=" + mode)) << mode;
    }
    for (const char* mode : {"fields", "alternate"}) {
        EXPECT_FALSE(takes_caps(encoder, caps + ",interlace-mode=" + mode)) << mode;
    }
    gst_harness_teardown(encoder);
}

TEST(negotiation, the_parser_hands_on_what_downstream_wants) {
    const std::string source = "videotestsrc num-buffers=1 ! video/x-raw,format=UYVY,framerate=30/1 ! qvrenc ! ";
    const std::string wanted = " ! video/x-qvr-uncompressed,width=64,height=48";
    const std::string sink = " ! fakesink";
    const auto plays = [](const std::string& description) {
        media::pipeline pipeline(description);
        return pipeline.run().eos;
    };
    EXPECT_TRUE(plays(source + "qvrparse" + wanted + sink));
    EXPECT_TRUE(plays(source + "qvrparse framerate=50/1" + wanted + ",framerate=50/1" + sink));
    EXPECT_FALSE(plays(source + "qvrparse" + wanted + ",framerate=50/1" + sink));
}

TEST(negotiation, the_parser_takes_caps_that_say_nothing) {
    const watched parser("qvrparse ! capsfilter caps=\"video/x-qvr-uncompressed,width=[1,99],framerate=[1/1,99/1]\"",
                         "qvrparse");
    gst_harness_set_src_caps_str(parser.harness, "video/x-qvr-uncompressed");
    const bytes frame = stream_of(media::format_named("RGB"));
    EXPECT_EQ(parser.push(frame), GST_FLOW_OK);
    EXPECT_EQ(gst_harness_buffers_received(parser.harness), 1u);
}

TEST(negotiation, a_variable_frame_rate_goes_along) {
    for (const char* elements : {"qvrenc ! qvrdec name=last", "qvrenc ! qvrparse ! qvrdec name=last"}) {
        const watched last(elements, "qvrdec");
        gst_harness_set_src_caps_str(last.harness, "video/x-raw,format=GRAY8,width=4,height=2,framerate=0/1");
        for (const GstClockTime time : {0u, 70000000u, 80000000u}) {
            GstBuffer* const raw = media::buffer_of(test::counting(8));
            GST_BUFFER_PTS(raw) = time;
            GstBuffer* const back = gst_harness_push_and_pull(last.harness, raw);
            ASSERT_NE(back, nullptr);
            EXPECT_EQ(GST_BUFFER_PTS(back), time);
            gst_buffer_unref(back);
        }
        EXPECT_TRUE(has(last.caps(), "framerate=(fraction)0/1")) << last.caps();
    }
}

TEST(negotiation, downstream_may_want_another_format_while_it_plays) {
    const watched decoder("qvrdec threads=1", "qvrdec");
    gst_harness_set_src_caps_str(decoder.harness, k_coded_caps);
    const bytes stream = stream_of(media::format_named("ARGB"));
    for (const char* wanted : {"ARGB", "BGR", "ABGR", "RGBA", "RGB", "ARGB"}) {
        gst_harness_set_sink_caps_str(decoder.harness, (std::string("video/x-raw,format=") + wanted).c_str());
        const bytes expected = test::decode(media::params_of(media::format_named(wanted), 4, 2), stream).frame();
        for (int i = 0; i < 2; ++i) {
            GstBuffer* const back = gst_harness_push_and_pull(decoder.harness, media::buffer_of(stream));
            ASSERT_NE(back, nullptr) << wanted;
            EXPECT_EQ(media::pixels_of(back, decoder.caps()), expected) << wanted;
            gst_buffer_unref(back);
        }
    }
}

TEST(negotiation, alpha_that_is_left_out_is_one_warning_a_stream) {
    const struct {
        const char* stored;
        const char* wanted;
        std::size_t warnings;
    } k_cases[] = {
        {"ARGB", "ARGB", 0}, {"ARGB", "RGB", 1}, {"A420", "I420", 1}, {"RGB", "RGB", 0}, {"GRAY8", "GRAY8", 0}};
    for (const auto& each : k_cases) {
        const watched decoder("qvrdec threads=1", "qvrdec");
        gst_harness_set_src_caps_str(decoder.harness, k_coded_caps);
        const bytes stream = stream_of(media::format_named(each.stored));
        for (int i = 0; i < 2; ++i) {
            gst_harness_set_sink_caps_str(decoder.harness, (std::string("video/x-raw,format=") + each.wanted).c_str());
            EXPECT_EQ(decoder.push(stream), GST_FLOW_OK);
            EXPECT_EQ(decoder.push(stream), GST_FLOW_OK);
        }
        const auto warnings = decoder.messages(GST_MESSAGE_WARNING);
        ASSERT_EQ(warnings.size(), each.warnings) << each.stored << " as " << each.wanted;
        EXPECT_TRUE(warnings.empty() || has(warnings[0], "The alpha plane of this stream is left out.")) << warnings[0];
    }
    const watched decoder("qvrdec threads=1", "qvrdec");
    gst_harness_set_src_caps_str(decoder.harness, k_coded_caps);
    const media::raw_format with_alpha = {"4:2:2 with alpha", 11, 1, 3, 1};
    EXPECT_EQ(decoder.push(media::encoded(with_alpha, 4, 2, test::counting(24))), GST_FLOW_OK);
    const auto warnings = decoder.messages(GST_MESSAGE_WARNING);
    ASSERT_EQ(warnings.size(), 1u);
    EXPECT_TRUE(has(warnings[0], "UYAVYA U8 is decoded as UYVY, which has none")) << warnings[0];
}

TEST(negotiation, packed_444_is_named_only_where_it_helps) {
    const auto reason = [](const char* choice, std::uint32_t type, std::uint32_t pixel_bytes) {
        const watched decoder(std::string("qvrdec packed-444=") + choice, "qvrdec");
        gst_harness_set_src_caps_str(decoder.harness, k_coded_caps);
        const media::raw_format format = {"4:4:4", 9, type, pixel_bytes, 0};
        decoder.push(media::encoded(format, 4, 2, test::repeat(1, 8 * pixel_bytes)));
        const auto errors = decoder.messages(GST_MESSAGE_ERROR);
        return errors.empty() ? "" : errors[0].substr(0, errors[0].find(" / "));
    };
    const std::string none = "There is no raw video format for this stream: ";
    EXPECT_EQ(reason("off", 1, 3), none + "YUV444 U8; set packed-444 to say what its three samples are.");
    EXPECT_EQ(reason("uyv", 1, 3), "");
    EXPECT_EQ(reason("off", 2, 6), none + "YUV444 U16.");
    EXPECT_EQ(reason("yuv", 2, 6), none + "YUV444 U16.");
}

// What is said when elements do not fit, as the documentation quotes it.
TEST(negotiation, elements_that_do_not_fit) {
    const media::temporary_file file(stream_of(media::format_named("RGB")));
    media::pipeline unparsed("filesrc location=" + file.path() + " ! qvrdec ! fakesink");
    const std::string error = unparsed.run().error;
    EXPECT_TRUE(has(error, "negotiation problem") && has(error, "decoder not initialized")) << error;
    try {
        const media::pipeline odd("videotestsrc ! video/x-raw,format=UYVY,width=63,height=48 ! qvrenc ! fakesink");
        FAIL() << "an odd width was taken";
    } catch (const std::logic_error& refused) {
        EXPECT_TRUE(has(refused.what(), "could not link videotestsrc")) << refused.what();
        EXPECT_TRUE(has(refused.what(), "can't handle caps video/x-raw, format=(string)UYVY")) << refused.what();
    }
}
