// SPDX-License-Identifier: BSD-3-Clause
#include "foreign_kinds.h"

#include <algorithm>
#include <string_view>
#include <vector>

#include "command.h"

namespace qvr {

namespace {

using namespace std::string_view_literals;

struct foreign_kind {
    const char* called;
    std::vector<const char*> endings;
    std::vector<std::string_view> begins;  // empty: its first bytes are not known
    std::size_t at = 0;                    // where these bytes stand
};

const std::vector<foreign_kind>& all_foreign_kinds() {
    static const std::vector<foreign_kind> rows = {
        {"a JPEG", {".jpg", ".jpeg"}, {"\xFF\xD8\xFF"sv}},
        {"a TIFF", {".tif", ".tiff"}, {"II*\0"sv, "MM\0*"sv, "II+\0"sv, "MM\0+"sv}},
        {"a DPX picture", {".dpx"}, {"SDPX"sv, "XPDS"sv}},
        {"a Cineon picture", {".cin"}, {"\x80\x2A\x5F\xD7"sv}},
        {"a PBM bitmap", {".pbm"}, {"P1\n"sv, "P1 "sv, "P4\n"sv, "P4 "sv}},
        {"a PFM", {".pfm"}, {"PF\n"sv, "Pf\n"sv}},
        {"a JPEG 2000 picture", {".jp2", ".j2k", ".j2c"}, {"\0\0\0\x0CjP  "sv, "\xFF\x4F\xFF\x51"sv}},
        {"a GIF", {".gif"}, {"GIF8"sv}},
        {"a BMP", {".bmp"}, {"BM"sv}},
        {"a WebP picture", {".webp"}, {"WEBP"sv}, 8},
        {"a TGA", {".tga"}, {}},
        {"a Photoshop file", {".psd"}, {"8BPS"sv}},
        {"an SVG", {".svg"}, {"<svg"sv}},
        {"a PDF", {".pdf"}, {"%PDF"sv}},
        {"a QuickTime movie", {".mov"}, {"ftypqt"sv, "moov"sv, "mdat"sv, "wide"sv}, 4},
        {"an MP4 clip", {".mp4", ".m4v"}, {"ftyp"sv}, 4},
        {"a Matroska clip", {".mkv", ".webm"}, {"\x1A\x45\xDF\xA3"sv}},
        {"an MXF file", {".mxf"}, {"\x06\x0E\x2B\x34"sv}},
        {"an AVI clip", {".avi"}, {"AVI "sv}, 8},
    };
    return rows;
}

}  // namespace

const char* foreign_by_ending(const std::string& path) {
    for (const foreign_kind& row : all_foreign_kinds()) {
        if (std::any_of(row.endings.begin(), row.endings.end(),
                        [&](const char* ending) { return ends_in(path, ending); })) {
            return row.called;
        }
    }
    return nullptr;
}

const char* foreign_by_content(input_file& file) {
    constexpr std::size_t k_looked_at = 16;
    const std::vector<std::uint8_t>& bytes = file.peek(k_looked_at);
    const std::string head(bytes.begin(), bytes.end());
    for (const foreign_kind& row : all_foreign_kinds()) {
        if (std::any_of(row.begins.begin(), row.begins.end(), [&](std::string_view begin) {
                return head.size() > row.at && head.compare(row.at, begin.size(), begin) == 0;
            })) {
            return row.called;
        }
    }
    return nullptr;
}

}  // namespace qvr
