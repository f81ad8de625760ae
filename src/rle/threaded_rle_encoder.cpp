// SPDX-License-Identifier: BSD-3-Clause
#include <algorithm>
#include <array>
#include <cstring>

#include "api/base/errors.h"
#include "rle/index_table.h"
#include "rle/slice_encoder.h"
#include "rle/threaded_rle.h"
#include "threading/parallel.h"

namespace {

void check_buffers(const rle_params& params, const void* src, unsigned long src_size, const void* dst,
                   unsigned long dst_size) {
    if (src == nullptr || dst == nullptr) {
        throw_invalid_argument("src and buffers required to be non-null");
    }
    if (raw_plane_size(params) > src_size) {
        throw_invalid_argument("src buffer is too small according to metadata");
    }
    if (worst_case_payload_size(params) > dst_size) {
        throw_invalid_argument("dst buffer is too small according to metadata");
    }
}

}  // namespace

// Every slice is coded where the worst case of those before it ends, so none can reach into another.
void threaded_rle_encoder::cut(const rle_params& params, const std::uint8_t* src, std::uint8_t* out) {
    const std::uint32_t slices = slice_count(params);
    const std::uint64_t stride = row_stride(params);
    jobs.resize(slices);
    for (std::uint32_t i = 0; i < slices; ++i) {
        const row_chunk chunk = chunk_of_rows(params.height, slices, i);
        const std::size_t capacity = worst_case_slice_size(params, chunk.count);
        jobs[i] = {{src + chunk.first * stride, params.width, chunk.count, stride}, out, capacity, 0};
        out += capacity;
    }
}

std::size_t threaded_rle_encoder::write_table(std::uint8_t* dst) const {
    std::array<std::uint32_t, k_most_slices> sizes;
    std::array<std::uint32_t, k_most_slices> rows;
    for (std::size_t i = 0; i < std::min(jobs.size(), k_most_slices); ++i) {
        sizes[i] = low_32(jobs[i].size);
        rows[i] = jobs[i].rows.count;
    }
    return write_index_table(sizes.data(), rows.data(), jobs.size(), dst, k_largest_index_table);
}

unsigned long threaded_rle_encoder::encode_frame(const rle_params& params, const void* src, unsigned long src_size,
                                                 void* dst, unsigned long dst_size) {
    validate(params);
    check_buffers(params, src, src_size, dst, dst_size);

    auto* const out = static_cast<std::uint8_t*>(dst);
    cut(params, static_cast<const std::uint8_t*>(src), out + k_largest_index_table);
    const rle_kernels& kernels = rle_kernels_for(detected_cpu_features());
    const auto encode = params.bit_depth == 8 ? encode_slice<std::uint8_t> : encode_slice<std::uint16_t>;
    run_tasks(executor, static_cast<std::uint32_t>(jobs.size()),
              [&](std::uint32_t i) { jobs[i].size = encode(jobs[i].rows, jobs[i].out, jobs[i].capacity, kernels); });

    // Close the gaps: each slice moves down to the end of the one before.
    std::size_t end = write_table(out);
    for (const slice_job& job : jobs) {
        std::memmove(out + end, job.out, job.size);
        end += job.size;
    }
    return end;
}
