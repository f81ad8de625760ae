// SPDX-License-Identifier: BSD-3-Clause
//
// Frames put together box by box, without any code of the tool or the library.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "process.h"

void append_box(bytes& to, const std::string& type, const bytes& payload);

// What a 'sinf' box holds.
bytes plane_payload(std::uint32_t width, std::uint32_t height, const std::string& code);

// The whole frame: one 'pack' box.
bytes packed(const bytes& content);

// The header of a QCX frame, alpha flag clear, in front of noise; `size` bytes in all.
bytes qcx_frame(std::uint32_t compression, std::uint32_t width, std::uint32_t height, std::size_t size = 300);
