// SPDX-License-Identifier: BSD-3-Clause
//
// usage: abi_load_loop LIBRARY - loads, uses and unloads the library a thousand times; nothing may stay behind.
#include <QVRUncompressed.h>
#include <dirent.h>
#include <dlfcn.h>
#include <malloc.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>

#include "comes_true.h"

namespace {

void fail(const char* what) {
    std::fprintf(stderr, "failed: %s\n", what);
    std::exit(1);
}

template <class function>
function* find(void* library, const char* name, function*) {
    void* address = dlsym(library, name);
    if (address == nullptr) {
        fail(name);
    }
    function* found = nullptr;
    std::memcpy(&found, &address, sizeof(found));
    return found;
}

// The declared function gives its type alone and is never called by its name, so nothing has to be linked.
#define QVR_FIND(library, name) find(library, #name, static_cast<decltype(&name)>(nullptr))

size_t count_entries(const char* folder) {
    size_t count = 0;
    if (DIR* listed = opendir(folder)) {
        while (const dirent* entry = readdir(listed)) {
            count += entry->d_name[0] != '.' ? 1 : 0;
        }
        closedir(listed);
    }
    return count;
}

size_t count_threads() {
    return count_entries("/proc/self/task");
}

size_t bytes_in_use() {
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

size_t count_mappings() {
    std::ifstream maps("/proc/self/maps");
    return static_cast<size_t>(std::count(std::istreambuf_iterator<char>(maps), {}, '\n'));
}

void use_handles(void* library) {
    const auto create_encoder = QVR_FIND(library, QVRUncompressed_CreateEncoder);
    const auto destroy_encoder = QVR_FIND(library, QVRUncompressed_DestroyEncoder);
    const auto create_decoder = QVR_FIND(library, QVRUncompressed_CreateDecoder);
    const auto destroy_decoder = QVR_FIND(library, QVRUncompressed_DestroyDecoder);
    const auto encode_frame = QVR_FIND(library, QVRUncompressed_EncodeFrame);
    const auto decode_frame = QVR_FIND(library, QVRUncompressed_DecodeFrame);

    const QVRUncompressed_CodecConfig_t config = {28, 3, nullptr, nullptr};
    QVRUncompressed_Encoder encoder = nullptr;
    QVRUncompressed_Decoder decoder = nullptr;
    if (create_encoder(&config, &encoder) != 0 || create_decoder(&config, &decoder) != 0 || encoder == nullptr ||
        decoder == nullptr) {
        fail("handles");
    }
    const QVRUncompressed_UncompressedParams_t up = {36, 14, 1, 4, 2, 0, 0, 0};
    const QVRUncompressed_CompressedParams_t cp = {10, 1, 2};
    const uint8_t src[8] = {0, 1, 2, 3, 0, 1, 2, 3};
    uint8_t stream[2048];
    uint8_t raw[8] = {};
    uint32_t written = 0;
    if (encode_frame(encoder, &up, &cp, src, 8, stream, sizeof(stream), &written) != 0 ||
        decode_frame(decoder, &up, stream, written, raw, 8, &written) != 0 || std::memcmp(raw, src, 8) != 0) {
        fail("a frame");
    }
    // A failure, too: exceptions need tables that are unloaded with the library.
    if (decode_frame(decoder, &up, stream, 3, raw, 8, &written) != 1) {
        fail("a broken frame");
    }
    destroy_encoder(encoder);
    destroy_decoder(decoder);
}

void use_the_rest(void* library) {
    const auto get_version = QVR_FIND(library, QVRUncompressed_GetVersion);
    uint32_t major = 0;
    get_version(&major, nullptr, nullptr, nullptr, nullptr);
    if (major != 2) {
        fail("the version");
    }
    QVR_FIND(library, QVRUncompressed_GetCompressedBufSize);
    QVR_FIND(library, QVRUncompressed_GetUncompressedBufSize);
    QVR_FIND(library, QVRUncompressed_GetCompressedWrapBufSize);
    QVR_FIND(library, QVRUncompressed_ReadMetadata);
    QVR_FIND(library, QVRUncompressed_EncodeAndWrapFrame);
    QVR_FIND(library, QVRUncompressed_ReadWrapCount);
    QVR_FIND(library, QVRUncompressed_ReadWrapMetadata);
    QVR_FIND(library, QVRUncompressed_DecodeAndUnwrapFrame);
}

void load_use_and_unload(const char* path) {
    void* library = dlopen(path, RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) {
        fail(dlerror());
    }
    use_handles(library);
    use_the_rest(library);
    if (dlclose(library) != 0) {
        fail("dlclose");
    }
    if (dlopen(path, RTLD_NOW | RTLD_NOLOAD) != nullptr) {
        fail("the library stays loaded");
    }
}

}  // namespace

int main(int count, char** arguments) {
    if (count != 2) {
        fail("usage: abi_load_loop LIBRARY");
    }
    constexpr int rounds = 1000;
    mallopt(M_ARENA_MAX, 1);  // or else threads that come and go make more of them for a while
    const size_t threads = count_threads();
    for (int round = 0; round < 50; ++round) {  // what the system keeps for good is kept from now on
        load_use_and_unload(arguments[1]);
    }
    const size_t files = count_entries("/proc/self/fd");
    const size_t bytes = bytes_in_use();
    const size_t mappings = count_mappings();
    for (int round = 0; round < rounds; ++round) {
        load_use_and_unload(arguments[1]);
    }
    // A joined thread may linger in the process's list for a moment.
    if (!comes_true([&] { return count_threads() == threads; })) {
        fail("threads stay behind");
    }
    if (count_entries("/proc/self/fd") != files) {
        fail("open files stay behind");
    }
    // A block has 32 bytes or more, and the library more than one mapping: half a block a round is none.
    if (bytes_in_use() >= bytes + 16 * rounds) {
        fail("memory stays behind");
    }
    if (count_mappings() >= mappings + rounds) {
        fail("mappings stay behind");
    }
    std::printf("loaded and unloaded %d times\n", 50 + rounds);
    return 0;
}
