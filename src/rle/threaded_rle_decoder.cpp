// SPDX-License-Identifier: BSD-3-Clause
#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>

#include "api/base/errors.h"
#include "rle/index_table.h"
#include "rle/slice_decoder.h"
#include "rle/threaded_rle.h"
#include "threading/parallel.h"

namespace {

void check_buffers(const rle_params& params, const void* src, const void* dst, unsigned long dst_size) {
    if (src == nullptr || dst == nullptr) {
        throw_invalid_argument("src and buffers required to be non-null");
    }
    if (raw_plane_size(params) > dst_size) {
        throw_invalid_argument("dst buffer is too small according to metadata");
    }
}

struct slice_jobs {
    std::array<coded_slice, k_most_slices> each;
    std::uint32_t count = 0;
    std::uint64_t rows = 0;  // of all slices
};

// Proves, before a sample is decoded, that every slice begins inside the payload and ends inside the plane.
slice_jobs make_jobs(const rle_params& params, const std::uint8_t* src, std::size_t src_size, std::uint8_t* dst) {
    index_table table;
    read_index_table(src, src_size, table);
    slice_jobs jobs;
    jobs.count = table.slices;
    for (std::uint32_t i = 0; i < table.slices; ++i) {
        jobs.rows += table.rows[i];
    }
    if (jobs.rows > params.height) {
        throw_invalid_argument("rle index table is malformed");
    }
    std::uint64_t start = table.bytes;
    for (std::uint32_t i = 0; i < table.slices; ++i) {
        if (start > src_size) {
            throw_invalid_argument("rle payload is too short");
        }
        const std::uint64_t stride = row_stride(params);
        jobs.each[i] = {src + start, src_size - start, {dst, params.width, table.rows[i], stride}, slice_result::ok};
        start += table.sizes[i];
        dst += table.rows[i] * stride;
    }
    return jobs;
}

void lower_to(std::atomic<std::uint32_t>& least, std::uint32_t value) {
    std::uint32_t seen = least;
    while (value < seen && !least.compare_exchange_weak(seen, value)) {
    }
}

void throw_if_failed(slice_result result) {
    switch (result) {
        case slice_result::ok:
            return;
        case slice_result::too_short:
            throw_invalid_argument("rle payload is too short");
        case slice_result::run_too_long:
            throw_invalid_argument("rle run exceeds slice");
    }
}

}  // namespace

unsigned long threaded_rle_decoder::decode_frame(const rle_params& params, const void* src, unsigned long src_size,
                                                 void* dst, unsigned long dst_size, uncovered rest) const {
    validate(params);
    check_buffers(params, src, dst, dst_size);

    auto* const out = static_cast<std::uint8_t*>(dst);
    slice_jobs jobs = make_jobs(params, static_cast<const std::uint8_t*>(src), src_size, out);
    const rle_kernels& kernels = rle_kernels_for(detected_cpu_features());
    const auto decode = params.bit_depth == 8 ? decode_slices<std::uint8_t> : decode_slices<std::uint16_t>;
    // Two slices to a task, unless that would leave a thread without one.
    const std::uint32_t share =
        jobs.count >= k_slices_together * chunks_for(executor, jobs.count) ? k_slices_together : 1;
    // Behind a slice that has failed the rest need not be decoded; slices before it must, since the first one in the
    // payload's order is reported, whichever thread comes upon it.
    std::atomic<std::uint32_t> first_failed{jobs.count};
    run_tasks(executor, (jobs.count + share - 1) / share, [&](std::uint32_t i) {
        const std::uint32_t first = i * share;
        const std::uint32_t count = std::min(share, jobs.count - first);
        if (first > first_failed) {
            return;
        }
        decode(&jobs.each[first], count, kernels);
        for (std::uint32_t k = first; k < first + count; ++k) {
            if (jobs.each[k].result != slice_result::ok) {
                lower_to(first_failed, k);
            }
        }
    });
    for (std::uint32_t i = 0; i < jobs.count; ++i) {
        throw_if_failed(jobs.each[i].result);
    }
    const auto plane_size = static_cast<unsigned long>(raw_plane_size(params));
    if (rest == uncovered::clear) {
        const std::uint64_t covered = jobs.rows * row_stride(params);
        std::memset(out + covered, 0, plane_size - covered);
    }
    return plane_size;
}
