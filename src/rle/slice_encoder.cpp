// SPDX-License-Identifier: BSD-3-Clause
#include "rle/slice_encoder.h"

#include <algorithm>
#include <cstring>

#include "rle/bit_writer.h"

namespace {

// Collects equal residuals into runs and writes each run as one token.
template <class Sample>
class run_writer {
    using traits = sample_traits<Sample>;

  public:
    run_writer(std::uint8_t* destination, std::size_t capacity) : writer(destination, capacity) {}

    // The first `count` samples of a block.
    void add(const residual_block<Sample>& block, unsigned count) {
        const std::uint64_t valid = count == k_residual_block ? ~std::uint64_t{0} : (std::uint64_t{1} << count) - 1;
        std::uint64_t starts = block.changes & valid;
        if (length == 0 || block.codes[0] != code || (block.second_order & 1) != order) {
            starts |= 1;
        }
        unsigned done = 0;
        for (; starts != 0; starts &= starts - 1) {
            const auto start = static_cast<unsigned>(__builtin_ctzll(starts));
            length += start - done;
            write_run();
            code = block.codes[start];
            order = block.second_order >> start & 1;
            length = 0;
            done = start;
        }
        length += count - done;
    }

    std::size_t finish() {
        write_run();
        return writer.finish();
    }

  private:
    void write_run() {
        if (length == 0) {
            return;
        }
        const unsigned length_bits = 2 * gamma_zeros(length) + 1;
        const std::uint64_t head = order << length_bits | length;
        std::uint64_t tail = code;  // raw: the type bit is 0
        unsigned tail_bits = 1 + traits::k_depth;
        if (code < traits::k_rice_limit) {
            const unsigned quotient = code >> traits::k_low_bits;
            const std::uint64_t type_and_ones = (std::uint64_t{1} << (1 + quotient)) - 1;
            const std::uint64_t low = code & ((1u << traits::k_low_bits) - 1);
            tail = type_and_ones << (1 + traits::k_low_bits) | low;
            tail_bits = 1 + quotient + 1 + traits::k_low_bits;
        }
        if (1 + length_bits + tail_bits <= 64) {
            writer.write(head << tail_bits | tail, 1 + length_bits + tail_bits);
        } else {
            writer.write(head, 1 + length_bits);
            writer.write(tail, tail_bits);
        }
    }

    bit_writer writer;
    std::uint64_t length = 0;  // of the run so far
    std::uint64_t order = 0;
    Sample code = 0;
};

// A block, and the two samples that come before it, where they can be read past the row's ends.
template <class Sample>
struct padded_block {
    Sample samples[2 + k_residual_block] = {};

    const std::uint8_t* first() const { return reinterpret_cast<const std::uint8_t*>(samples + 2); }
};

// Samples of one row, or of a whole slice whose rows have no gap between them.
template <class Sample>
void encode_run_of_samples(const std::uint8_t* row, std::uint64_t count, Sample (&before)[2],
                           const residual_kernels& kernels, run_writer<Sample>& runs) {
    residual_block<Sample> residuals;
    padded_block<Sample> padded;
    for (std::uint64_t i = 0; i < count; i += k_residual_block) {
        const auto valid = static_cast<unsigned>(std::min<std::uint64_t>(k_residual_block, count - i));
        const std::uint8_t* block = row + i * sizeof(Sample);
        // The first block's predecessors lie in another row or nowhere, and a short block ends with the row.
        if (i == 0 || valid < k_residual_block) {
            if (i == 0) {
                std::memcpy(padded.samples, before, sizeof before);
            } else {
                std::memcpy(padded.samples, block - sizeof before, sizeof before);
            }
            std::memcpy(padded.samples + 2, block, valid * sizeof(Sample));
            block = padded.first();
        }
        kernels(block, residuals);
        runs.add(residuals, valid);
    }
    if (count == 1) {
        before[0] = before[1];
        std::memcpy(before + 1, row, sizeof(Sample));
    } else {
        std::memcpy(before, row + (count - 2) * sizeof(Sample), sizeof before);
    }
}

}  // namespace

template <class Sample>
std::size_t encode_slice(const slice_rows<const std::uint8_t>& rows, std::uint8_t* destination, std::size_t capacity,
                         const residual_kernels& kernels) {
    run_writer<Sample> runs(destination, capacity);
    Sample before[2] = {sample_traits<Sample>::k_start, sample_traits<Sample>::k_start};
    const bool gapless = rows.stride == std::uint64_t{rows.width} * sizeof(Sample);
    const std::uint64_t samples = gapless ? std::uint64_t{rows.width} * rows.count : rows.width;
    const std::uint32_t pieces = gapless ? 1 : rows.count;
    for (std::uint32_t i = 0; i < pieces; ++i) {
        encode_run_of_samples(rows.first + i * rows.stride, samples, before, kernels, runs);
    }
    return runs.finish();
}

template std::size_t encode_slice<std::uint8_t>(const slice_rows<const std::uint8_t>&, std::uint8_t*, std::size_t,
                                                const residual_kernels&);
template std::size_t encode_slice<std::uint16_t>(const slice_rows<const std::uint8_t>&, std::uint8_t*, std::size_t,
                                                 const residual_kernels&);
