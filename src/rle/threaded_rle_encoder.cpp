// SPDX-License-Identifier: BSD-3-Clause
#include <cstring>
#include <vector>

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

struct slice_job {
    slice_rows<const std::uint8_t> rows;
    std::uint8_t* out;
    std::size_t capacity;
    std::size_t size;  // once coded
};

// Every slice is coded where the worst case of those before it ends, so none can reach into another.
std::vector<slice_job> make_jobs(const rle_params& params, const std::uint8_t* src, std::uint8_t* out) {
    const std::uint32_t slices = slice_count(params);
    std::vector<slice_job> jobs(slices);
    for (std::uint32_t i = 0; i < slices; ++i) {
        const row_chunk chunk = chunk_of_rows(params.height, slices, i);
        const std::uint64_t stride = row_stride(params);
        jobs[i].rows = {src + chunk.first * stride, params.width, chunk.count, stride};
        jobs[i].out = out;
        jobs[i].capacity = worst_case_slice_size(params, chunk.count);
        out += jobs[i].capacity;
    }
    return jobs;
}

std::size_t write_table(const std::vector<slice_job>& jobs, std::uint8_t* dst) {
    std::vector<std::uint32_t> sizes;
    std::vector<std::uint32_t> rows;
    for (const slice_job& job : jobs) {
        sizes.push_back(low_32(job.size));
        rows.push_back(job.rows.count);
    }
    return write_index_table(sizes.data(), rows.data(), jobs.size(), dst, k_largest_index_table);
}

}  // namespace

unsigned long threaded_rle_encoder::encode_frame(const rle_params& params, const void* src, unsigned long src_size,
                                                 void* dst, unsigned long dst_size) const {
    validate(params);
    check_buffers(params, src, src_size, dst, dst_size);

    auto* const out = static_cast<std::uint8_t*>(dst);
    std::vector<slice_job> jobs = make_jobs(params, static_cast<const std::uint8_t*>(src), out + k_largest_index_table);
    const rle_kernels& kernels = rle_kernels_for(detected_cpu_features());
    const auto encode = params.bit_depth == 8 ? encode_slice<std::uint8_t> : encode_slice<std::uint16_t>;
    run_tasks(executor, static_cast<std::uint32_t>(jobs.size()),
              [&](std::uint32_t i) { jobs[i].size = encode(jobs[i].rows, jobs[i].out, jobs[i].capacity, kernels); });

    // Close the gaps: each slice moves down to the end of the one before.
    std::size_t end = write_table(jobs, out);
    for (const slice_job& job : jobs) {
        std::memmove(out + end, job.out, job.size);
        end += job.size;
    }
    return end;
}
