// SPDX-License-Identifier: BSD-3-Clause
#include "pnm_file.h"

#include <algorithm>

#include "numbers.h"

namespace qvr {

namespace {

// The types that a picture's samples can have, by the largest value that its header says.
struct sample_range {
    std::uint32_t most;
    std::uint32_t type;
    unsigned shift;  // from the low bits of a word to its top bits
};

constexpr sample_range k_ranges[] = {
    {255, QVRUncompressed_TypeU8, 0},
    {1023, QVRUncompressed_TypeU10, 6},
    {4095, QVRUncompressed_TypeU12, 4},
    {65535, QVRUncompressed_TypeU16, 0},
};

const sample_range& range_of_type(std::uint32_t type) {
    return *std::find_if(std::begin(k_ranges), std::end(k_ranges),
                         [type](const sample_range& range) { return range.type == type; });
}

[[noreturn]] void fail(const input_file& file, const std::string& what) {
    throw failure(exit_code::data, {file.name(), {}}, what, k_damaged);
}

struct header {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint32_t depth = 0;
    std::uint32_t most = 0;
};

class header_reader {
  public:
    explicit header_reader(input_file& from) : file(from) {}

    header read() {
        const std::string magic = {next(), next()};
        if (magic == "P7") {
            return read_pam();
        }
        if (magic == "P5" || magic == "P6") {
            header made;
            made.depth = magic == "P5" ? 1 : 3;
            made.width = number(word());
            made.height = number(word());
            made.most = number(word());
            return made;
        }
        const bool known = magic.size() == 2 && magic[0] == 'P' && magic[1] >= '1' && magic[1] <= '4';
        if (!known) {
            fail(file, "there is no Netpbm picture where one should begin");
        }
        throw failure(exit_code::usage, {file.name(), {}},
                      "Netpbm pictures of kind " + magic + " (plain text, or one bit a pixel) are not read",
                      "write it as a binary PGM, PPM or PAM of 8 or 16 bits");
    }

  private:
    static constexpr std::size_t k_most_header = 10000;

    char next() {
        std::uint8_t read = 0;
        if (++taken > k_most_header || file.read(&read, 1) == 0) {
            fail(file, "the header of the picture does not end");
        }
        return static_cast<char>(read);
    }

