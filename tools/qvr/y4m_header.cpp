// SPDX-License-Identifier: BSD-3-Clause
#include "y4m_header.h"

#include <strings.h>

#include <algorithm>
#include <utility>

#include "numbers.h"
#include "y4m_planes.h"

namespace qvr {

namespace {

// Depths of samples that have a type of their own.
struct depth_row {
    unsigned depth;
    std::uint32_t type;
};

constexpr depth_row k_depths[] = {
    {8, QVRUncompressed_TypeU8},
    {10, QVRUncompressed_TypeU10},
    {12, QVRUncompressed_TypeU12},
    {16, QVRUncompressed_TypeU16},
};

std::uint32_t type_of_depth(unsigned depth) {
    for (const depth_row& row : k_depths) {
        if (row.depth == depth) {
            return row.type;
        }
    }
    return QVRUncompressed_TypeU16;
}

// "30000:1001"
std::optional<frame_rate> as_ratio(const std::string& text) {
    const auto read = parse_pair<std::uint32_t>(text, ":");
    return read ? std::optional<frame_rate>({read->first, read->second}) : std::nullopt;
}

bool same_letters(const std::string& a, const std::string& b) {
    return strcasecmp(a.c_str(), b.c_str()) == 0;
}

class header_parser {
  public:
    explicit header_parser(std::string of) : file(std::move(of)) {}

    y4m_header parse(const std::string& line) {
        std::string sampling = "420";
        for (std::size_t at = line.find(' '); at < line.size();) {
            const std::size_t end = std::min(line.find(' ', at + 1), line.size());
            if (end > at + 1) {
                parameter(line[at + 1], line.substr(at + 2, end - at - 2), sampling);
            }
            at = end;
        }
        if (made.layout.width == 0 || made.layout.height == 0) {
            throw failure(exit_code::data, {file, {}}, "its first line gives no size", k_damaged);
        }
        set_sampling(sampling);
        return made;
    }

  private:
    [[noreturn]] void fail(char key, const std::string& value) const {
        throw failure(exit_code::data, {file, {}},
                      std::string("its first line has '") + key + value.substr(0, 40) + "', which makes no sense",
                      k_damaged);
    }

    void parameter(char key, const std::string& value, std::string& sampling) {
        switch (key) {
            case 'W':
                made.layout.width = dimension(key, value);
                break;
            case 'H':
                made.layout.height = dimension(key, value);
                break;
            case 'F':
                set_rate(value);
                break;
            case 'I':
                set_interlacing(value);
                break;
            case 'A':
                set_aspect(value);
                break;
            case 'C':
                sampling = value;
                break;
            default:
                set_other(key, value);
                break;
        }
    }

    // Comments and what other programs add. Some of it only says what is so without it.
    void set_other(char key, const std::string& value) {
        const std::size_t equals = std::min(value.find('='), value.size());
        const std::string name = key + value.substr(0, equals);
        const std::string text = value.substr(std::min(equals + 1, value.size()));
        if (name == "XYSCSS") {
            require_common_siting(text);
        } else if (name == "XCOLORRANGE" && text == "FULL") {
            made.left_out.push_back("that its samples use the full range is left out");
        } else if (name != "XCOLORRANGE" || text != "LIMITED") {
            made.left_out.push_back("'" + (key + value).substr(0, 40) + "' of its first line is left out");
        }
    }

    // Frames of 4:2:0 are written as C420jpeg. Older programs write the siting in capitals, as in XYSCSS=420MPEG2.
    void require_common_siting(const std::string& sampling) {
        for (const char* siting : {"mpeg2", "paldv"}) {
            if (same_letters(sampling, std::string("420") + siting)) {
                made.left_out.push_back(std::string("that its chroma is sited as C420") + siting + " says is left out");
            }
        }
    }

    std::uint32_t dimension(char key, const std::string& value) const {
        const std::optional<std::uint32_t> number = parse_number<std::uint32_t>(value);
        if (!number || *number == 0) {
            fail(key, value);
        }
        return *number;
    }

