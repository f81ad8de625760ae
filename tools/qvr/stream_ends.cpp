// SPDX-License-Identifier: BSD-3-Clause
//
// .qvr files as the ends of work on many frames.
#include <deque>
#include <utility>

#include "frame_ends.h"
#include "qvr_file.h"

namespace qvr {

namespace {

void refuse_chunks(const frame_layout& own, const location& where) {
    if (own.colorComponentOrder == 0) {
        throw failure(exit_code::usage, where,
                      "the frame holds wrapped chunks of another codec, which cannot be decoded to samples",
                      "'qvr unwrap' takes them out; 'qvr info' shows them");
    }
}

template <class Codec>
codec_time sum_of_times(const std::deque<Codec>& codecs) {
    codec_time sum;
    for (const Codec& codec : codecs) {
        sum += codec.time();
    }
    return sum;
}

class stream_input : public frame_input {
  public:
    stream_input(const std::string& from, stream_choice to_describe)
        : path(from), describe(std::move(to_describe)), file(from), reader(file) {}

    // Counts through a file of its own, since only sizes are read.
    std::optional<unsigned long long> frames_left() override {
        if (path == "-" || !file.bytes_left()) {
            return std::nullopt;
        }
        input_file counted(path);
        frame_reader sizes(counted);
        unsigned long long count = 0;
        try {
            for (; sizes.skip(); ++count) {
            }
        } catch (const failure& problem) {
            if (problem.code() != exit_code::data) {
                throw;
            }
            return std::nullopt;
        }
        return count - read_frames;
    }

    unsigned long long skip(unsigned long long count) override {
        const unsigned long long skipped = reader.skip_some(count);
        read_frames += skipped;
        return skipped;
    }

    void prepare(const work_plan& plan) override {
        for (unsigned i = 0; i < plan.jobs; ++i) {
            decoders.emplace_back(plan.threads);
        }
    }

    bool read(frame_job& to) override {
        if (!reader.next()) {
            reader.require_some();
            return false;
        }
        ++read_frames;
        to.place = reader.place();
        to.coded_bytes = reader.bytes().size;
        reader.exchange_buffer(to.coded);
        return true;
    }

    void unpack(unsigned worker, frame_job& in, const layout_choice& wanted) override {
        decoder& codec = decoders[worker];
        const frame_layout own = codec.read_layout(in.bitstream(), in.place);
        const frame_layout described = describe ? describe(own, in) : own;
        refuse_chunks(own, in.place);
        in.picture.layout = wanted(described, in.place);
        codec.decode(in.bitstream(), in.picture, in.place);
    }

    codec_time time() const override { return sum_of_times(decoders); }

  private:
    std::string path;
    stream_choice describe;
    input_file file;
    frame_reader reader;
    unsigned long long read_frames = 0;
    std::deque<decoder> decoders;
};

class stream_output : public frame_output {
  public:
    stream_output(const std::string& path, const compression& wanted_how, incomplete becomes, const std::string& list,
                  layout_choice wanted_layout)
        : file(path, becomes),
          keeps(becomes == incomplete::kept),
          how(wanted_how),
          manifest_path(list),
          choose(std::move(wanted_layout)) {}

    const std::string& name() const override { return file.name(); }

    void prepare(const work_plan& plan, unsigned long long first) override {
        for (unsigned i = 0; i < plan.jobs; ++i) {
            encoders.emplace_back(plan.threads);
        }
        first_frame = first;
        if (!manifest_path.empty()) {
            // A run that goes on has locked its .qvr file, so that it is alone with the manifest as well.
            manifest.emplace(manifest_path, file.name(), first, keeps ? incomplete::begun_again : incomplete::removed);
        }
    }

    // All frames but the last are listed here, the last one when it is written again.
    kept_frames go_on(const std::function<frame_job()>& first) override {
        input_file kept(file.kept_path());
        frame_reader reader(kept);
        kept_frames found;
        found.complete = file.kept_is_complete();
        found.file = file.kept_path();
        std::uint64_t last = 0;
        std::optional<std::string> last_checksum;
        while (next_whole(reader)) {
            if (last_checksum) {
                manifest->add(first_frame + found.count - 1, reader.offset() - last, *last_checksum);
            }
            if (manifest) {
                last_checksum = checksum_text(reader.bytes());
            }
            last = reader.offset();
            ++found.count;
        }
        if (found.count == 0) {
            return found;
        }
        const std::uint64_t whole = reader.offset();
        file.go_on(last, whole);
        if (first && last > 0) {
            frame_job job = first();
            pack(0, job);
            file.go_on(0, whole);
            file.write(job.coded.data(), job.coded_bytes);
            file.go_on(last, whole);
        }
        return found;
    }

    frame_layout wanted(unsigned, const frame_job& in, const frame_layout& own) override {
        return choose ? choose(own, in.place) : own;
    }

    void pack(unsigned worker, frame_job& in) override {
        in.coded_bytes = encoders[worker].encode_into(in.coded, in.picture, how, in.place);
        if (manifest) {
            in.checksum = checksum_text(in.bitstream());
        }
    }

    void write(frame_job& in) override {
        file.write(in.coded.data(), in.coded_bytes);
        if (manifest) {
            manifest->add(in.number, in.coded_bytes, in.checksum);
        }
    }

    void commit(unsigned long long end, std::optional<unsigned long long> total) override {
        file.commit();
        if (manifest) {
            manifest->commit(end, total);
        }
    }

    codec_time time() const override { return sum_of_times(encoders); }
    std::optional<std::uint64_t> bytes_written() const override { return file.bytes_written(); }

  private:
    // What is not whole ends the file, as a run that was killed leaves it.
    bool next_whole(frame_reader& reader) const {
        try {
            return manifest ? reader.next() : reader.skip();
        } catch (const failure& problem) {
            if (problem.code() != exit_code::data) {
                throw;
            }
            return false;
        }
    }

    output_file file;
    bool keeps;
    compression how;
    std::string manifest_path;
    layout_choice choose;
    std::optional<manifest_writer> manifest;
    unsigned long long first_frame = 0;
    std::deque<encoder> encoders;
};

}  // namespace

std::unique_ptr<frame_input> open_stream_input(const std::string& path, stream_choice described) {
    return std::make_unique<stream_input>(path, std::move(described));
}

std::unique_ptr<frame_output> open_stream_output(const std::string& path, const compression& how, incomplete becomes,
                                                 const std::string& manifest, layout_choice wanted) {
    return std::make_unique<stream_output>(path, how, becomes, manifest, std::move(wanted));
}

}  // namespace qvr
