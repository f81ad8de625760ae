// SPDX-License-Identifier: BSD-3-Clause
//
// A stream taken apart into boxes and put together again, for the mutator. Takes anything: what is no box stays as
// bytes behind the last one.
#pragma once

#include "harness.h"

namespace fuzz {

struct box;

// Boxes one after the other, and bytes behind them.
struct box_list {
    std::vector<box> boxes;
    bytes rest;
};

struct box {
    std::uint32_t type = 0;
    bool lies = false;           // its size is not repaired
    std::uint32_t declared = 0;  // what it says instead
    box_list inside;             // a box that holds no boxes has its payload in `rest`
};

constexpr std::uint32_t k_header = 8;

box_list parse_boxes(const std::uint8_t* data, std::size_t size, unsigned depth = 0);
void write_boxes(const box_list& list, bytes& out);
std::size_t size_of(const box& which);

// Every list of the tree that holds a box, outermost first.
void collect_lists(box_list& list, std::vector<box_list*>& out);

// Sizes of all boxes as they should be.
void forget_lies(box_list& list);

// Fields of a 'sinf', counted from its payload.
constexpr std::size_t k_width_field = 0;
constexpr std::size_t k_height_field = 4;
constexpr std::size_t k_code_field = 8;
constexpr std::size_t k_layout_field = 12;

std::uint32_t load_field(const bytes& payload, std::size_t at);
void store_field(bytes& payload, std::size_t at, std::uint32_t value);

// Makes the data of each raw plane as long as its description asks for, unless that is very long.
void fit_planes(box_list& list);

}  // namespace fuzz
