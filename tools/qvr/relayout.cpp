// SPDX-License-Identifier: BSD-3-Clause
#include "relayout.h"

#include <utility>

namespace qvr {

namespace {

bool same_layout(const frame_layout& a, const frame_layout& b) {
    return a.colorComponentOrder == b.colorComponentOrder && a.componentType == b.componentType &&
           a.rowBytes == b.rowBytes && a.rowBytes2 == b.rowBytes2;
}

}  // namespace

void relayout::into(const frame_layout& wanted, frame& in, const location& where) {
    if (same_layout(wanted, in.layout)) {
        return;
    }
    if (!to_stream) {
        to_stream.emplace(threads);
        from_stream.emplace(threads);
    }
    const bytes_view coded = to_stream->encode(in, make_compression(false, 0), where);
    made.layout = wanted;
    from_stream->decode(coded, made, where);
    std::swap(in, made);
}

}  // namespace qvr
