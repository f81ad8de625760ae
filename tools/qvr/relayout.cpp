// SPDX-License-Identifier: BSD-3-Clause
#include "relayout.h"

namespace qvr {

namespace {

bool same_layout(const frame_layout& a, const frame_layout& b) {
    return a.colorComponentOrder == b.colorComponentOrder && a.componentType == b.componentType &&
           a.rowBytes == b.rowBytes && a.rowBytes2 == b.rowBytes2;
}

}  // namespace

const frame& relayout::into(const frame_layout& wanted, const frame& from, const location& where) {
    if (same_layout(wanted, from.layout)) {
        return from;
    }
    if (!to_stream) {
        to_stream.emplace(threads);
        from_stream.emplace(threads);
    }
    const bytes_view coded = to_stream->encode(from, make_compression(false, 0), where);
    made.layout = wanted;
    from_stream->decode(coded, made, where);
    return made;
}

}  // namespace qvr
