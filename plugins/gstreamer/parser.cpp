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
#include "frame_view.h"
#include "mapped_buffer.h"
#include "stream.h"

namespace qvr_gst {

namespace {

enum { k_framerate = 1 };

struct fraction {
    gint numerator = 0;
    gint denominator = 1;
};

constexpr fraction k_default_rate = {25, 1};

struct parser_state {
    fraction wanted_rate;            // the property, under the object's lock; 0: as upstream says
    fraction rate = k_default_rate;  // the one that counts, under the object's lock as seeking threads read it
    GstCaps* upstream = nullptr;     // what its caps say goes on, as far as the frames do not say otherwise
    std::unique_ptr<decoder_codec> codec;
    std::optional<frame_params> described;  // by the caps downstream
    bool timed_upstream = false;            // upstream's buffers have times of their own
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
fraction copy_of(gpointer object, fraction parser_state::*rate) {
    GST_OBJECT_LOCK(object);
    const fraction copy = state_of(object).*rate;
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
    const fraction rate = copy_of(object, &parser_state::wanted_rate);
    gst_value_set_fraction(value, rate.numerator, rate.denominator);
}

// ---- Life and times

// The property, else what upstream says, else the default.
void choose_rate(GstBaseParse* parser) {
    parser_state& state = state_of(parser);
    fraction rate = copy_of(parser, &parser_state::wanted_rate);
    if (rate.numerator == 0 && state.upstream != nullptr) {
        gst_structure_get_fraction(gst_caps_get_structure(state.upstream, 0), "framerate", &rate.numerator,
                                   &rate.denominator);
    }
    if (rate.numerator <= 0) {
        rate = k_default_rate;
    }
    GST_OBJECT_LOCK(parser);
    state.rate = rate;
    GST_OBJECT_UNLOCK(parser);
    gst_base_parse_set_frame_rate(parser, static_cast<guint>(rate.numerator), static_cast<guint>(rate.denominator), 0,
                                  0);
}

GstClockTime time_of(const fraction& rate, std::uint64_t frame) {
    return gst_util_uint64_scale(frame, GST_SECOND * static_cast<std::uint64_t>(rate.denominator),
                                 static_cast<std::uint64_t>(rate.numerator));
}

// Times are rounded down, so the frame of time_of(n) is looked for a nanosecond later.
std::uint64_t frame_at(const fraction& rate, GstClockTime time) {
    return gst_util_uint64_scale(time + 1, static_cast<std::uint64_t>(rate.numerator),
                                 GST_SECOND * static_cast<std::uint64_t>(rate.denominator));
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

const char* interlace_mode_of(const frame_params& frame, const GstStructure* upstream) {
    const char* const given = gst_structure_get_string(upstream, "interlace-mode");
    if (given != nullptr && std::string(given) == "mixed") {
        return "mixed";
    }
    return frame.frameLayout == QVRUncompressed_LayoutInterlaced ? "interleaved" : "progressive";
}

// Wrapped chunks may have any dimensions, also such as caps cannot say.
GstFlowReturn describe(GstBaseParse* parser, const frame_params& frame) {
    parser_state& state = state_of(parser);
    if (state.described && state.described->width == frame.width && state.described->height == frame.height &&
        state.described->frameLayout == frame.frameLayout) {
        return GST_FLOW_OK;
    }
    const fraction rate = copy_of(parser, &parser_state::rate);
    GstCaps* const caps =
        state.upstream != nullptr ? gst_caps_copy(state.upstream) : gst_caps_new_empty_simple(k_media_type);
    const auto dimension = [](std::uint32_t value) {
        return static_cast<gint>(std::clamp<std::uint32_t>(value, 1, k_most_pixels));
    };
    gst_caps_set_simple(caps, "parsed", G_TYPE_BOOLEAN, TRUE, "width", G_TYPE_INT, dimension(frame.width), "height",
                        G_TYPE_INT, dimension(frame.height), "framerate", GST_TYPE_FRACTION, rate.numerator,
                        rate.denominator, "interlace-mode", G_TYPE_STRING,
                        interlace_mode_of(frame, gst_caps_get_structure(caps, 0)), nullptr);
    const bool taken = gst_pad_set_caps(GST_BASE_PARSE_SRC_PAD(parser), caps) != FALSE;
    gst_caps_unref(caps);
    if (!taken) {
        return caps_refused(GST_BASE_PARSE_SRC_PAD(parser));
    }
    state.described = frame;
    return GST_FLOW_OK;
}

// ---- Frames

// Bytes to go on by where no frame begins: up to the next place where one may, or to where the next header may lie.
gint distance_to_frame(const std::uint8_t* data, std::size_t size) {
    std::size_t at = 1;
    while (at + k_header_size <= size && !starts_frame(data + at, trust::known_box)) {
        ++at;
    }
    return static_cast<gint>(std::min(at, std::size_t{std::numeric_limits<gint>::max()}));
}

void warn(GstBaseParse* parser, const char* what, const char* reason, std::uint64_t offset) {
    GST_ELEMENT_WARNING(parser, STREAM, DEMUX, ("%s", what), ("%s, at byte %" G_GUINT64_FORMAT, reason, offset));
}

// Says how long a file is whose frames are all as large as its first.
void set_duration(GstBaseParse* parser, std::uint32_t size) {
    gint64 total = 0;
    if (gst_pad_peer_query_duration(GST_BASE_PARSE_SINK_PAD(parser), GST_FORMAT_BYTES, &total) && total > 0 &&
        total % size == 0) {
        const GstClockTime duration =
            time_of(copy_of(parser, &parser_state::rate), static_cast<std::uint64_t>(total / size));
        gst_base_parse_set_duration(parser, GST_FORMAT_TIME, static_cast<gint64>(duration), 0);
    }
}

// Frames of a file get their times from their numbers: the base class would add up durations that are rounded.
void set_times(GstBaseParse* parser, GstBaseParseFrame* frame, std::uint32_t size) {
    parser_state& state = state_of(parser);
    if (state.timed_upstream) {
        return;
    }
    if (frame->offset == 0) {
        set_duration(parser, size);
    }
    state.index.add(frame->offset, size);
    if (const std::optional<std::uint64_t> number = state.index.number_of(frame->offset)) {
        const fraction rate = copy_of(parser, &parser_state::rate);
        GST_BUFFER_PTS(frame->buffer) = time_of(rate, *number);
        GST_BUFFER_DURATION(frame->buffer) = time_of(rate, *number + 1) - GST_BUFFER_PTS(frame->buffer);
    }
}

// A frame that is all there. What cannot be read keeps its place in time, once the caps are known, but does not go on.
GstFlowReturn finish(GstBaseParse* parser, GstBaseParseFrame* frame, const std::uint8_t* data, std::uint32_t size,
                     gint* skip) {
    parser_state& state = state_of(parser);
    frame_params read = {};
    read.size = sizeof read;
    const bool readable =
        QVRUncompressed_ReadMetadata(state.codec->get(), data, size, &read) == QVRUncompressed_StatusOk;
    if (!readable || !is_taken(read)) {
        warn(parser, "A damaged frame was left out.",
             readable ? "its dimensions are 0 or too large" : state.codec->message(), frame->offset);
        if (!state.described) {
            *skip = static_cast<gint>(size);
            return GST_FLOW_OK;
        }
        frame->flags |= GST_BASE_PARSE_FRAME_FLAG_DROP;
    } else if (const GstFlowReturn described = describe(parser, read); described != GST_FLOW_OK) {
        return described;
    }
    set_times(parser, frame, size);
    return gst_base_parse_finish_frame(parser, frame, static_cast<gint>(size));
}

GstFlowReturn look_at(GstBaseParse* parser, GstBaseParseFrame* frame, const mapped_buffer& bytes, gint* skip) {
    const bool lost = GST_BASE_PARSE_LOST_SYNC(parser) != FALSE;
    if (bytes.size() < k_header_size) {
        *skip = static_cast<gint>(bytes.size());
        return GST_FLOW_OK;
    }
    if (!starts_frame(bytes.data(), lost ? trust::known_box : trust::any_box)) {
        if (!lost) {
            warn(parser, "Bytes between frames were skipped.", "no frame begins", frame->offset);
        }
        *skip = distance_to_frame(bytes.data(), bytes.size());
        return GST_FLOW_OK;
    }
    const std::uint32_t size = frame_size(bytes.data());
    if (size > std::uint32_t{G_MAXINT}) {
        GST_ELEMENT_ERROR(parser, STREAM, DEMUX, ("A frame is larger than GStreamer's parsers take: 2 GiB or more."),
                          ("%u bytes, at byte %" G_GUINT64_FORMAT, size, frame->offset));
        return GST_FLOW_ERROR;
    }
    if (bytes.size() >= size) {
        gst_base_parse_set_min_frame_size(parser, k_header_size);
        return finish(parser, frame, bytes.data(), size, skip);
    }
    if (GST_BASE_PARSE_DRAINING(parser)) {
        warn(parser, "An incomplete frame was left out.", "the file was cut short, or the frame's size is damaged",
             frame->offset);
        *skip = distance_to_frame(bytes.data(), bytes.size());
        return GST_FLOW_OK;
    }
    gst_base_parse_set_min_frame_size(parser, size);
    return GST_FLOW_OK;
}

GstFlowReturn handle_frame(GstBaseParse* parser, GstBaseParseFrame* frame, gint* skip) {
    const mapped_buffer bytes(frame->buffer, GST_MAP_READ);
    if (!bytes) {
        GST_ELEMENT_ERROR(parser, RESOURCE, READ, ("A buffer could not be read."), (nullptr));
        return GST_FLOW_ERROR;
    }
    return look_at(parser, frame, bytes, skip);
}

// ---- Events

// A seek to a frame number becomes one to its time.
GstEvent* in_time(const fraction& rate, GstEvent* event) {
    gdouble speed = 1;
    GstFormat format = GST_FORMAT_UNDEFINED;
    GstSeekFlags flags = GST_SEEK_FLAG_NONE;
    GstSeekType start_type = GST_SEEK_TYPE_NONE;
    GstSeekType stop_type = GST_SEEK_TYPE_NONE;
    gint64 start_at = 0;
    gint64 stop_at = 0;
    gst_event_parse_seek(event, &speed, &format, &flags, &start_type, &start_at, &stop_type, &stop_at);
    if (format != GST_FORMAT_DEFAULT) {
        return event;
    }
    const auto time = [&](gint64 frame) {
        return frame < 0 ? -1 : static_cast<gint64>(time_of(rate, static_cast<std::uint64_t>(frame)));
    };
    GstEvent* const result =
        gst_event_new_seek(speed, GST_FORMAT_TIME, flags, start_type, time(start_at), stop_type, time(stop_at));
    gst_event_set_seqnum(result, gst_event_get_seqnum(event));
    gst_event_unref(event);
    return result;
}

// Tells the base class where the wanted frame is, so that it need not guess from the average bit rate.
void locate(GstBaseParse* parser, const fraction& rate, GstEvent* seek) {
    GstFormat format = GST_FORMAT_UNDEFINED;
    gint64 time = 0;
    gst_event_parse_seek(seek, nullptr, &format, nullptr, nullptr, &time, nullptr, nullptr);
    GstPad* const pad = GST_BASE_PARSE_SINK_PAD(parser);
    if (format != GST_FORMAT_TIME || time < 0 || GST_PAD_MODE(pad) != GST_PAD_MODE_PULL) {
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
        const fraction rate = copy_of(parser, &parser_state::rate);
        event = in_time(rate, event);
        locate(parser, rate, event);
    }
    return parent_class->src_event(parser, event);
}

// ---- Class

void init(GTypeInstance* instance, gpointer) {
    reinterpret_cast<parser_element*>(instance)->state = new parser_state;
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
}

}  // namespace

bool register_parser(GstPlugin* plugin) {
    const GType type =
        new_type<parser_element, GstBaseParseClass>(GST_TYPE_BASE_PARSE, "GstQvrParse", class_init, init);
    return gst_element_register(plugin, "qvrparse", GST_RANK_PRIMARY + 1, type) != FALSE;
}

}  // namespace qvr_gst
