// SPDX-License-Identifier: BSD-3-Clause
#include "frame_range.h"

#include <algorithm>
#include <cstdlib>
#include <limits>

#include "failure.h"
#include "numbers.h"

namespace qvr {

namespace {

using number = unsigned long long;

constexpr number k_most_chunks = 1000000;

// "10-19", "10-" and "10"
frame_range parse_range(const std::string& text) {
    const halves parts = split_at(text, "-");
    const std::optional<number> first = parse_number<number>(parts.first);
    frame_range found;
    // The number behind the last frame must be one as well.
    constexpr number k_most = std::numeric_limits<number>::max();
    bool good = first.value_or(k_most) < k_most;
    found.first = first.value_or(0);
    if (!parts.second) {
        found.end = found.first + 1;
    } else if (!parts.second->empty()) {
        const std::optional<number> last = parse_number<number>(*parts.second);
        good = good && last && *last >= found.first && *last < k_most;
        found.end = last.value_or(0) + 1;
    }
    if (!good) {
        fail_usage("--range " + text + ": these are no frames",
                   "frames are counted from 0: --range 100-199, --range 100- or --range 100");
    }
    return found;
}

struct chunk_choice {
    number index = 0;  // from 1 to count
    number count = 0;
};

number array_variable(const char* name) {
    const char* text = std::getenv(name);
    const std::optional<number> value = text ? parse_number<number>(text) : std::nullopt;
    if (!value) {
        fail_usage(std::string("--chunk auto: ") + name + (text ? " is no number" : " is not set"),
                   "inside a Slurm job array it is; elsewhere say which chunk: --chunk 1/8");
    }
    return *value;
}

// The place of this process in the job array that it runs in.
chunk_choice chunk_of_array() {
    const number id = array_variable("SLURM_ARRAY_TASK_ID");
    const number least = array_variable("SLURM_ARRAY_TASK_MIN");
    const number most = array_variable("SLURM_ARRAY_TASK_MAX");
    const number step = std::getenv("SLURM_ARRAY_TASK_STEP") ? array_variable("SLURM_ARRAY_TASK_STEP") : 1;
    const bool ordered =
        step > 0 && least <= id && id <= most && (id - least) % step == 0 && (most - least) % step == 0;
    const number count = ordered ? (most - least) / step + 1 : 0;
    if (!ordered || (std::getenv("SLURM_ARRAY_TASK_COUNT") && array_variable("SLURM_ARRAY_TASK_COUNT") != count)) {
        fail_usage("--chunk auto: the job array has gaps, so that it does not say which frames are this job's",
                   "submit it with --array=1-8, or say which chunk this is: --chunk $SLURM_ARRAY_TASK_ID/8");
    }
    return {(id - least) / step + 1, count};
}

chunk_choice parse_chunk(const std::string& text) {
    if (text == "auto") {
        return chunk_of_array();
    }
    const auto read = parse_pair<number>(text, "/");
    if (!read || read->first < 1 || read->first > read->second || read->second > k_most_chunks) {
        fail_usage("--chunk " + text + ": this is no chunk", "the first of eight is --chunk 1/8, the last --chunk 8/8");
    }
    return {read->first, read->second};
}

// frames * part / count, rounded down, although the product may pass 64 bits.
number share(number frames, number part, number count) {
    return frames / count * part + frames % count * part / count;
}

}  // namespace

std::optional<unsigned long long> frame_range::count(const std::optional<unsigned long long>& total) const {
    const std::optional<unsigned long long>& behind = end ? end : total;
    return behind ? std::optional<unsigned long long>(*behind - std::min(*behind, first)) : std::nullopt;
}

void range_options::add(argument_list& to) {
    to.text("--range", range, "A-B",
            "Only the frames A to B, counted from 0; A- is all from A on, A is one frame;\n"
            "default: all frames");
    to.text("--chunk", chunk, "I/N",
            "Only the I-th of N parts of nearly the same size, I from 1 to N;\n"
            "'auto' takes both from the Slurm job array that the command runs in;\n"
            "default: all of them");
}

frame_range range_options::resolve(const std::optional<unsigned long long>& total,
                                   const std::string& input_name) const {
    frame_range wanted = range.empty() ? frame_range{} : parse_range(range);
    if (total && !range.empty() && (wanted.first >= *total || wanted.end.value_or(0) > *total)) {
        refuse_frame(input_name, std::max(wanted.first, *total), *total);
    }
    if (chunk.empty()) {
        return wanted;
    }
    const chunk_choice chosen = parse_chunk(chunk);
    const std::optional<number> end = wanted.end ? wanted.end : total;
    if (!end) {
        throw failure(exit_code::usage, {input_name, {}}, "--chunk needs to know how many frames there are",
                      "they cannot be counted in a pipe or in a damaged file: give --range A-B as well");
    }
    const number frames = *end - wanted.first;
    return {wanted.first + share(frames, chosen.index - 1, chosen.count),
            wanted.first + share(frames, chosen.index, chosen.count)};
}

}  // namespace qvr
