// SPDX-License-Identifier: BSD-3-Clause
#include "elements.h"
#include "stream.h"

namespace qvr_gst {

namespace {

void find_frame(GstTypeFind* find, gpointer) {
    const guint8* const header = gst_type_find_peek(find, 0, k_header_size);
    if (header != nullptr && starts_frame(header, trust::known_box)) {
        gst_type_find_suggest_simple(find, GST_TYPE_FIND_NEARLY_CERTAIN, k_media_type, nullptr, nullptr);
    }
}

}  // namespace

bool register_typefinder(GstPlugin* plugin) {
    GstCaps* const caps = gst_caps_new_empty_simple(k_media_type);
    const bool done =
        gst_type_find_register(plugin, k_media_type, GST_RANK_PRIMARY, find_frame, "qvr", caps, nullptr, nullptr) != 0;
    gst_caps_unref(caps);
    return done;
}

}  // namespace qvr_gst