    // 0:0 stands for unknown.
    void set_rate(const std::string& value) {
        const std::optional<frame_rate> ratio = as_ratio(value);
        if (!ratio) {
            fail('F', value);
        }
        if (ratio->frames != 0 && ratio->seconds != 0) {
            made.rate = ratio;
        }
    }

    void set_aspect(const std::string& value) {
        const std::optional<frame_rate> ratio = as_ratio(value);
        if (!ratio) {
            fail('A', value);
        }
        if (ratio->frames != ratio->seconds) {
            made.left_out.push_back("its pixel aspect of " + value + " is left out");
        }
    }

    void set_interlacing(const std::string& value) {
        if (value != "p" && value != "?" && value != "t" && value != "b" && value != "m") {
            fail('I', value);
        }
        if (value == "b") {
            made.left_out.push_back("that the bottom field comes first is left out");
        }
        if (value == "m") {
            made.left_out.push_back("which of its frames are interlaced is left out: all are marked so");
        }
        made.layout.frameLayout =
            value == "p" || value == "?" ? QVRUncompressed_LayoutProgressive : QVRUncompressed_LayoutInterlaced;
    }

    void set_sampling(const std::string& value) {
        for (const y4m_kind& kind : all_y4m_kinds()) {
            const std::string deep = std::string(kind.tag) + (kind.depth_mark ? kind.depth_mark : "");
            const bool siting =
                kind.order == QVRUncompressed_OrderPlanar420 && (value == "420mpeg2" || value == "420paldv");
            const bool is_8_bit = value == kind.tag || value == kind.tag_8_bit || siting;
            const std::optional<std::uint32_t> depth = kind.depth_mark && value.compare(0, deep.size(), deep) == 0
                                                           ? parse_number<std::uint32_t>(value.substr(deep.size()))
                                                           : std::nullopt;
            if (is_8_bit || (depth && *depth >= 8 && *depth <= 16)) {
                require_common_siting(value);
                made.layout.colorComponentOrder = kind.order;
                set_depth(is_8_bit ? 8 : *depth);
                return;
            }
        }
        throw failure(exit_code::usage, {file, {}},
                      "its samples are arranged as C" + value.substr(0, 40) +
                          ", which no frame can hold: colours are never resampled",
                      "write it as 4:2:0, 4:2:2, 4:4:4, 4:4:4 with alpha or mono with another program");
    }

    // Of depths without a type of their own the samples become 16-bit ones.
    void set_depth(unsigned depth) {
        made.depth = depth;
        const std::uint32_t own = type_of_depth(depth);
        const bool fits = is_supported(made.layout.colorComponentOrder, own);
        made.layout.componentType = fits ? own : std::uint32_t{QVRUncompressed_TypeU16};
        if (depth != 16 && made.layout.componentType == QVRUncompressed_TypeU16) {
            made.left_out.push_back("that its samples have " + std::to_string(depth) +
                                    " bits is left out: they become the top bits of 16-bit ones");
        }
    }

    std::string file;
    y4m_header made;
};

}  // namespace

y4m_header parse_y4m_header(const std::string& line, const std::string& file) {
    return header_parser(file).parse(line);
}

unsigned y4m_depth(std::uint32_t type) {
    for (const depth_row& row : k_depths) {
        if (row.type == type) {
            return row.depth;
        }
    }
    return 0;
}

// Two pixels of a row share their chroma in UYVY, so that the last one of an odd row has no place for its own.
void require_pairs(const frame_layout& layout, const location& where) {
    if (layout.colorComponentOrder == QVRUncompressed_OrderCbYCrY && layout.width % 2 != 0) {
        throw failure(exit_code::usage, where,
                      "4:2:2 frames of odd width, here " + std::to_string(layout.width) + ", cannot be kept",
                      "crop or pad the picture to an even width with another program");
    }
}

}  // namespace qvr
