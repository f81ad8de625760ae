// SPDX-License-Identifier: BSD-3-Clause
#include "frame.h"

namespace qvr {

namespace {

// Below these, four rows of any format stay below 2^32 bytes and the library's 32-bit answers are exact for them.
constexpr std::uint32_t k_most_width = std::uint32_t{1} << 25;
constexpr std::uint32_t k_most_row_bytes = std::uint32_t{1} << 28;

constexpr std::uint64_t k_limit = 0xFFFFFFFFu;

bool rows_are_small(const frame_layout& layout) {
    return layout.width <= k_most_width && layout.rowBytes <= k_most_row_bytes && layout.rowBytes2 <= k_most_row_bytes;
}

frame_layout with_height(frame_layout layout, std::uint32_t height) {
    layout.height = height;
    return layout;
}

std::uint64_t row_pairs(const frame_layout& layout) {
    return (std::uint64_t{layout.height} + 1) / 2;
}

[[noreturn]] void too_large(const frame_layout& layout, exit_code code, const location& where) {
    throw failure(code, where,
                  "a frame of " + std::to_string(layout.width) + "x" + std::to_string(layout.height) +
                      " is too large: neither its raw samples nor its bitstream may pass 4 GiB",
                  "cut the picture into tiles that are encoded one by one");
}

}  // namespace

frame_layout empty_layout() {
    frame_layout layout = {};
    layout.size = QVRUNCOMPRESSED_UNCOMPRESSED_PARAMS_SIZE;
    return layout;
}

std::uint64_t raw_frame_bytes(const frame_layout& layout) {
    if (!rows_are_small(layout)) {
        return k_limit + 1;
    }
    const frame_layout pair = with_height(layout, 2);
    const std::uint64_t bound = QVRUncompressed_GetUncompressedBufSize(&pair) * row_pairs(layout);
    return bound > k_limit ? bound : QVRUncompressed_GetUncompressedBufSize(&layout);
}

void require_raw_size(const frame_layout& layout, exit_code code, const location& where) {
    if (raw_frame_bytes(layout) > k_limit) {
        too_large(layout, code, where);
    }
}

void require_size(const frame_layout& layout, const QVRUncompressed_CompressedParams_t& compression, exit_code code,
                  const location& where) {
    require_raw_size(layout, code, where);
    // Headers and tables cost the same for any height; what two more rows add is the cost of the rows.
    const frame_layout two = with_height(layout, 2);
    const frame_layout four = with_height(layout, 4);
    const std::uint64_t base = QVRUncompressed_GetCompressedBufSize(&two, &compression);
    const std::uint64_t step = QVRUncompressed_GetCompressedBufSize(&four, &compression) - base;
    if (base + step * row_pairs(layout) > k_limit) {
        too_large(layout, code, where);
    }
}

bool frame_rate::operator==(const frame_rate& other) const {
    return std::uint64_t{frames} * other.seconds == std::uint64_t{other.frames} * seconds;
}

std::uint64_t frame_source::skip(std::uint64_t count) {
    frame dropped;
    std::uint64_t skipped = 0;
    while (skipped < count && next(dropped)) {
        ++skipped;
    }
    return skipped;
}

void lose_alpha(const frame_layout& from, const frame_layout& to, const location& where, loss_log& losses) {
    const order_info* old_order = find_order(from.colorComponentOrder);
    const order_info* new_order = find_order(to.colorComponentOrder);
    if (old_order && new_order && old_order->alpha && !new_order->alpha) {
        losses.lose(where, std::string("alpha is left out: order ") + new_order->name + " has none",
                    "write to a kind of file, or ask for an order, that keeps it");
    }
}

void lose_unstored_alpha(const frame_layout& layout, const location& where, loss_log& losses) {
    const order_info* order = find_order(layout.colorComponentOrder);
    if (order && order->alpha && !stores_alpha(layout.colorComponentOrder, layout.componentType)) {
        losses.lose(where,
                    "alpha is left out: type " + type_text(layout.componentType) + " stores none, only U8 and U16 do");
    }
}

void tell_of_no_alpha_to_code(const frame_layout& layout, const std::string& file, loss_log& losses) {
    const order_info* order = find_order(layout.colorComponentOrder);
    if (order && !order->alpha) {
        losses.tell(file, std::string("--alpha-rle changes nothing: order ") + order->name + " has no alpha");
    }
}

void lose_rate(const std::optional<frame_rate>& rate, const location& where, loss_log& losses) {
    // The default of --rate brings the usual one back.
    if (rate && !(*rate == frame_rate())) {
        const std::string text = std::to_string(rate->frames) + ":" + std::to_string(rate->seconds);
        losses.lose(where, "its frame rate is left out; to get it back, decode with --rate " + text);
    }
}

std::string layout_text(const frame_layout& layout) {
    return std::to_string(layout.width) + "x" + std::to_string(layout.height) +
           (layout.frameLayout == QVRUncompressed_LayoutInterlaced ? " interlaced" : " progressive") + ", order " +
           order_text(layout.colorComponentOrder) + ", type " + type_text(layout.componentType);
}

}  // namespace qvr