    static bool is_blank(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

    // The next word, with the one blank behind it. Comments go from # to the end of the line.
    std::string word() {
        char c = next();
        while (is_blank(c) || c == '#') {
            while (c == '#' && next() != '\n') {
            }
            c = next();
        }
        std::string text;
        for (; !is_blank(c); c = next()) {
            text += c;
        }
        return text;
    }

    std::string line() {
        std::string text;
        for (char c = next(); c != '\n'; c = next()) {
            text += c;
        }
        return text;
    }

    std::uint32_t number(const std::string& text) const {
        const std::uint32_t value = parse_number<std::uint32_t>(text).value_or(0);
        if (value == 0) {
            fail(file, "the header of the picture has '" + text.substr(0, 40) + "' where a number should be");
        }
        return value;
    }

    header read_pam() {
        header made;
        line();
        for (std::string key = word(); key != "ENDHDR"; key = word()) {
            std::uint32_t* value = key == "WIDTH"    ? &made.width
                                   : key == "HEIGHT" ? &made.height
                                   : key == "DEPTH"  ? &made.depth
                                   : key == "MAXVAL" ? &made.most
                                                     : nullptr;
            if (value) {
                *value = number(word());
            } else if (key == "TUPLTYPE") {
                word();  // what the channels are follows from their number
            } else {
                fail(file, "the header of the picture has '" + key.substr(0, 40) + "', which no PAM has");
            }
        }
        if (made.width == 0 || made.height == 0 || made.depth == 0 || made.most == 0) {
            fail(file, "the header of the picture lacks one of WIDTH, HEIGHT, DEPTH and MAXVAL");
        }
        return made;
    }

    input_file& file;
    std::size_t taken = 0;
};

// Big-endian words with the sample in the low bits, to little-endian words with it in the top bits, in place.
void words_from_file(std::uint8_t* at, std::size_t count, const sample_range& range, const location& where) {
    unsigned highest = 0;
    for (const std::uint8_t* end = at + 2 * count; at != end; at += 2) {
        const unsigned value = static_cast<unsigned>(at[0] << 8 | at[1]);
        highest = std::max(highest, value);
        at[0] = static_cast<std::uint8_t>(value << range.shift);
        at[1] = static_cast<std::uint8_t>(value << range.shift >> 8);
    }
    if (highest > range.most) {
        // The next picture can be read all the same: the place tells this failure from one of the same kind there.
        throw failure(exit_code::data, where,
                      "there is a sample of " + std::to_string(highest) + ", but the header says that none passes " +
                          std::to_string(range.most),
                      k_damaged);
    }
}

void read_pnm(input_file& file, picture& to) {
    const header head = header_reader(file).read();
    const auto* range = std::find_if(std::begin(k_ranges), std::end(k_ranges),
                                     [&head](const sample_range& row) { return row.most == head.most; });
    if (range == std::end(k_ranges)) {
        throw failure(exit_code::usage, {file.name(), {}},
                      "its largest sample is said to be " + std::to_string(head.most) +
                          ", but samples are never rescaled: only 255, 1023, 4095 and 65535 can be kept",
                      "convert it to one of these with another program");
    }
    if (head.depth > 4) {
        throw failure(exit_code::usage, {file.name(), {}},
                      "it has " + std::to_string(head.depth) + " channels, but 1 to 4 can be kept",
                      "grey, grey and alpha, RGB or RGBA");
    }
    to.width = head.width;
    to.height = head.height;
    to.channels = head.depth;
    to.type = range->type;
    const std::size_t wanted = require_picture_size(to, file.name(), "picture");
    const std::size_t got = file.read_into(to.samples, 0, wanted);
    if (got < wanted) {
        fail(file, "the samples of the picture are not complete: " + std::to_string(got) + " bytes are left of " +
                       std::to_string(wanted));
    }
    if (to.bytes_per_sample() == 2) {
        words_from_file(to.samples.data(), wanted / 2, *range, to.place);
    }
}

void write_samples(output_file& file, const picture& shape, const std::uint8_t* from) {
    const std::size_t count = static_cast<std::size_t>(shape.row_bytes() * shape.height);
    if (shape.bytes_per_sample() == 1) {
        file.write(from, count);
        return;
    }
    constexpr std::size_t k_step = std::size_t{1} << 20;
    const unsigned shift = range_of_type(shape.type).shift;
    std::vector<std::uint8_t> words(std::min(count, k_step));
    for (std::size_t done = 0; done < count; done += words.size()) {
        words.resize(std::min(count - done, k_step));
        for (std::size_t i = 0; i < words.size(); i += 2) {
            const unsigned value = static_cast<unsigned>(from[done + i] | from[done + i + 1] << 8) >> shift;
            words[i] = static_cast<std::uint8_t>(value >> 8);
            words[i + 1] = static_cast<std::uint8_t>(value);
        }
        file.write(words.data(), words.size());
    }
}

void write_pnm(output_file& file, const picture& shape, const std::uint8_t* samples) {
    file.write(std::string(shape.channels == 1 ? "P5\n" : "P6\n") + std::to_string(shape.width) + " " +
               std::to_string(shape.height) + "\n" + std::to_string(range_of_type(shape.type).most) + "\n");
    write_samples(file, shape, samples);
}

void write_pam(output_file& file, const picture& shape, const std::uint8_t* samples) {
    constexpr const char* k_tuples[] = {"GRAYSCALE", "GRAYSCALE_ALPHA", "RGB", "RGB_ALPHA"};
    file.write("P7\nWIDTH " + std::to_string(shape.width) + "\nHEIGHT " + std::to_string(shape.height) + "\nDEPTH " +
               std::to_string(shape.channels) + "\nMAXVAL " + std::to_string(range_of_type(shape.type).most) +
               "\nTUPLTYPE " + k_tuples[shape.channels - 1] + "\nENDHDR\n");
    write_samples(file, shape, samples);
}

bool begins_with(input_file& file, char kind) {
    const std::vector<std::uint8_t>& head = file.peek(8);
    return head.size() >= 2 && head[0] == 'P' && head[1] == static_cast<std::uint8_t>(kind);
}

picture_format netpbm(const char* name, const char* extension, const std::vector<unsigned>& channels,
                      const char* channels_text) {
    return {"a",
            name,
            extension,
            {QVRUncompressed_TypeU8, QVRUncompressed_TypeU16, QVRUncompressed_TypeU10, QVRUncompressed_TypeU12},
            "8, 10, 12 or 16 bits",
            channels,
            channels_text,
            QVRUncompressed_OrderAlpha,
            true,
            read_pnm,
            name == std::string("PAM") ? write_pam : write_pnm};
}

}  // namespace

const picture_format k_pam_format = netpbm("PAM", ".pam", {1, 3, 4}, "RGB, RGBA or a lone alpha plane");
const picture_format k_ppm_format = netpbm("PPM", ".ppm", {3}, "RGB");
const picture_format k_pgm_format = netpbm("PGM", ".pgm", {1}, "a lone alpha plane, as grey");
const picture_format k_pnm_format = netpbm("PNM", ".pnm", {1, 3}, "RGB or a lone alpha plane");

bool begins_like_pam(input_file& file) {
    return begins_with(file, '7');
}

bool begins_like_ppm(input_file& file) {
    return begins_with(file, '6') || begins_with(file, '3');
}

bool begins_like_pgm(input_file& file) {
    return begins_with(file, '5') || begins_with(file, '2');
}

bool begins_like_pnm(input_file& file) {
    return begins_like_ppm(file) || begins_like_pgm(file);
}

}  // namespace qvr
