// SPDX-License-Identifier: BSD-3-Clause
//
// The properties that encoder and decoder share.
#pragma once

#include <gst/gst.h>

#include "formats.h"

namespace qvr_gst {

struct codec_settings {
    guint threads = 0;
    packed_444 choice = k_444_off;
};

// Identifiers of the shared properties; an element's own begin behind them.
enum { k_threads = 1, k_packed_444, k_first_own_property };

void install_codec_properties(GObjectClass* object_class);
// False when the identifier is none of the shared ones.
bool set_codec_property(codec_settings& settings, guint id, const GValue* value);
bool get_codec_property(const codec_settings& settings, guint id, GValue* value);

}  // namespace qvr_gst
