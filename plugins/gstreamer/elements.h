// SPDX-License-Identifier: BSD-3-Clause
//
// What the plug-in is made of, and how its parts are registered.
#pragma once

#include <gst/gst.h>

GST_DEBUG_CATEGORY_EXTERN(qvr_debug);
#define GST_CAT_DEFAULT qvr_debug

namespace qvr_gst {

constexpr const char* k_author = "The QVRUncompressed authors";

bool register_encoder(GstPlugin* plugin);
bool register_decoder(GstPlugin* plugin);
bool register_parser(GstPlugin* plugin);
bool register_typefinder(GstPlugin* plugin);

// What to return when downstream did not take the caps: a pad that is being flushed takes none, and is not at fault.
inline GstFlowReturn caps_refused(GstPad* pad) {
    return GST_PAD_IS_FLUSHING(pad) ? GST_FLOW_FLUSHING : GST_FLOW_NOT_NEGOTIATED;
}

// A GObject type of an instance and a class structure; to be called once.
template <class Instance, class Class>
GType new_type(GType parent, const char* name, void (*class_init)(gpointer, gpointer),
               void (*init)(GTypeInstance*, gpointer)) {
    return g_type_register_static_simple(parent, name, sizeof(Class), class_init, sizeof(Instance), init,
                                         static_cast<GTypeFlags>(0));
}

}  // namespace qvr_gst
