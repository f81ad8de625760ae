// SPDX-License-Identifier: BSD-3-Clause
#include "manifest.h"

#include <xxhash.h>

#include <algorithm>

#include "failure.h"

namespace qvr {

namespace {

constexpr const char* k_schema = "qvr-manifest/1";
constexpr const char* k_checksum = "xxh3_128";

}  // namespace

std::string checksum_text(bytes_view of) {
    XXH128_canonical_t canonical;
    XXH128_canonicalFromHash(&canonical, XXH3_128bits(of.data, of.size));
    std::string text;
    for (const unsigned char value : canonical.digest) {
        constexpr const char* k_digits = "0123456789abcdef";
        text += k_digits[value / 16];
        text += k_digits[value % 16];
    }
    return text;
}

manifest_writer::manifest_writer(const std::string& path, const std::string& described, unsigned long long first,
                                 incomplete becomes)
    : file(path, becomes) {
    const json header = {
        {"schema", k_schema}, {"file", base_name(described)}, {"first", first}, {"checksum", k_checksum}};
    write_line(header);
}

void manifest_writer::write_line(const json& line) {
    file.write(json_line(line));
}

void manifest_writer::add(unsigned long long number, std::uint64_t size, const std::string& checksum) {
    const json line = {{"frame", number}, {"offset", offset}, {"size", size}, {k_checksum, checksum}};
    write_line(line);
    offset += size;
    ++frames;
}

void manifest_writer::commit(unsigned long long end, std::optional<unsigned long long> total) {
    json last = {{"frames", frames}, {"bytes", offset}, {"end", end}};
    if (total) {
        last["total"] = *total;
    }
    write_line(last);
    file.commit();
}

manifest_reader::manifest_reader(const std::string& path) : file(path) {
    const std::optional<std::string> header = read_line();
    const json read = json::parse(header.value_or(""), nullptr, false);
    if (!read.is_object() || read.value("schema", json()) != k_schema) {
        fail("this is not a manifest of schema qvr-manifest/1");
    }
    if (!read.contains("first") || !read["first"].is_number_unsigned() ||
        read.value("checksum", json()) != k_checksum) {
        fail("the header has no number of the first frame, or another checksum than xxh3_128");
    }
    first_frame = read["first"];
}

void manifest_reader::fail(const std::string& what) {
    broken = what;
    throw failure(exit_code::data, {file.name(), "line " + std::to_string(line_number)}, what,
                  "make the manifest again: 'qvr encode --manifest' and 'qvr join --manifest' write one");
}

std::optional<std::string> manifest_reader::read_line() {
    constexpr std::size_t k_step = 65536;
    line_number += broken.empty() ? 1 : 0;
    if (!broken.empty()) {
        fail(std::string(broken));
    }
    while (true) {
        const auto begin = buffer.begin() + static_cast<std::ptrdiff_t>(taken);
        const auto end = buffer.begin() + static_cast<std::ptrdiff_t>(held);
        const auto feed = std::find(begin, end, std::uint8_t{'\n'});
        if (feed != end) {
            taken = static_cast<std::size_t>(feed - buffer.begin()) + 1;
            return std::string(begin, feed);
        }
        buffer.erase(buffer.begin(), begin);
        held -= taken;
        taken = 0;
        if (held > k_step) {
            fail("the line is too long");
        }
        const std::size_t got = file.read_into(buffer, held, k_step);
        if (got == 0) {
            return std::nullopt;
        }
        held += got;
    }
}

std::optional<manifest_frame> manifest_reader::next() {
    if (ended) {
        return std::nullopt;
    }
    const std::optional<std::string> line = read_line();
    if (!line) {
        fail("the manifest is not complete: the line with the number of all frames is missing");
    }
    const json read = json::parse(*line, nullptr, false);
    const auto number = [&](const char* key) -> std::uint64_t {
        if (!read.is_object() || !read.contains(key) || !read[key].is_number_unsigned()) {
            fail(std::string("there is no number '") + key + "' in it");
        }
        return read[key];
    };
    if (read.is_object() && read.contains("frames")) {
        if (number("frames") != frames || number("bytes") != offset) {
            fail("the numbers of frames and bytes are not those of the lines before");
        }
        end_frame = number("end");
        ended = true;
        if (read.contains("total")) {
            total_frames = number("total");
        }
        return std::nullopt;
    }
    manifest_frame found{number("frame"), number("offset"), number("size"), {}};
    if (!read.contains(k_checksum) || !read[k_checksum].is_string()) {
        fail("there is no checksum in it");
    }
    found.checksum = read[k_checksum];
    if (found.offset != offset) {
        fail("the frame does not lie behind the one before it");
    }
    offset += found.size;
    ++frames;
    return found;
}

}  // namespace qvr
