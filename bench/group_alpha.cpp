// SPDX-License-Identifier: BSD-3-Clause
//
// Coded alpha beside general-purpose compressors, on drawn mattes.
#include <lz4.h>
#include <zstd.h>

#include <memory>
#include <stdexcept>

#include "cases.h"
#include "codec.h"
#include "coded_alpha_tokens.h"
#include "mattes.h"

namespace bench {

namespace {

using bytes = std::vector<std::uint8_t>;

void expect(bool good, const char* what) {
    if (!good) {
        throw std::runtime_error(what);
    }
}

struct lz4 {
    static int size_of(const bytes& of) { return static_cast<int>(of.size()); }
    static bytes room_for(const bytes& raw) { return bytes(static_cast<std::size_t>(LZ4_compressBound(size_of(raw)))); }
    static std::size_t compress(const bytes& raw, bytes& to) {
        const int size = LZ4_compress_default(reinterpret_cast<const char*>(raw.data()),
                                              reinterpret_cast<char*>(to.data()), size_of(raw), size_of(to));
        expect(size > 0, "LZ4 did not compress");
        return static_cast<std::size_t>(size);
    }
    static void decompress(const bytes& coded, bytes& to) {
        const int size = LZ4_decompress_safe(reinterpret_cast<const char*>(coded.data()),
                                             reinterpret_cast<char*>(to.data()), size_of(coded), size_of(to));
        expect(size == size_of(to), "LZ4 did not decompress");
    }
};

// Level 1, with contexts that are made once, as a handle is.
class zstd {
  public:
    static bytes room_for(const bytes& raw) { return bytes(ZSTD_compressBound(raw.size())); }
    std::size_t compress(const bytes& raw, bytes& to) {
        const std::size_t size = ZSTD_compressCCtx(in_.get(), to.data(), to.size(), raw.data(), raw.size(), 1);
        expect(ZSTD_isError(size) == 0, "zstd did not compress");
        return size;
    }
    void decompress(const bytes& coded, bytes& to) {
        const std::size_t size = ZSTD_decompressDCtx(out_.get(), to.data(), to.size(), coded.data(), coded.size());
        expect(size == to.size(), "zstd did not decompress");
    }

  private:
    std::unique_ptr<ZSTD_CCtx, std::size_t (*)(ZSTD_CCtx*)> in_{ZSTD_createCCtx(), ZSTD_freeCCtx};
    std::unique_ptr<ZSTD_DCtx, std::size_t (*)(ZSTD_DCtx*)> out_{ZSTD_createDCtx(), ZSTD_freeDCtx};
};

// A matte, and what each of the three makes of it.
struct coded_matte {
    coded_matte(const matte_kind& kind, unsigned sample_bytes, const frame_size& size)
        : up(frame_record(14, sample_bytes, size)), raw(to_samples(kind.draw(size), sample_bytes)), back(raw.size()) {
        ours.resize(stream_bytes(up, coded_alpha()));
        ours.resize(encoder().encode(up, coded_alpha(), raw.data(), ours.data()));
        by_lz4 = lz4::room_for(raw);
        by_lz4.resize(lz4::compress(raw, by_lz4));
        by_zstd = zstd::room_for(raw);
        by_zstd.resize(other.compress(raw, by_zstd));
    }

    frame_params up;
    bytes raw;
    bytes back;
    bytes ours;
    bytes by_lz4;
    bytes by_zstd;
    zstd other;
};

void time_encoding(recorder& record, const matte_kind& kind, unsigned sample_bytes, const frame_size& size) {
    coded_matte all(kind, sample_bytes, size);
    encoder with;
    bytes to(stream_bytes(all.up, coded_alpha()));
    bytes to_lz4 = lz4::room_for(all.raw);
    bytes to_zstd = zstd::room_for(all.raw);
    record.compare(
        [&] { with.encode(all.up, coded_alpha(), all.raw.data(), to.data()); },
        {{"lz4", [&] { lz4::compress(all.raw, to_lz4); }}, {"zstd-1", [&] { all.other.compress(all.raw, to_zstd); }}});
    const auto coded = static_cast<double>(all.ours.size());
    record.number("size / raw", "x", coded / static_cast<double>(all.raw.size()));
    record.number("size / lz4", "x", coded / static_cast<double>(all.by_lz4.size()));
    record.number("size / zstd-1", "x", coded / static_cast<double>(all.by_zstd.size()));
}

void time_decoding(recorder& record, const matte_kind& kind, unsigned sample_bytes, const frame_size& size) {
    coded_matte all(kind, sample_bytes, size);
    decoder with;
    const auto coded = static_cast<std::uint32_t>(all.ours.size());
    with.decode(all.up, all.ours.data(), coded, all.back.data());
    expect(all.back == all.raw, "coded alpha did not come back as it was");
    const double seconds = record.compare([&] { with.decode(all.up, all.ours.data(), coded, all.back.data()); },
                                          {{"lz4", [&] { lz4::decompress(all.by_lz4, all.back); }},
                                           {"zstd-1", [&] { all.other.decompress(all.by_zstd, all.back); }}});
    const auto tokens = static_cast<double>(count_tokens(all.ours, size.width, sample_bytes));
    record.number("tokens a second", "G", tokens / seconds * 1e-9);
    record.number("samples a token", "", static_cast<double>(size.width) * size.height / tokens);
}

}  // namespace

void add_alpha(case_list& cases, const options& chosen) {
    for (const frame_size& size : chosen.sizes) {
        for (const unsigned sample_bytes : {1u, 2u}) {
            for (const matte_kind& kind : all_mattes()) {
                const std::string rest =
                    std::string(kind.name) + "/" + std::to_string(8 * sample_bytes) + "-bit/" + to_text(size);
                cases.push_back({"alpha/encode/" + rest,
                                 [=, &kind](recorder& record) { time_encoding(record, kind, sample_bytes, size); }});
                cases.push_back({"alpha/decode/" + rest,
                                 [=, &kind](recorder& record) { time_decoding(record, kind, sample_bytes, size); }});
            }
        }
    }
}

}  // namespace bench
