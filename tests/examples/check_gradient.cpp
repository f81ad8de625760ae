// SPDX-License-Identifier: BSD-3-Clause
//
// Whether a file holds the 640x360 RGBA gradient that the encode_frame example makes: check_gradient FILE.raw
#include <cstdio>
#include <fstream>
#include <iterator>
#include <vector>

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: check_gradient FILE.raw\n");
        return 2;
    }
    std::ifstream file(argv[1], std::ios::binary);
    const std::vector<char> raw{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    if (raw.size() != 640 * 360 * 4) {
        std::fprintf(stderr, "%zu bytes are not 640 x 360 pixels\n", raw.size());
        return 1;
    }
    for (std::size_t i = 0; i < raw.size(); ++i) {
        const std::size_t x = i / 4 % 640;
        const std::size_t y = i / 4 / 640;
        const std::size_t wanted[] = {x * 255 / 639, y * 255 / 359, (x + y) & 255, x * 255 / 639};
        if (static_cast<unsigned char>(raw[i]) != wanted[i % 4]) {
            std::fprintf(stderr, "byte %zu differs\n", i);
            return 1;
        }
    }
    std::printf("all %zu bytes are right\n", raw.size());
    return 0;
}
