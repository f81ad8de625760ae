// SPDX-License-Identifier: BSD-3-Clause
//
// qvrdec: one frame of the bitstream in, one raw frame out.
#include <gst/video/gstvideodecoder.h>

#include <memory>
#include <optional>

#include "codec.h"
#include "elements.h"
#include "formats.h"
#include "frame_view.h"
#include "mapped_buffer.h"
#include "settings.h"
#include "stream.h"

namespace qvr_gst {

namespace {

struct decoder_state {
    codec_settings settings;  // under the object's lock
    std::unique_ptr<decoder_codec> codec;
    GstVideoCodecState* input = nullptr;
    GstVideoCodecState* output = nullptr;
    const format_row* row = nullptr;
    frame_params stream = {};    // what the output was negotiated for
    bool told_of_alpha = false;  // that it is left out
};

struct decoder_element {
    GstVideoDecoder base;
    decoder_state* state;
};

GstVideoDecoderClass* parent_class = nullptr;

decoder_state& state_of(gpointer object) {
    return *static_cast<decoder_element*>(object)->state;
}

codec_settings settings_of(gpointer object) {
    GST_OBJECT_LOCK(object);
    const codec_settings copy = state_of(object).settings;
    GST_OBJECT_UNLOCK(object);
    return copy;
}

// ---- Properties

void set_property(GObject* object, guint id, const GValue* value, GParamSpec* spec) {
    GST_OBJECT_LOCK(object);
    if (!set_codec_property(state_of(object).settings, id, value)) {
        G_OBJECT_WARN_INVALID_PROPERTY_ID(object, id, spec);
    }
    GST_OBJECT_UNLOCK(object);
}

void get_property(GObject* object, guint id, GValue* value, GParamSpec* spec) {
    if (!get_codec_property(settings_of(object), id, value)) {
        G_OBJECT_WARN_INVALID_PROPERTY_ID(object, id, spec);
    }
}

// ---- Life

gboolean start(GstVideoDecoder* decoder) {
    decoder_state& state = state_of(decoder);
    state.codec = std::make_unique<decoder_codec>(settings_of(decoder).threads);
    if (!*state.codec) {
        GST_ELEMENT_ERROR(decoder, LIBRARY, INIT, ("The decoder could not be made."), ("%s", state.codec->message()));
        return FALSE;
    }
    state.told_of_alpha = false;
    return TRUE;
}

// The next frame chooses its output anew.
void forget_output(decoder_state& state) {
    g_clear_pointer(&state.output, gst_video_codec_state_unref);
}

gboolean stop(GstVideoDecoder* decoder) {
    decoder_state& state = state_of(decoder);
    forget_output(state);
    g_clear_pointer(&state.input, gst_video_codec_state_unref);
    state.codec.reset();
    return TRUE;
}

// ---- Negotiation

gboolean set_format(GstVideoDecoder* decoder, GstVideoCodecState* input) {
    decoder_state& state = state_of(decoder);
    forget_output(state);
    g_clear_pointer(&state.input, gst_video_codec_state_unref);
    state.input = gst_video_codec_state_ref(input);
    return TRUE;
}

// The first of the formats that downstream takes; when it takes none the first of all, and negotiation fails.
const format_row* choose(GstVideoDecoder* decoder, GstCaps* offered) {
    GstCaps* const allowed = gst_pad_peer_query_caps(GST_VIDEO_DECODER_SRC_PAD(decoder), offered);
    GstCaps* const common = gst_caps_intersect_full(offered, allowed, GST_CAPS_INTERSECT_FIRST);
    const GstStructure* const first = gst_caps_get_structure(gst_caps_is_empty(common) ? offered : common, 0);
    const format_row* const row = row_of(gst_video_format_from_string(gst_structure_get_string(first, "format")));
    gst_caps_unref(common);
    gst_caps_unref(allowed);
    return row;
}

// A stream of mixed frames stays one whatever the single frame is.
GstVideoInterlaceMode interlace_mode_of(const GstVideoInfo& input, const frame_params& stream) {
    if (GST_VIDEO_INFO_INTERLACE_MODE(&input) == GST_VIDEO_INTERLACE_MODE_MIXED) {
        return GST_VIDEO_INTERLACE_MODE_MIXED;
    }
    return stream.frameLayout == QVRUncompressed_LayoutInterlaced ? GST_VIDEO_INTERLACE_MODE_INTERLEAVED
                                                                  : GST_VIDEO_INTERLACE_MODE_PROGRESSIVE;
}

// Nothing is lost of the file, but who keeps only what comes out of it should know.
void tell_of_alpha(GstVideoDecoder* decoder) {
    decoder_state& state = state_of(decoder);
    if (state.told_of_alpha || !leaves_alpha_out(*state.row, state.stream)) {
        return;
    }
    state.told_of_alpha = true;
    GST_ELEMENT_WARNING(decoder, STREAM, FORMAT, ("The alpha plane of this stream is left out."),
                        ("%s is decoded as %s, which has none", description_of(state.stream).c_str(),
                         gst_video_format_to_string(state.row->format)));
}

GstFlowReturn negotiate(GstVideoDecoder* decoder, const frame_params& stream) {
    decoder_state& state = state_of(decoder);
    forget_output(state);
    GstCaps* const offered = decoded_caps(stream, settings_of(decoder).choice);
    if (gst_caps_is_empty(offered)) {
        gst_caps_unref(offered);
        GST_ELEMENT_ERROR(decoder, STREAM, NOT_IMPLEMENTED,
                          ("There is no raw video format for this stream: %s%s.", description_of(stream).c_str(),
                           has_any_format(stream) ? "; set packed-444 to say what its three samples are" : ""),
                          ("order %u, component type %u", stream.colorComponentOrder, stream.componentType));
        return GST_FLOW_ERROR;
    }
    state.row = choose(decoder, offered);
    gst_caps_unref(offered);
    state.output = gst_video_decoder_set_interlaced_output_state(decoder, state.row->format,
                                                                 interlace_mode_of(state.input->info, stream),
                                                                 stream.width, stream.height, state.input);
    state.stream = stream;
    tell_of_alpha(decoder);
    return state.output != nullptr && gst_video_decoder_negotiate(decoder)
               ? GST_FLOW_OK
               : caps_refused(GST_VIDEO_DECODER_SRC_PAD(decoder));
}

bool is_negotiated_for(GstVideoDecoder* decoder, const frame_params& stream) {
    const decoder_state& state = state_of(decoder);
    const frame_params& known = state.stream;
    return state.output != nullptr && !gst_pad_check_reconfigure(GST_VIDEO_DECODER_SRC_PAD(decoder)) &&
           known.colorComponentOrder == stream.colorComponentOrder && known.componentType == stream.componentType &&
           known.width == stream.width && known.height == stream.height &&
           (known.frameLayout == stream.frameLayout ||
            GST_VIDEO_INFO_INTERLACE_MODE(&state.input->info) == GST_VIDEO_INTERLACE_MODE_MIXED);
}

// Frames may go out in any strides and offsets that a pool of downstream's wishes.
gboolean decide_allocation(GstVideoDecoder* decoder, GstQuery* query) {
    if (!parent_class->decide_allocation(decoder, query)) {
        return FALSE;
    }
    if (!gst_query_find_allocation_meta(query, GST_VIDEO_META_API_TYPE, nullptr)) {
        return TRUE;
    }
    GstBufferPool* pool = nullptr;
    gst_query_parse_nth_allocation_pool(query, 0, &pool, nullptr, nullptr, nullptr);
    if (pool != nullptr) {
        GstStructure* const config = gst_buffer_pool_get_config(pool);
        gst_buffer_pool_config_add_option(config, GST_BUFFER_POOL_OPTION_VIDEO_META);
        gst_buffer_pool_set_config(pool, config);
        gst_object_unref(pool);
    }
    return TRUE;
}

// ---- Frames

// A damaged frame is left out with a warning on the bus; the base class counts it against its "max-errors".
GstFlowReturn drop_damaged(GstVideoDecoder* decoder, GstVideoCodecFrame* frame, const char* reason) {
    GST_ELEMENT_WARNING(decoder, STREAM, DECODE, ("A damaged frame was left out."), ("%s", reason));
    gst_video_decoder_drop_frame(decoder, frame);
    GstFlowReturn result = GST_FLOW_OK;
    GST_VIDEO_DECODER_ERROR(decoder, 1, STREAM, DECODE, ("Too many frames are damaged."), ("%s", reason), result);
    return result;
}

// What became of a frame. That it is damaged does not stop the flow.
struct outcome {
    GstFlowReturn flow = GST_FLOW_OK;
    const char* damage = nullptr;  // the reason, until the library's next call
};

outcome no_memory(GstVideoDecoder* decoder) {
    GST_ELEMENT_ERROR(decoder, RESOURCE, NO_SPACE_LEFT, ("There is no memory for a decoded frame."), (nullptr));
    return {GST_FLOW_ERROR};
}

outcome decode(const decoder_state& state, const mapped_buffer& coded, const frame_view& to) {
    const bool good = QVRUncompressed_DecodeFrame(state.codec->get(), &to.up, coded.data(), coded.size(), to.data,
                                                  to.size, nullptr) == QVRUncompressed_StatusOk;
    return {GST_FLOW_OK, good ? nullptr : state.codec->message()};
}

// Decodes into a buffer of the pool, or by way of a copy when its planes do not lie as the library wants them.
outcome decode_into(GstVideoDecoder* decoder, const mapped_buffer& coded, mapped_frame& target) {
    const decoder_state& state = state_of(decoder);
    if (const std::optional<frame_view> view = view_of(target.frame(), *state.row)) {
        return decode(state, coded, *view);
    }
    GST_LOG_OBJECT(decoder, "copying a frame whose planes lie apart");
    const GstVideoInfo layout = gapless(state.output->info);
    const buffer_pointer copy(gst_buffer_new_allocate(nullptr, layout.size, nullptr));
    const mapped_frame source(layout, copy.get(), GST_MAP_READWRITE);
    if (!source) {
        return no_memory(decoder);
    }
    const outcome result = decode(state, coded, *view_of(source.frame(), *state.row));
    return result.damage != nullptr || source.copy_to(target) ? result : no_memory(decoder);
}

// Gives the frame a buffer of the right format to be decoded into.
GstFlowReturn allocate(GstVideoDecoder* decoder, GstVideoCodecFrame* frame, const frame_params& stream) {
    if (!is_negotiated_for(decoder, stream)) {
        if (const GstFlowReturn negotiated = negotiate(decoder, stream); negotiated != GST_FLOW_OK) {
            return negotiated;
        }
    }
    const GstFlowReturn allocated = gst_video_decoder_allocate_output_frame(decoder, frame);
    if (allocated == GST_FLOW_OK) {
        copy_field_flags(frame->input_buffer, frame->output_buffer);
        if (stream.frameLayout == QVRUncompressed_LayoutInterlaced) {
            GST_BUFFER_FLAG_SET(frame->output_buffer, GST_VIDEO_BUFFER_FLAG_INTERLACED);
        }
    }
    return allocated;
}

// All mappings end here, before the frame goes on.
outcome decode_frame(GstVideoDecoder* decoder, GstVideoCodecFrame* frame) {
    const decoder_state& state = state_of(decoder);
    const mapped_buffer coded(frame->input_buffer, GST_MAP_READ);
    if (!coded) {
        GST_ELEMENT_ERROR(decoder, RESOURCE, READ, ("A buffer could not be read."), (nullptr));
        return {GST_FLOW_ERROR};
    }
    frame_params stream = {};
    stream.size = sizeof stream;
    if (QVRUncompressed_ReadMetadata(state.codec->get(), coded.data(), coded.size(), &stream) !=
        QVRUncompressed_StatusOk) {
        return {GST_FLOW_OK, state.codec->message()};
    }
    if (!is_taken(stream)) {
        return {GST_FLOW_OK, "its dimensions are 0 or too large"};
    }
    if (const GstFlowReturn allocated = allocate(decoder, frame, stream); allocated != GST_FLOW_OK) {
        return {allocated};
    }
    mapped_frame target(state.output->info, frame->output_buffer, GST_MAP_WRITE);
    return target ? decode_into(decoder, coded, target) : no_memory(decoder);
}

GstFlowReturn handle_frame(GstVideoDecoder* decoder, GstVideoCodecFrame* frame) {
    const outcome result = decode_frame(decoder, frame);
    if (result.damage != nullptr) {
        return drop_damaged(decoder, frame, result.damage);
    }
    if (result.flow != GST_FLOW_OK) {
        gst_video_decoder_release_frame(decoder, frame);
        return result.flow;
    }
    return gst_video_decoder_finish_frame(decoder, frame);
}

// ---- Class

void init(GTypeInstance* instance, gpointer) {
    auto* const decoder = reinterpret_cast<decoder_element*>(instance);
    decoder->state = new decoder_state;
    gst_video_decoder_set_packetized(&decoder->base, TRUE);
    gst_video_decoder_set_needs_format(&decoder->base, TRUE);
    gst_video_decoder_set_use_default_pad_acceptcaps(&decoder->base, TRUE);
}

void finalize(GObject* object) {
    delete reinterpret_cast<decoder_element*>(object)->state;
    G_OBJECT_CLASS(parent_class)->finalize(object);
}

void add_pads(GstElementClass* element_class) {
    GstCaps* const coded = encoded_caps(framing::parsed);
    GstCaps* const raw = template_caps(dimensions::any);
    gst_element_class_add_pad_template(element_class,
                                       gst_pad_template_new("sink", GST_PAD_SINK, GST_PAD_ALWAYS, coded));
    gst_element_class_add_pad_template(element_class, gst_pad_template_new("src", GST_PAD_SRC, GST_PAD_ALWAYS, raw));
    gst_caps_unref(coded);
    gst_caps_unref(raw);
}

void class_init(gpointer klass, gpointer) {
    parent_class = GST_VIDEO_DECODER_CLASS(g_type_class_peek_parent(klass));
    GObjectClass* const object_class = G_OBJECT_CLASS(klass);
    object_class->set_property = set_property;
    object_class->get_property = get_property;
    object_class->finalize = finalize;
    install_codec_properties(object_class);
    add_pads(GST_ELEMENT_CLASS(klass));
    gst_element_class_set_static_metadata(
        GST_ELEMENT_CLASS(klass), "QVRUncompressed video decoder", "Codec/Decoder/Video",
        "Brings back the raw video frames of a QVRUncompressed bitstream, in any format that its planes fit", k_author);
    GstVideoDecoderClass* const decoder_class = GST_VIDEO_DECODER_CLASS(klass);
    decoder_class->start = start;
    decoder_class->stop = stop;
    decoder_class->set_format = set_format;
    decoder_class->decide_allocation = decide_allocation;
    decoder_class->handle_frame = handle_frame;
}

}  // namespace

bool register_decoder(GstPlugin* plugin) {
    const GType type =
        new_type<decoder_element, GstVideoDecoderClass>(GST_TYPE_VIDEO_DECODER, "GstQvrDec", class_init, init);
    return gst_element_register(plugin, "qvrdec", GST_RANK_PRIMARY, type) != FALSE;
}

}  // namespace qvr_gst
