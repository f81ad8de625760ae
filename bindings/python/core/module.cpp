// SPDX-License-Identifier: BSD-3-Clause
//
// The module qvruncompressed._core: the library's calls on runs of bytes. What arrays, names and shapes mean is settled
// in Python before; here every size is that of a real buffer.
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <deque>
#include <tuple>
#include <utility>
#include <vector>

#include "QVRUncompressed.h"
#include "byte_span.h"
#include "codec.h"
#include "failure.h"

namespace py = pybind11;

namespace qvr {

namespace {

using params = QVRUncompressed_UncompressedParams_t;
using compression = QVRUncompressed_CompressedParams_t;
using wrap_record = QVRUncompressed_WrapParams_t;

// A frame's record without its size field, in the order of the header.
using fields = std::array<std::uint32_t, 7>;
// The wrapType and the bytes of each payload.
using payload_sizes = std::vector<std::pair<std::uint32_t, std::uint32_t>>;

params to_params(const fields& from) {
    return {QVRUNCOMPRESSED_UNCOMPRESSED_PARAMS_SIZE, from[0], from[1], from[2], from[3], from[4], from[5], from[6]};
}

fields to_fields(const params& from) {
    return {from.colorComponentOrder, from.componentType, from.width, from.height, from.rowBytes,
            from.frameLayout,         from.rowBytes2};
}

compression to_compression(bool alpha_rle, std::uint8_t slices) {
    return {QVRUNCOMPRESSED_COMPRESSED_PARAMS_SIZE, static_cast<std::uint8_t>(alpha_rle ? 1 : 0), slices};
}

std::uint8_t* bytes_of(const py::handle& bytes) {
    return reinterpret_cast<std::uint8_t*>(PyBytes_AS_STRING(bytes.ptr()));
}

// Bytes that nobody else has seen yet.
py::bytes new_bytes(std::size_t size) {
    PyObject* made = PyBytes_FromStringAndSize(nullptr, static_cast<py::ssize_t>(size));
    if (made == nullptr) {
        throw py::error_already_set();
    }
    return py::reinterpret_steal<py::bytes>(made);
}

py::bytes shortened(py::bytes from, std::uint32_t size) {
    PyObject* bytes = from.release().ptr();
    if (_PyBytes_Resize(&bytes, static_cast<py::ssize_t>(size)) != 0) {
        throw py::error_already_set();
    }
    return py::reinterpret_steal<py::bytes>(bytes);
}

py::bytes encode(encoder& self, const fields& frame, bool alpha_rle, std::uint8_t slices, const py::object& src) {
    const params up = to_params(frame);
    const compression how = to_compression(alpha_rle, slices);
    const byte_span source(src, access::read);
    // One more, so that the bytes are not the shared empty ones.
    const std::uint32_t capacity = QVRUncompressed_GetCompressedBufSize(&up, &how);
    py::bytes made = new_bytes(std::size_t{capacity} + 1);
    std::uint8_t* const target = bytes_of(made);
    std::uint32_t written = 0;
    self.run([&](QVRUncompressed_Encoder handle) {
        return QVRUncompressed_EncodeFrame(handle, &up, &how, source.data(), source.size_32(), target, capacity,
                                           &written);
    });
    return shortened(std::move(made), written);
}

// payloads: at least one. The first one's type decides what is wrapped; src is the alpha plane beside a QCX frame.
py::bytes wrap(encoder& self, const fields& frame, bool alpha_rle, std::uint8_t slices, std::uint32_t first_type,
               const std::vector<py::object>& payloads, const py::object& src) {
    const params up = to_params(frame);
    const compression how = to_compression(alpha_rle, slices);
    const byte_span source(src, access::read);
    std::deque<byte_span> held;
    std::vector<const std::uint8_t*> data;
    std::vector<wrap_record> records;
    std::uint64_t total = source.size();
    for (const py::object& payload : payloads) {
        const byte_span& span = held.emplace_back(payload, access::read);
        data.push_back(span.data());
        records.push_back({QVRUNCOMPRESSED_WRAP_PARAMS_SIZE,
                           records.empty() ? first_type : std::uint32_t{QVRUncompressed_WrapTile}, span.size_32()});
        total += span.size();
    }
    const auto count = static_cast<std::uint32_t>(records.size());
    const std::uint32_t capacity = QVRUncompressed_GetCompressedWrapBufSize(&up, &how, records.data(), count);
    if (total > k_most_bytes) {
        raise("ArgumentError", "the payloads are too large: a frame holds less than 4 GiB");
    }
    py::bytes made = new_bytes(std::size_t{capacity} + 1);
    std::uint8_t* const target = bytes_of(made);
    std::uint32_t written = 0;
    self.run([&](QVRUncompressed_Encoder handle) {
        return QVRUncompressed_EncodeAndWrapFrame(handle, &up, &how, records.data(), count, source.data(),
                                                  source.size_32(), data.data(), target, capacity, &written);
    });
    return shortened(std::move(made), written);
}

struct contents {
    params frame = {QVRUNCOMPRESSED_UNCOMPRESSED_PARAMS_SIZE, 0, 0, 0, 0, 0, 0, 0};
    std::vector<wrap_record> records;
};

// Each payload takes a box of its own, so that there are never more records than a multiple of the frame's bytes.
contents read_contents(decoder& self, const byte_span& source) {
    contents found;
    self.run([&](QVRUncompressed_Decoder handle) {
        const std::uint32_t count = QVRUncompressed_ReadWrapCount(source.data(), source.size_32());
        found.records.resize(count, {QVRUNCOMPRESSED_WRAP_PARAMS_SIZE, 0, 0});
        return QVRUncompressed_ReadWrapMetadata(handle, source.data(), source.size_32(), &found.frame,
                                                found.records.data(), count);
    });
    return found;
}

// The bytes of a buffer as an object that nobody can change.
py::bytes frozen(const py::object& data) {
    if (PyBytes_CheckExact(data.ptr())) {
        return py::reinterpret_borrow<py::bytes>(data);
    }
    const byte_span source(data, access::read);
    py::bytes made = new_bytes(source.size());
    std::copy_n(source.data(), source.size(), bytes_of(made));
    return made;
}

std::tuple<fields, payload_sizes> describe(decoder& self, const py::object& data) {
    const byte_span source(data, access::read);
    const contents found = read_contents(self, source);
    payload_sizes sizes;
    for (const wrap_record& record : found.records) {
        sizes.emplace_back(record.wrapType, record.dataSize);
    }
    return {to_fields(found.frame), sizes};
}

void decode(decoder& self, const fields& frame, const py::object& data, const py::object& dst) {
    const params up = to_params(frame);
    const byte_span source(data, access::read);
    const byte_span target(dst, access::write);
    self.run([&](QVRUncompressed_Decoder handle) {
        return QVRUncompressed_DecodeFrame(handle, &up, source.data(), source.size_32(), target.data(),
                                           target.size_32(), nullptr);
    });
}

// All payloads, and into dst the alpha plane that `frame` describes when they stand beside one. They are described
// anew: the library writes as many bytes as the boxes have, so room is made for these and no others. For the same
// reason the frame comes as bytes: nobody can change a box between the two.
std::vector<py::bytes> unwrap(decoder& self, const fields& frame, const py::bytes& data, const py::object& dst) {
    const params up = to_params(frame);
    const byte_span source(data, access::read);
    const byte_span target(dst, access::write);
    const contents found = read_contents(self, source);
    std::uint64_t total = 0;
    for (const wrap_record& record : found.records) {
        total += record.dataSize;
    }
    if (found.records.empty() || total > source.size()) {
        raise("DecodeError", found.records.empty()
                                 ? "the frame holds no wrapped payloads"
                                 : "the payloads are said to have " + std::to_string(total) +
                                       " bytes, but the frame has only " + std::to_string(source.size()));
    }
    std::vector<py::bytes> payloads;
    std::vector<std::uint8_t*> targets;
    for (const wrap_record& record : found.records) {
        targets.push_back(bytes_of(payloads.emplace_back(new_bytes(record.dataSize))));
    }
    self.run([&](QVRUncompressed_Decoder handle) {
        return QVRUncompressed_DecodeAndUnwrapFrame(
            handle, &up, found.records.data(), static_cast<std::uint32_t>(targets.size()), source.data(),
            source.size_32(), target.data(), target.size_32(), targets.data(), nullptr);
    });
    return payloads;
}

std::uint32_t raw_size(const fields& frame) {
    const params up = to_params(frame);
    return QVRUncompressed_GetUncompressedBufSize(&up);
}

std::tuple<std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t, char> version() {
    std::uint32_t major = 0;
    std::uint32_t minor = 0;
    std::uint32_t patch = 0;
    std::uint32_t build = 0;
    char release = 0;
    QVRUncompressed_GetVersion(&major, &minor, &patch, &build, &release);
    return {major, minor, patch, build, release};
}

}  // namespace

}  // namespace qvr

PYBIND11_MODULE(_core, module) {
    using namespace pybind11::literals;
    module.doc() = "The library's calls on runs of bytes; use the package qvruncompressed instead.";
    py::class_<qvr::encoder>(module, "Encoder")
        .def(py::init<std::uint32_t>(), "threads"_a)
        .def("close", &qvr::encoder::close)
        .def("encode", &qvr::encode, "frame"_a, "alpha_rle"_a, "slices"_a, "src"_a)
        .def("wrap", &qvr::wrap, "frame"_a, "alpha_rle"_a, "slices"_a, "first_type"_a, "payloads"_a, "src"_a);
    py::class_<qvr::decoder>(module, "Decoder")
        .def(py::init<std::uint32_t>(), "threads"_a)
        .def("close", &qvr::decoder::close)
        .def("describe", &qvr::describe, "data"_a)
        .def("decode", &qvr::decode, "frame"_a, "data"_a, "dst"_a)
        .def("unwrap", &qvr::unwrap, "frame"_a, "data"_a, "dst"_a);
    module.def("frozen", &qvr::frozen, "data"_a);
    module.def("raw_size", &qvr::raw_size, "frame"_a);
    module.def("version", &qvr::version);
}
