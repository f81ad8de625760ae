// SPDX-License-Identifier: BSD-3-Clause
#include "rle/slice_encoder.h"

#include <algorithm>
#include <cstring>

#include "rle/bit_writer.h"
#include "rle/kernels/token.h"

namespace {

// Samples into runs, runs into tokens, tokens into bits.
template <class Sample>
class slice_writer {
  public:
    slice_writer(std::uint8_t* destination, std::size_t capacity, const rle_kernels& kernels)
        : writer(destination, capacity),
          find_runs_in(find_runs<Sample>(kernels)),
          assemble_tokens(assemble<Sample>(kernels)) {}

    // Samples in one piece, with the two before them. The run that is open at the end may go on in the next samples.
    void add(const std::uint8_t* samples, std::uint64_t count) {
        while (count != 0) {
            const auto share = static_cast<std::uint32_t>(std::min<std::uint64_t>(count, k_most_samples));
            const std::uint32_t done = find_runs_in(samples, share, symbol, runs);
            if (runs.count == 0) {
                length += done;
            } else {
                close_run(runs.starts[0]);
                assemble_tokens(runs, pieces);
                write_pieces();
                symbol = runs.symbols[runs.count - 1];
                length = done - runs.starts[runs.count - 1];
            }
            samples += std::size_t{done} * sizeof(Sample);
            count -= done;
        }
    }

    std::size_t finish() {
        close_run(0);
        return writer.finish();
    }

  private:
    // Writes the open run, which goes on for `more` samples: as long as it likes, so its parts are written one by one.
    void close_run(std::uint32_t more) {
        length += more;
        if (length != 0) {
            const token whole = make_token<Sample>(symbol, length);
            writer.write(whole.head, whole.head_length);
            writer.write(whole.tail, whole.tail_length);
        }
    }

    void write_pieces() {
        bit_writer local = writer;  // in registers: no store can change it
        for (std::uint32_t i = 0; i < pieces.count; ++i) {
            local.write_short(pieces.bits[i], static_cast<unsigned>(pieces.lengths[i]));
        }
        writer = local;
    }

    bit_writer writer;
    find_runs_kernel find_runs_in;
    assemble_kernel assemble_tokens;
    std::uint32_t symbol = k_no_symbol;  // of the open run
    std::uint64_t length = 0;            // of the open run so far
    run_list runs;
    piece_list pieces;
};

// Samples of one row, or of a whole slice whose rows have no gap between them. Those that come before the first two lie
// in another row or nowhere, so the first block is copied behind them.
template <class Sample>
void add_row(const std::uint8_t* row, std::uint64_t count, Sample (&before)[2], slice_writer<Sample>& slice) {
    Sample first_block[2 + k_sample_block];
    const auto first_count = static_cast<std::uint32_t>(std::min<std::uint64_t>(count, k_sample_block));
    std::memcpy(first_block, before, sizeof before);
    std::memcpy(first_block + 2, row, first_count * sizeof(Sample));
    slice.add(reinterpret_cast<const std::uint8_t*>(first_block + 2), first_count);
    slice.add(row + first_count * sizeof(Sample), count - first_count);
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
                         const rle_kernels& kernels) {
    slice_writer<Sample> slice(destination, capacity, kernels);
    Sample before[2] = {sample_traits<Sample>::k_start, sample_traits<Sample>::k_start};
    const bool gapless = rows.stride == std::uint64_t{rows.width} * sizeof(Sample);
    const std::uint64_t samples = gapless ? std::uint64_t{rows.width} * rows.count : rows.width;
    const std::uint32_t pieces = gapless ? 1 : rows.count;
    for (std::uint32_t i = 0; i < pieces; ++i) {
        add_row(rows.first + i * rows.stride, samples, before, slice);
    }
    return slice.finish();
}

template std::size_t encode_slice<std::uint8_t>(const slice_rows<const std::uint8_t>&, std::uint8_t*, std::size_t,
                                                const rle_kernels&);
template std::size_t encode_slice<std::uint16_t>(const slice_rows<const std::uint8_t>&, std::uint8_t*, std::size_t,
                                                 const rle_kernels&);
