// SPDX-License-Identifier: BSD-3-Clause
//
// qvrenc: one raw frame in, one frame of the bitstream out.
#include <gst/video/gstvideoencoder.h>

#include <limits>
#include <memory>
#include <optional>

#include "buffer_pool.h"
#include "codec.h"
#include "elements.h"
#include "formats.h"
#include "frame_view.h"
#include "mapped_buffer.h"
#include "settings.h"
#include "stream.h"

namespace qvr_gst {

namespace {

enum { k_alpha_rle = k_first_own_property, k_rle_slices };

// What properties say; read and written under the object's lock.
struct encoder_settings {
    codec_settings codec;
    bool alpha_rle = false;
    guint rle_slices = 0;
};

struct encoder_state {
    encoder_settings settings;
    std::unique_ptr<encoder_codec> codec;
    GstVideoCodecState* input = nullptr;
    const format_row* row = nullptr;
    buffer_pool pool;
};

struct encoder_element {
    GstVideoEncoder base;
    encoder_state* state;
};

GstVideoEncoderClass* parent_class = nullptr;

encoder_state& state_of(gpointer object) {
    return *static_cast<encoder_element*>(object)->state;
}

encoder_settings settings_of(gpointer object) {
    GST_OBJECT_LOCK(object);
    const encoder_settings copy = state_of(object).settings;
    GST_OBJECT_UNLOCK(object);
    return copy;
}

// ---- Properties

void set_property(GObject* object, guint id, const GValue* value, GParamSpec* spec) {
    encoder_settings& settings = state_of(object).settings;
    GST_OBJECT_LOCK(object);
    if (id == k_alpha_rle) {
        settings.alpha_rle = g_value_get_boolean(value) != FALSE;
    } else if (id == k_rle_slices) {
        settings.rle_slices = g_value_get_uint(value);
    } else if (!set_codec_property(settings.codec, id, value)) {
        G_OBJECT_WARN_INVALID_PROPERTY_ID(object, id, spec);
    }
    GST_OBJECT_UNLOCK(object);
}

void get_property(GObject* object, guint id, GValue* value, GParamSpec* spec) {
    const encoder_settings settings = settings_of(object);
    if (id == k_alpha_rle) {
        g_value_set_boolean(value, settings.alpha_rle);
    } else if (id == k_rle_slices) {
        g_value_set_uint(value, settings.rle_slices);
    } else if (!get_codec_property(settings.codec, id, value)) {
        G_OBJECT_WARN_INVALID_PROPERTY_ID(object, id, spec);
    }
}

// ---- Life

gboolean start(GstVideoEncoder* encoder) {
    encoder_state& state = state_of(encoder);
    state.codec = std::make_unique<encoder_codec>(settings_of(encoder).codec.threads);
    if (!*state.codec) {
        GST_ELEMENT_ERROR(encoder, LIBRARY, INIT, ("The encoder could not be made."), ("%s", state.codec->message()));
        return FALSE;
    }
    return TRUE;
}

gboolean stop(GstVideoEncoder* encoder) {
    encoder_state& state = state_of(encoder);
    g_clear_pointer(&state.input, gst_video_codec_state_unref);
    state.pool.end();
    state.codec.reset();
    return TRUE;
}

// ---- Negotiation

GstCaps* get_caps(GstVideoEncoder* encoder, GstCaps* filter) {
    GstCaps* const raw = raw_caps(dimensions::for_encoding, settings_of(encoder).codec.choice);
    GstCaps* const whole_frames =
        gst_caps_from_string("video/x-raw, interlace-mode=(string){ progressive, interleaved, mixed }");
    GstCaps* const taken = gst_caps_intersect_full(raw, whole_frames, GST_CAPS_INTERSECT_FIRST);
    // Of the template, which stays: caps that are given here are lost where downstream takes nothing.
    GstCaps* const downstream = gst_video_encoder_proxy_getcaps(encoder, nullptr, filter);
    GstCaps* const result = gst_caps_intersect_full(taken, downstream, GST_CAPS_INTERSECT_FIRST);
    for (GstCaps* const caps : {raw, whole_frames, taken, downstream}) {
        gst_caps_unref(caps);
    }
    return result;
}

bool is_encodable(GstVideoEncoder* encoder, const GstVideoInfo& info, const format_row* row) {
    const char* reason = nullptr;
    if (row == nullptr) {
        reason = "this format cannot be encoded; put videoconvert before the encoder";
    } else if (info.interlace_mode > GST_VIDEO_INTERLACE_MODE_MIXED) {
        reason = "fields must be interleaved in one frame; put interlace or deinterlace before the encoder";
    } else if (!is_small_enough(static_cast<std::uint32_t>(GST_VIDEO_INFO_WIDTH(&info)),
                                static_cast<std::uint32_t>(GST_VIDEO_INFO_HEIGHT(&info)))) {
        reason = "the frame is too large";
    }
    if (reason != nullptr) {
        GST_ELEMENT_ERROR(encoder, STREAM, FORMAT, ("These frames cannot be encoded."), ("%s", reason));
    }
    return reason == nullptr;
}

gboolean set_format(GstVideoEncoder* encoder, GstVideoCodecState* input) {
    encoder_state& state = state_of(encoder);
    const format_row* const row = row_of(GST_VIDEO_INFO_FORMAT(&input->info));
    if (!is_encodable(encoder, input->info, row)) {
        return FALSE;
    }
    g_clear_pointer(&state.input, gst_video_codec_state_unref);
    state.input = gst_video_codec_state_ref(input);
    state.row = row;
    GstCaps* const caps =
        gst_caps_new_simple(k_media_type, "parsed", G_TYPE_BOOLEAN, TRUE, "interlace-mode", G_TYPE_STRING,
                            gst_video_interlace_mode_to_string(GST_VIDEO_INFO_INTERLACE_MODE(&input->info)), nullptr);
    gst_video_codec_state_unref(gst_video_encoder_set_output_state(encoder, caps, input));
    gst_video_encoder_set_latency(encoder, 0, 0);
    return gst_video_encoder_negotiate(encoder);
}

// Frames come as they are: any strides and offsets that a GstVideoMeta names.
gboolean propose_allocation(GstVideoEncoder* encoder, GstQuery* query) {
    gst_query_add_allocation_meta(query, GST_VIDEO_META_API_TYPE, nullptr);
    return parent_class->propose_allocation(encoder, query);
}

gboolean decide_allocation(GstVideoEncoder* encoder, GstQuery* query) {
    if (!parent_class->decide_allocation(encoder, query)) {
        return FALSE;
    }
    GstAllocator* allocator = nullptr;
    GstAllocationParams params = {};
    if (gst_query_get_n_allocation_params(query) > 0) {
        gst_query_parse_nth_allocation_param(query, 0, &allocator, &params);
    }
    state_of(encoder).pool.use(allocator, params);
    return TRUE;
}

// ---- Frames

QVRUncompressed_CompressedParams_t compression_of(const encoder_settings& settings) {
    return {QVRUNCOMPRESSED_COMPRESSED_PARAMS_SIZE, static_cast<std::uint8_t>(settings.alpha_rle),
            static_cast<std::uint8_t>(settings.rle_slices)};
}

// Encodes into a buffer of the pool, cut to what was written. Null on failure, which has then been reported.
buffer_pointer encode(GstVideoEncoder* encoder, const frame_view& view) {
    encoder_state& state = state_of(encoder);
    const QVRUncompressed_CompressedParams_t how = compression_of(settings_of(encoder));
    buffer_pointer buffer(state.pool.acquire(QVRUncompressed_GetCompressedBufSize(&view.up, &how)));
    std::uint32_t written = 0;
    {
        const mapped_buffer coded(buffer.get(), GST_MAP_WRITE);
        if (!coded) {
            GST_ELEMENT_ERROR(encoder, RESOURCE, NO_SPACE_LEFT, ("There is no memory for an encoded frame."),
                              (nullptr));
            return nullptr;
        }
        if (QVRUncompressed_EncodeFrame(state.codec->get(), &view.up, &how, view.data, view.size, coded.data(),
                                        coded.size(), &written) != QVRUncompressed_StatusOk) {
            GST_ELEMENT_ERROR(encoder, STREAM, ENCODE, ("A frame could not be encoded."),
                              ("%s", state.codec->message()));
            return nullptr;
        }
    }
    gst_buffer_set_size(buffer.get(), written);
    return buffer;
}

// Planes that do not lie as the library wants them are copied first.
buffer_pointer encode_frame(GstVideoEncoder* encoder, GstBuffer* raw) {
    const encoder_state& state = state_of(encoder);
    const mapped_frame source(state.input->info, raw, GST_MAP_READ);
    if (!source) {
        GST_ELEMENT_ERROR(encoder, STREAM, FORMAT, ("A frame is not what its caps say."), (nullptr));
        return nullptr;
    }
    if (const std::optional<frame_view> view = view_of(source.frame(), *state.row)) {
        return encode(encoder, *view);
    }
    GST_LOG_OBJECT(encoder, "copying a frame whose planes lie apart");
    const GstVideoInfo layout = gapless(state.input->info);
    const buffer_pointer copy(gst_buffer_new_allocate(nullptr, layout.size, nullptr));
    if (copy) {
        copy_field_flags(raw, copy.get());  // of a mixed stream they say whether this frame is interlaced
    }
    mapped_frame target(layout, copy.get(), GST_MAP_READWRITE);
    if (!target || !source.copy_to(target)) {
        GST_ELEMENT_ERROR(encoder, RESOURCE, NO_SPACE_LEFT, ("There is no memory for a copy of a frame."), (nullptr));
        return nullptr;
    }
    return encode(encoder, *view_of(target.frame(), *state.row));
}

GstFlowReturn handle_frame(GstVideoEncoder* encoder, GstVideoCodecFrame* frame) {
    frame->output_buffer = encode_frame(encoder, frame->input_buffer).release();
    if (frame->output_buffer == nullptr) {
        gst_video_encoder_finish_frame(encoder, frame);
        return GST_FLOW_ERROR;
    }
    copy_field_flags(frame->input_buffer, frame->output_buffer);
    GST_VIDEO_CODEC_FRAME_SET_SYNC_POINT(frame);
    return gst_video_encoder_finish_frame(encoder, frame);
}

// ---- Class

void init(GTypeInstance* instance, gpointer) {
    auto* const encoder = reinterpret_cast<encoder_element*>(instance);
    encoder->state = new encoder_state;
    // Caps that say nothing of interlacing are progressive ones, and no subset of those that do.
    GST_PAD_SET_ACCEPT_INTERSECT(GST_VIDEO_ENCODER_SINK_PAD(&encoder->base));
}

void finalize(GObject* object) {
    delete reinterpret_cast<encoder_element*>(object)->state;
    G_OBJECT_CLASS(parent_class)->finalize(object);
}

void install_properties(GObjectClass* object_class) {
    constexpr auto k_any_time =
        static_cast<GParamFlags>(G_PARAM_READWRITE | G_PARAM_STATIC_STRINGS | GST_PARAM_MUTABLE_PLAYING);
    object_class->set_property = set_property;
    object_class->get_property = get_property;
    object_class->finalize = finalize;
    install_codec_properties(object_class);
    g_object_class_install_property(
        object_class, k_alpha_rle,
        g_param_spec_boolean("alpha-rle", "Run-length coded alpha",
                             "Store alpha planes, and grey frames, run-length coded; lossless as well", FALSE,
                             k_any_time));
    g_object_class_install_property(
        object_class, k_rle_slices,
        g_param_spec_uint("rle-slices", "Slices of coded alpha",
                          "Slices that a coded alpha plane is cut into, each coded and decoded by one thread; 0 for 16",
                          0, std::numeric_limits<std::uint8_t>::max(), 0, k_any_time));
}

void add_pads(GstElementClass* element_class) {
    GstCaps* const raw = template_caps(dimensions::for_encoding);
    GstCaps* const coded = encoded_caps(framing::parsed_and_described);
    gst_element_class_add_pad_template(element_class, gst_pad_template_new("sink", GST_PAD_SINK, GST_PAD_ALWAYS, raw));
    gst_element_class_add_pad_template(element_class, gst_pad_template_new("src", GST_PAD_SRC, GST_PAD_ALWAYS, coded));
    gst_caps_unref(raw);
    gst_caps_unref(coded);
}

void class_init(gpointer klass, gpointer) {
    parent_class = GST_VIDEO_ENCODER_CLASS(g_type_class_peek_parent(klass));
    install_properties(G_OBJECT_CLASS(klass));
    add_pads(GST_ELEMENT_CLASS(klass));
    gst_element_class_set_static_metadata(
        GST_ELEMENT_CLASS(klass), "QVRUncompressed video encoder", "Codec/Encoder/Video",
        "Stores raw video frames in a self-describing, lossless, uncompressed bitstream", k_author);
    GstVideoEncoderClass* const encoder_class = GST_VIDEO_ENCODER_CLASS(klass);
    encoder_class->start = start;
    encoder_class->stop = stop;
    encoder_class->getcaps = get_caps;
    encoder_class->set_format = set_format;
    encoder_class->propose_allocation = propose_allocation;
    encoder_class->decide_allocation = decide_allocation;
    encoder_class->handle_frame = handle_frame;
}

}  // namespace

bool register_encoder(GstPlugin* plugin) {
    const GType type =
        new_type<encoder_element, GstVideoEncoderClass>(GST_TYPE_VIDEO_ENCODER, "GstQvrEnc", class_init, init);
    return gst_element_register(plugin, "qvrenc", GST_RANK_PRIMARY, type) != FALSE;
}

}  // namespace qvr_gst
