// SPDX-License-Identifier: BSD-3-Clause
#include "rle.h"

#include <algorithm>

namespace model {

namespace {

constexpr std::uint32_t table_predictor = 8388607;
constexpr std::uint32_t largest_table = 1659;

// Bits go in most significant first; a byte fills from bit 7 down.
class bit_writer {
  public:
    void put(std::uint64_t value, unsigned count) {
        for (unsigned i = count; i > 0; --i) {
            put_bit((value >> (i - 1)) & 1);
        }
    }

    void put_ones(std::uint64_t count) {
        for (std::uint64_t i = 0; i < count; ++i) {
            put_bit(1);
        }
    }

    void put_gamma(std::uint64_t value) {
        unsigned log = 0;
        while ((value >> log) > 1) {
            ++log;
        }
        put(0, log);
        put(value, log + 1);
    }

    const bytes& done() const { return data_; }

  private:
    void put_bit(std::uint64_t bit) {
        if (used_ % 8 == 0) {
            data_.push_back(0);
        }
        if (bit != 0) {
            data_.back() = static_cast<std::uint8_t>(data_.back() | (0x80u >> (used_ % 8)));
        }
        ++used_;
    }

    bytes data_;
    std::uint64_t used_ = 0;
};

// Looking ahead past the end sees zeros; consuming past it is an error.
class bit_reader {
  public:
    bit_reader(view source, std::uint64_t first_byte) : source_(source), position_(first_byte * 8) {}

    unsigned leading(unsigned wanted, unsigned limit) const {
        unsigned count = 0;
        while (count < limit && bit_at(position_ + count) == wanted) {
            ++count;
        }
        return count;
    }

    std::uint64_t take(unsigned count) {
        if (exact(position_) + count > exact(source_.size) * 8) {
            throw failure("rle payload is too short");
        }
        std::uint64_t value = 0;
        for (unsigned i = 0; i < count; ++i) {
            value = value << 1 | bit_at(position_++);
        }
        return value;
    }

    std::uint64_t take_gamma() {
        const unsigned zeros = leading(0, 32);
        take(zeros);
        return take(zeros + 1);
    }

    std::uint64_t bytes_consumed() const { return (position_ + 7) / 8; }

  private:
    unsigned bit_at(std::uint64_t index) const {
        return index / 8 < source_.size ? (source_.at(index / 8) >> (7 - index % 8)) & 1u : 0u;
    }

