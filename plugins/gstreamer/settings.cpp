// SPDX-License-Identifier: BSD-3-Clause
#include "settings.h"

namespace qvr_gst {

namespace {

constexpr guint k_most_threads = 256;

}  // namespace

void install_codec_properties(GObjectClass* object_class) {
    constexpr auto k_when_stopped =
        static_cast<GParamFlags>(G_PARAM_READWRITE | G_PARAM_STATIC_STRINGS | GST_PARAM_MUTABLE_READY);
    g_object_class_install_property(
        object_class, k_threads,
        g_param_spec_uint("threads", "Threads",
                          "Worker threads; 0: one per processor, 1: none, the streaming thread does all work", 0,
                          k_most_threads, 0, k_when_stopped));
    g_object_class_install_property(
        object_class, k_packed_444,
        g_param_spec_enum("packed-444", "Packed 4:4:4",
                          "What the three samples of a 4:4:4 YCbCr pixel are. A stream does not say; give the same to "
                          "encoder and decoder",
                          packed_444_type(), k_444_off, k_when_stopped));
}

bool set_codec_property(codec_settings& settings, guint id, const GValue* value) {
    switch (id) {
        case k_threads:
            settings.threads = g_value_get_uint(value);
            return true;
        case k_packed_444:
            settings.choice = static_cast<packed_444>(g_value_get_enum(value));
            return true;
        default:
            return false;
    }
}

bool get_codec_property(const codec_settings& settings, guint id, GValue* value) {
    switch (id) {
        case k_threads:
            g_value_set_uint(value, settings.threads);
            return true;
        case k_packed_444:
            g_value_set_enum(value, settings.choice);
            return true;
        default:
            return false;
    }
}

}  // namespace qvr_gst
