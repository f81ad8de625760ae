// SPDX-License-Identifier: BSD-3-Clause
//
// qvrparse: cuts a file of frames into frames, describes them, gives them times and finds any of them.
#include <gst/base/gstbaseparse.h>

#include <algorithm>
#include <limits>
#include <memory>
#include <optional>
#include <string>

#include "codec.h"
#include "elements.h"
#include "formats.h"
#include "frame_index.h"
#include "frame_numbers.h"
#include "mapped_buffer.h"
#include "stream.h"

namespace qvr_gst {

namespace {

enum { k_framerate = 1 };

constexpr frame_rate k_default_rate = {25, 1};

struct parser_state {
    frame_rate wanted_rate;            // the property, under the object's lock; 0: as upstream says
    frame_rate rate = k_default_rate;  // the one that counts, under the object's lock as seeking threads read it
    GstCaps* upstream = nullptr;       // what its caps say goes on, as far as the frames do not say otherwise
    std::unique_ptr<decoder_codec> codec;
    std::optional<frame_params> described;  // by the caps downstream
    bool timed_upstream = false;            // upstream's buffers have times of their own
    bool passing_over = false;              // bytes that are no frame, of which a warning has been given
    frame_index index;
};

struct parser_element {
    GstBaseParse base;
    parser_state* state;
};

GstBaseParseClass* parent_class = nullptr;

parser_state& state_of(gpointer object) {
    return *static_cast<parser_element*>(object)->state;
}

// A rate, which another thread may be about to change.
frame_rate copy_of(gpointer object, frame_rate parser_state::*rate) {
    GST_OBJECT_LOCK(object);
    const frame_rate copy = state_of(object).*rate;
    GST_OBJECT_UNLOCK(object);
    return copy;
}

// ---- Properties

void set_property(GObject* object, guint id, const GValue* value, GParamSpec* spec) {
    if (id != k_framerate) {
        G_OBJECT_WARN_INVALID_PROPERTY_ID(object, id, spec);
        return;
    }
    GST_OBJECT_LOCK(object);
    state_of(object).wanted_rate = {gst_value_get_fraction_numerator(value), gst_value_get_fraction_denominator(value)};
    GST_OBJECT_UNLOCK(object);
}

void get_property(GObject* object, guint id, GValue* value, GParamSpec* spec) {
    if (id != k_framerate) {
        G_OBJECT_WARN_INVALID_PROPERTY_ID(object, id, spec);
        return;
    }
    const frame_rate rate = copy_of(object, &parser_state::wanted_rate);
    gst_value_set_fraction(value, rate.numerator, rate.denominator);
}

// ---- Life and times

// The property, else what upstream says, which may be a variable rate, else the default.
void choose_rate(GstBaseParse* parser) {
    parser_state& state = state_of(parser);
    frame_rate rate = copy_of(parser, &parser_state::wanted_rate);
    const bool said = rate.is_fixed() || (state.upstream != nullptr &&
                                          gst_structure_get_fraction(gst_caps_get_structure(state.upstream, 0),
                                                                     "framerate", &rate.numerator, &rate.denominator));
    if (!said || rate.numerator < 0) {
        rate = k_default_rate;
    }
    GST_OBJECT_LOCK(parser);
    state.rate = rate;
    GST_OBJECT_UNLOCK(parser);
    gst_base_parse_set_frame_rate(parser, static_cast<guint>(rate.numerator), static_cast<guint>(rate.denominator), 0,
                                  0);
}

gboolean start(GstBaseParse* parser) {
    parser_state& state = state_of(parser);
    state.codec = std::make_unique<decoder_codec>(1);
    if (!*state.codec) {
        GST_ELEMENT_ERROR(parser, LIBRARY, INIT, ("The parser could not be made."), ("%s", state.codec->message()));
        return FALSE;
    }
    state.described.reset();
    state.timed_upstream = false;
    state.passing_over = false;
    state.index.clear();
    gst_base_parse_set_min_frame_size(parser, k_header_size);
    choose_rate(parser);
    return TRUE;
}

gboolean stop(GstBaseParse* parser) {
    parser_state& state = state_of(parser);
    gst_clear_caps(&state.upstream);
    state.codec.reset();
    return TRUE;
}

gboolean set_sink_caps(GstBaseParse* parser, GstCaps* caps) {
    parser_state& state = state_of(parser);
    gst_caps_replace(&state.upstream, caps);
    state.described.reset();
    choose_rate(parser);
    return TRUE;
}

// ---- Caps

GstFlowReturn describe(GstBaseParse* parser, const frame_params& frame) {
    parser_state& state = state_of(parser);
    if (state.described && state.described->width == frame.width && state.described->height == frame.height &&
        state.described->frameLayout == frame.frameLayout) {
        return GST_FLOW_OK;
    }
    GstCaps* const caps = described_caps(state.upstream, frame, copy_of(parser, &parser_state::rate));
    const bool taken = gst_pad_set_caps(GST_BASE_PARSE_SRC_PAD(parser), caps) != FALSE;
    gst_caps_unref(caps);
    if (!taken) {
        return caps_refused(GST_BASE_PARSE_SRC_PAD(parser));
    }
    state.described = frame;
    return GST_FLOW_OK;
}

GstCaps* get_sink_caps(GstBaseParse* parser, GstCaps* filter) {
    GstCaps* const wanted = gst_pad_peer_query_caps(GST_BASE_PARSE_SRC_PAD(parser), nullptr);
    return undescribed_caps(wanted, filter, copy_of(parser, &parser_state::wanted_rate).is_fixed());
}

// ---- Frames

// What is known to follow, from this place on, at most.
std::uint64_t bytes_left(GstBaseParse* parser, std::uint64_t offset, std::size_t here) {
    if (GST_BASE_PARSE_DRAINING(parser)) {
        return here;
    }
    gint64 total = 0;
    const bool known = !state_of(parser).timed_upstream &&
                       gst_pad_peer_query_duration(GST_BASE_PARSE_SINK_PAD(parser), GST_FORMAT_BYTES, &total) != FALSE;
    return known && static_cast<std::uint64_t>(total) > offset ? static_cast<std::uint64_t>(total) - offset
                                                               : std::numeric_limits<std::uint64_t>::max();
}

void warn(GstBaseParse* parser, const char* what, const char* reason, std::uint64_t offset) {
    GST_ELEMENT_WARNING(parser, STREAM, DEMUX, ("%s", what), ("%s, at byte %" G_GUINT64_FORMAT, reason, offset));
}

// Says how long a file is whose frames are all as large as its first.
void set_duration(GstBaseParse* parser, std::uint32_t size) {
    const frame_rate rate = copy_of(parser, &parser_state::rate);
    gint64 total = 0;
    if (rate.is_fixed() && gst_pad_peer_query_duration(GST_BASE_PARSE_SINK_PAD(parser), GST_FORMAT_BYTES, &total) &&
        total > 0 && total % size == 0) {
        const GstClockTime duration = time_of(rate, static_cast<std::uint64_t>(total / size));
        gst_base_parse_set_duration(parser, GST_FORMAT_TIME, static_cast<gint64>(duration), 0);
    }
}

// A frame that is all there, and what it reads as: empty when it is damaged.
struct whole_frame {
    std::uint32_t size = 0;
    std::optional<frame_params> content;
};

// Frames of a file get their times from their numbers: the base class would add up durations that are rounded.
void set_times(GstBaseParse* parser, GstBaseParseFrame* frame, const whole_frame& found) {
    parser_state& state = state_of(parser);
    if (state.timed_upstream) {
        return;
    }
    if (frame->offset == 0) {
        set_duration(parser, found.size);
    }
    state.index.add(frame->offset, found.size, found.content.has_value());
    const frame_rate rate = copy_of(parser, &parser_state::rate);
    const std::optional<std::uint64_t> number = state.index.number_of(frame->offset);
    if (number && rate.is_fixed()) {
        GST_BUFFER_PTS(frame->buffer) = time_of(rate, *number);
        GST_BUFFER_DURATION(frame->buffer) = time_of(rate, *number + 1) - GST_BUFFER_PTS(frame->buffer);
    }
}

// What cannot be read keeps its place in time but does not go on.
GstFlowReturn finish(GstBaseParse* parser, GstBaseParseFrame* frame, const whole_frame& found, gint* skip) {
    if (found.content) {
        if (const GstFlowReturn described = describe(parser, *found.content); described != GST_FLOW_OK) {
            return described;
        }
    } else {
        frame->flags |= GST_BASE_PARSE_FRAME_FLAG_DROP;
    }
    set_times(parser, frame, found);
    if (!state_of(parser).described) {  // the base class finishes no frame before there are caps
        *skip = static_cast<gint>(found.size);
        return GST_FLOW_OK;
    }
    return gst_base_parse_finish_frame(parser, frame, static_cast<gint>(found.size));
}

whole_frame read(GstBaseParse* parser, const mapped_buffer& bytes, std::uint32_t size, std::uint64_t offset) {
    decoder_codec& codec = *state_of(parser).codec;
    frame_params content = {};
    content.size = sizeof content;
    const bool readable =
        QVRUncompressed_ReadMetadata(codec.get(), bytes.data(), size, &content) == QVRUncompressed_StatusOk;
    if (readable && is_taken(content)) {
        return {size, content};
    }
    warn(parser, "A damaged frame was left out.", readable ? "its dimensions are 0 or too large" : codec.message(),
         offset);
    return {size, std::nullopt};
}

// No frame lies here that could go on. What lies behind one another is one warning.
gint pass_over(GstBaseParse* parser, const mapped_buffer& bytes, bool said, const char* what, const char* reason,
               std::uint64_t offset) {
    if (!said) {
        warn(parser, what, reason, offset);
    }
    state_of(parser).passing_over = true;
    const std::size_t distance =
        distance_to_frame(bytes.data(), bytes.size(), GST_BASE_PARSE_DRAINING(parser) != FALSE);
    return static_cast<gint>(std::min(distance, std::size_t{G_MAXINT}));
}

// Says what the bytes begin with: a frame that is all there goes to `found`, else more are asked for or some skipped.
GstFlowReturn look_at(GstBaseParse* parser, const mapped_buffer& bytes, std::uint64_t offset, whole_frame& found,
                      gint* skip) {
    const bool lost = GST_BASE_PARSE_LOST_SYNC(parser) != FALSE;
    if (bytes.size() < k_header_size) {
        *skip = static_cast<gint>(bytes.size());
        return GST_FLOW_OK;
    }
    if (!starts_frame(bytes.data(), lost ? trust::known_box : trust::any_box)) {
        *skip = pass_over(parser, bytes, lost, "Bytes between frames were skipped.",
                          "no frame begins, or one that is too large", offset);
        return GST_FLOW_OK;
    }
    const std::uint32_t size = frame_size(bytes.data());
    const bool whole = size <= bytes.size();
    if (!whole && size > bytes_left(parser, offset, bytes.size())) {
        *skip = pass_over(parser, bytes, state_of(parser).passing_over, "An incomplete frame was left out.",
                          "the file was cut short, or the frame's size is damaged", offset);
        return GST_FLOW_OK;
    }
    if (size > std::uint32_t{G_MAXINT}) {
        GST_ELEMENT_ERROR(parser, STREAM, DEMUX, ("A frame is larger than GStreamer's parsers take: 2 GiB or more."),
                          ("%u bytes, at byte %" G_GUINT64_FORMAT, size, offset));
        return GST_FLOW_ERROR;
    }
    gst_base_parse_set_min_frame_size(parser, whole ? std::uint32_t{k_header_size} : size);
    state_of(parser).passing_over = false;
    if (whole) {
        found = read(parser, bytes, size, offset);
    }
    return GST_FLOW_OK;
}

// The mapping ends before the frame goes on, as downstream may write to it.
GstFlowReturn handle_frame(GstBaseParse* parser, GstBaseParseFrame* frame, gint* skip) {
    whole_frame found;
    GstFlowReturn result = GST_FLOW_OK;
    {
        const mapped_buffer bytes(frame->buffer, GST_MAP_READ);
        if (!bytes) {
            GST_ELEMENT_ERROR(parser, RESOURCE, READ, ("A buffer could not be read."), (nullptr));
            return GST_FLOW_ERROR;
        }
        result = look_at(parser, bytes, frame->offset, found, skip);
    }
    return found.size > 0 ? finish(parser, frame, found, skip) : result;
}

// ---- Events and queries

// Tells the base class where the wanted frame is, so that it need not guess from the average bit rate.
void locate(GstBaseParse* parser, const frame_rate& rate, GstEvent* seek) {
    gdouble speed = 1;
    GstFormat format = GST_FORMAT_UNDEFINED;
    gint64 start = 0;
    gint64 stop = 0;
    gst_event_parse_seek(seek, &speed, &format, nullptr, nullptr, &start, nullptr, &stop);
    const gint64 time = speed < 0 ? stop - 1 : start;  // backwards the frame before the place is the first
    GstPad* const pad = GST_BASE_PARSE_SINK_PAD(parser);
    if (format != GST_FORMAT_TIME || time < 0 || !rate.is_fixed() || GST_PAD_MODE(pad) != GST_PAD_MODE_PULL) {
        return;
    }
    const std::uint64_t frame = frame_at(rate, static_cast<GstClockTime>(time));
    if (const std::optional<std::uint64_t> offset = state_of(parser).index.find(frame, pad)) {
        gst_base_parse_add_index_entry(parser, *offset, time_of(rate, frame), TRUE, TRUE);
    }
}

gboolean sink_event(GstBaseParse* parser, GstEvent* event) {
    if (GST_EVENT_TYPE(event) == GST_EVENT_SEGMENT) {
        const GstSegment* segment = nullptr;
        gst_event_parse_segment(event, &segment);
        state_of(parser).timed_upstream = segment->format == GST_FORMAT_TIME;
    }
    return parent_class->sink_event(parser, event);
}

gboolean src_event(GstBaseParse* parser, GstEvent* event) {
    if (GST_EVENT_TYPE(event) == GST_EVENT_SEEK) {
        const frame_rate rate = copy_of(parser, &parser_state::rate);
        gint64 duration = -1;
        gst_pad_query_duration(GST_BASE_PARSE_SRC_PAD(parser), GST_FORMAT_TIME, &duration);
        event = seek_in_time(rate, duration, event);
        locate(parser, rate, event);
    }
    return parent_class->src_event(parser, event);
}

// The base class rounds where it converts frames to times and back.
gboolean src_query(GstBaseParse* parser, GstQuery* query) {
    const auto ask = [&](GstQuery* each) { return parent_class->src_query(parser, each) != FALSE; };
    return asks_in_frames(query) ? answer_in_frames(copy_of(parser, &parser_state::rate), query, ask) : ask(query);
}

gboolean convert(GstBaseParse* parser, GstFormat from, gint64 value, GstFormat to, gint64* result) {
    return convert_frames(copy_of(parser, &parser_state::rate), from, value, to, result) ||
           gst_base_parse_convert_default(parser, from, value, to, result);
}

// ---- Class

void init(GTypeInstance* instance, gpointer) {
    auto* const parser = reinterpret_cast<parser_element*>(instance);
    parser->state = new parser_state;
    // What downstream wants is a wish: caps that say less than it are taken as well.
    GST_PAD_SET_ACCEPT_TEMPLATE(GST_BASE_PARSE_SINK_PAD(&parser->base));
}

void finalize(GObject* object) {
    delete reinterpret_cast<parser_element*>(object)->state;
    G_OBJECT_CLASS(parent_class)->finalize(object);
}

void add_pads(GstElementClass* element_class) {
    GstCaps* const in = encoded_caps(framing::any);
    GstCaps* const out = encoded_caps(framing::parsed_and_described);
    gst_element_class_add_pad_template(element_class, gst_pad_template_new("sink", GST_PAD_SINK, GST_PAD_ALWAYS, in));
    gst_element_class_add_pad_template(element_class, gst_pad_template_new("src", GST_PAD_SRC, GST_PAD_ALWAYS, out));
    gst_caps_unref(in);
    gst_caps_unref(out);
}

void class_init(gpointer klass, gpointer) {
    parent_class = GST_BASE_PARSE_CLASS(g_type_class_peek_parent(klass));
    GObjectClass* const object_class = G_OBJECT_CLASS(klass);
    object_class->set_property = set_property;
    object_class->get_property = get_property;
    object_class->finalize = finalize;
    g_object_class_install_property(
        object_class, k_framerate,
        gst_param_spec_fraction(
            "framerate", "Frame rate",
            "Frames a second, which a stream does not say; 0/1: as upstream's caps say, else 25/1", 0, 1, G_MAXINT, 1,
            0, 1, static_cast<GParamFlags>(G_PARAM_READWRITE | G_PARAM_STATIC_STRINGS | GST_PARAM_MUTABLE_READY)));
    add_pads(GST_ELEMENT_CLASS(klass));
    gst_element_class_set_static_metadata(
        GST_ELEMENT_CLASS(klass), "QVRUncompressed video parser", "Codec/Parser/Video",
        "Cuts a file of QVRUncompressed frames into frames, gives them times and seeks to any of them", k_author);
    GstBaseParseClass* const parser_class = GST_BASE_PARSE_CLASS(klass);
    parser_class->start = start;
    parser_class->stop = stop;
    parser_class->set_sink_caps = set_sink_caps;
    parser_class->handle_frame = handle_frame;
    parser_class->sink_event = sink_event;
    parser_class->src_event = src_event;
    parser_class->src_query = src_query;
    parser_class->convert = convert;
    parser_class->get_sink_caps = get_sink_caps;
}

}  // namespace

bool register_parser(GstPlugin* plugin) {
    const GType type =
        new_type<parser_element, GstBaseParseClass>(GST_TYPE_BASE_PARSE, "GstQvrParse", class_init, init);
    return gst_element_register(plugin, "qvrparse", GST_RANK_PRIMARY + 1, type) != FALSE;
}

}  // namespace qvr_gst