    view source_;
    std::uint64_t position_;
};

std::uint32_t sample_size(const rle_params& params) {
    return params.bit_depth == 8 ? 1 : 2;
}

std::uint32_t slice_count(const rle_params& params) {
    const std::uint32_t wanted = params.slice_count != 0 ? params.slice_count : 16;
    return std::min(params.height, wanted);
}

exact row_step(const rle_params& params) {
    return params.row_bytes != 0 ? exact(params.row_bytes) : exact(params.width) * sample_size(params);
}

exact worst_case_slice(const rle_params& params, std::uint32_t rows) {
    const std::uint32_t samples = low32(exact(params.width) * rows);
    return ceil_div(exact(samples) * (params.bit_depth + 3), 8);
}

std::int64_t unzigzag(std::uint64_t z) {
    const auto half = static_cast<std::int64_t>(z / 2);
    return z % 2 == 0 ? half : -half - 1;
}

std::uint32_t zigzag_sample(std::uint32_t residual, std::uint32_t bit_depth) {
    const std::uint32_t range = 1u << bit_depth;
    const std::uint32_t wrapped = residual % range;
    return wrapped < range / 2 ? 2 * wrapped : 2 * (range - wrapped) - 1;
}

struct token {
    unsigned order = 0;
    std::uint32_t residual = 0;
    std::uint64_t length = 0;
};

std::vector<token> make_tokens(const std::vector<std::uint32_t>& samples, std::uint32_t bit_depth) {
    std::vector<token> tokens;
    std::uint32_t p1 = (1u << (bit_depth - 1)) - 1;
    std::uint32_t p2 = p1;
    for (const std::uint32_t x : samples) {
        const std::uint32_t z1 = zigzag_sample(x - p1, bit_depth);
        const std::uint32_t z2 = zigzag_sample(x - 2 * p1 + p2, bit_depth);
        token next;
        if (z1 != 0) {
            next.order = z2 <= z1 ? 1 : 0;
            next.residual = z2 <= z1 ? z2 : z1;
        }
        if (tokens.empty() || tokens.back().order != next.order || tokens.back().residual != next.residual) {
            tokens.push_back(next);
        }
        ++tokens.back().length;
        p2 = p1;
        p1 = x;
    }
    return tokens;
}

void put_token(bit_writer& out, const token& run, std::uint32_t bit_depth) {
    const unsigned k = bit_depth / 2 - 2;
    const std::uint32_t rice_limit = bit_depth == 8 ? 20 : 576;
    out.put(run.order, 1);
    out.put_gamma(run.length);
    if (run.residual < rice_limit) {
        out.put(1, 1);
        out.put_ones(run.residual >> k);
        out.put(0, 1);
        out.put(run.residual & ((1u << k) - 1), k);
    } else {
        out.put(0, 1);
        out.put(run.residual, bit_depth);
    }
}

// The zigzag code of one step of the index table, wrapped once into 24 bits.
std::uint32_t table_code(std::uint32_t value, std::uint32_t previous) {
    std::int64_t delta = static_cast<std::int32_t>(value - previous);
    if (delta >= 0x800000) {
        delta -= 0x1000000;
    } else if (delta < -0x800000) {
        delta += 0x1000000;
    }
    const std::int64_t z = delta >= 0 ? 2 * delta : -2 * delta - 1;
    if (z > 0xFFFFFF) {
        throw failure("values greater than 24bit is not supported by rle index table");
    }
    return static_cast<std::uint32_t>(z);
}

void put_sequence(bit_writer& out, const std::vector<std::uint32_t>& values, std::size_t count) {
    std::vector<std::uint32_t> codes;
    std::uint32_t previous = table_predictor;
    for (std::size_t i = 0; i < count; ++i) {
        codes.push_back(table_code(values[i], previous));
        previous = values[i];
    }
    for (std::size_t i = 0; i < codes.size();) {
        std::size_t end = i;
        while (end < codes.size() && codes[end] == codes[i]) {
            ++end;
        }
        out.put_gamma(end - i);
        if (codes[i] <= 13311) {
            out.put(1, 1);
            out.put_ones(codes[i] >> 10);
            out.put(0, 1);
            out.put(codes[i] & 1023, 10);
        } else {
            out.put(0, 1);
            out.put(codes[i], 24);
        }
        i = end;
    }
}

std::vector<std::uint32_t> take_sequence(bit_reader& in, std::size_t count) {
    std::vector<std::uint32_t> values;
    std::uint32_t previous = table_predictor;
    while (values.size() < count) {
        const std::uint64_t length = in.take_gamma();
        std::uint64_t z = 0;
        if (in.take(1) == 1) {
            while (in.take(1) == 1) {
                ++z;
            }
            z = z << 10 | in.take(10);
        } else {
            z = in.take(24);
        }
        if (length > count - values.size()) {
            throw failure("rle index table is malformed");
        }
        for (std::uint64_t i = 0; i < length; ++i) {
            previous += static_cast<std::uint32_t>(unzigzag(z));
            values.push_back(previous);
        }
    }
    return values;
}

struct index_table {
    std::vector<std::uint32_t> sizes;
    std::vector<std::uint32_t> rows;
    std::uint64_t bytes = 0;
};

index_table take_index_table(view payload) {
    bit_reader in(payload, 0);
    index_table table;
    const auto count = static_cast<std::size_t>(in.take(8));
    table.sizes = take_sequence(in, count);
    table.rows = take_sequence(in, count);
    table.bytes = in.bytes_consumed();
    return table;
}

void check_index_table(const index_table& table, const rle_params& params, view payload) {
    exact rows = 0;
    for (const std::uint32_t count : table.rows) {
        rows += count;
    }
    if (rows > params.height) {
        throw failure("rle index table is malformed");
    }
    exact start = table.bytes;
    for (const std::uint32_t size : table.sizes) {
        if (start > payload.size) {
            throw failure("rle payload is too short");
        }
        start += size;
    }
}

std::uint32_t take_residual(bit_reader& in, std::uint32_t bit_depth) {
    if (in.take(1) == 0) {
        return static_cast<std::uint32_t>(in.take(bit_depth));
    }
    const unsigned k = bit_depth / 2 - 2;
    const unsigned ones = std::min(in.leading(1, 9), 8u);
    in.take(ones + 1);
    return (ones << k) + static_cast<std::uint32_t>(in.take(k));
}

// Samples of a slice in raster order, without padding.
bytes decode_slice(const rle_params& params, std::uint32_t rows, view payload, std::uint64_t start) {
    const exact wanted = exact(params.width) * rows;
    const std::uint32_t mask = (1u << params.bit_depth) - 1;
    bit_reader in(payload, start);
    bytes out;
    exact written = 0;
    std::uint32_t p1 = mask / 2;
    std::uint32_t p2 = p1;
    while (written < wanted) {
        const std::uint64_t order = in.take(1);
        const std::uint64_t length = in.take_gamma();
        const auto delta = static_cast<std::uint32_t>(unzigzag(take_residual(in, params.bit_depth)));
        if (length > wanted - written) {
            throw failure("rle run exceeds slice");
        }
        for (std::uint64_t i = 0; i < length; ++i) {
            const std::uint32_t x = (order == 0 ? p1 + delta : 2 * p1 - p2 + delta) & mask;
            out.push_back(static_cast<std::uint8_t>(x & 0xFF));
            if (params.bit_depth == 16) {
                out.push_back(static_cast<std::uint8_t>(x >> 8));
            }
            p2 = p1;
            p1 = x;
        }
        written += length;
    }
    return out;
}

// The slice is laid out without gaps first and then spread, so the padding
// between rows keeps bytes of the compact layout.
void place_slice(const rle_params& params, std::uint32_t rows, const bytes& compact, target plane, exact start) {
    for (std::size_t i = 0; i < compact.size(); ++i) {
        plane.at(start + i) = compact[i];
    }
    const exact row = exact(params.width) * sample_size(params);
    if (params.row_bytes <= row) {
        return;
    }
    for (std::uint32_t j = rows; j > 1; --j) {
        const exact from = exact(j - 1) * row;
        for (exact k = 0; k < row; ++k) {
            plane.at(start + exact(j - 1) * params.row_bytes + k) = compact[static_cast<std::size_t>(from + k)];
        }
    }
}

std::vector<std::uint32_t> gather_samples(const rle_params& params, view source, std::uint32_t first_row,
                                          std::uint32_t rows) {
    std::vector<std::uint32_t> samples;
    for (std::uint32_t y = first_row; y < first_row + rows; ++y) {
        const exact row = row_step(params) * y;
        for (std::uint32_t x = 0; x < params.width; ++x) {
            if (params.bit_depth == 8) {
                samples.push_back(source.at(row + x));
            } else {
                const exact place = row + exact(x) * 2;
                samples.push_back(source.at(place) | std::uint32_t(source.at(place + 1)) << 8);
            }
        }
    }
    return samples;
}

}  // namespace

exact rle_raw_size(const rle_params& params) {
    return row_step(params) * params.height;
}

exact rle_worst_case_size(const rle_params& params) {
    const std::uint32_t slices = slice_count(params);
    if (slices == 0) {
        return largest_table;
    }
    const std::uint32_t rows = params.height / slices;
    const std::uint32_t longer = params.height % slices;
    return largest_table + exact(longer) * worst_case_slice(params, rows + 1) +
           exact(slices - longer) * worst_case_slice(params, rows);
}

void check_rle_params(const rle_params& params) {
    if (params.width == 0) {
        throw failure("Invalid width");
    }
    if (params.height == 0) {
        throw failure("Invalid height");
    }
    if (params.bit_depth != 8 && params.bit_depth != 16) {
        throw failure("only 8, and 16 bitdepth supported");
    }
    const exact row = exact(params.width) * sample_size(params);
    if (params.row_bytes != 0 && params.row_bytes < row) {
        throw failure("row_bytes is too small, it should be at least " + decimal(row) + " according to params");
    }
}

bytes rle_encode_slice(const std::vector<std::uint32_t>& samples, std::uint32_t bit_depth) {
    bit_writer out;
    for (const token& run : make_tokens(samples, bit_depth)) {
        put_token(out, run, bit_depth);
    }
    return out.done();
}

bytes rle_index_table(const std::vector<std::uint32_t>& sizes, const std::vector<std::uint32_t>& rows) {
    const std::size_t count = sizes.size() & 0xFF;
    bit_writer out;
    out.put(count, 8);
    put_sequence(out, sizes, count);
    put_sequence(out, rows, count);
    return out.done();
}

bytes rle_encode(const rle_params& params, view source, exact capacity) {
    check_rle_params(params);
    if (source.data == nullptr) {
        throw failure("src and buffers required to be non-null");
    }
    if (rle_raw_size(params) > source.size) {
        throw failure("src buffer is too small according to metadata");
    }
    if (rle_worst_case_size(params) > capacity) {
        throw failure("dst buffer is too small according to metadata");
    }
    const std::uint32_t slices = slice_count(params);
    std::vector<std::uint32_t> sizes;
    std::vector<std::uint32_t> rows;
    bytes data;
    std::uint32_t first_row = 0;
    for (std::uint32_t i = 0; i < slices; ++i) {
        const std::uint32_t count = params.height / slices + (i < params.height % slices ? 1 : 0);
        const bytes slice = rle_encode_slice(gather_samples(params, source, first_row, count), params.bit_depth);
        data.insert(data.end(), slice.begin(), slice.end());
        sizes.push_back(low32(slice.size()));
        rows.push_back(count);
        first_row += count;
    }
    bytes payload = rle_index_table(sizes, rows);
    payload.insert(payload.end(), data.begin(), data.end());
    return payload;
}

exact rle_decode(const rle_params& params, view payload, target plane) {
    check_rle_params(params);
    if (payload.data == nullptr || plane.data == nullptr) {
        throw failure("src and buffers required to be non-null");
    }
    if (rle_raw_size(params) > plane.size) {
        throw failure("dst buffer is too small according to metadata");
    }
    const index_table table = take_index_table(payload);
    check_index_table(table, params, payload);
    std::uint64_t source = table.bytes;
    exact place = 0;
    for (std::size_t i = 0; i < table.sizes.size(); ++i) {
        place_slice(params, table.rows[i], decode_slice(params, table.rows[i], payload, source), plane, place);
        source += table.sizes[i];
        place += row_step(params) * table.rows[i];
    }
    return rle_raw_size(params);
}

}  // namespace model
