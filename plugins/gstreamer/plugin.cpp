// SPDX-License-Identifier: BSD-3-Clause
#include "elements.h"

GST_DEBUG_CATEGORY(qvr_debug);

namespace qvr_gst {

namespace {

gboolean init_plugin(GstPlugin* plugin) {
    GST_DEBUG_CATEGORY_INIT(qvr_debug, "qvr", 0, "QVRUncompressed encoder, decoder and parser");
    return register_encoder(plugin) && register_decoder(plugin) && register_parser(plugin) &&
           register_typefinder(plugin);
}

}  // namespace

}  // namespace qvr_gst

// The last of these is a web page, which there is none of; GStreamer's own name for that is used.
GST_PLUGIN_DEFINE(GST_VERSION_MAJOR, GST_VERSION_MINOR, qvr,
                  "Lossless, uncompressed QVRUncompressed video: encoder, decoder and parser", qvr_gst::init_plugin,
                  QVR_VERSION, "BSD", PACKAGE, "Unknown package origin")
