// SPDX-License-Identifier: BSD-3-Clause
#include "mutator.h"

#include <algorithm>
#include <cstring>

#include "box_tree.h"
#include "container/frame_layout.h"

namespace fuzz {

namespace {

constexpr std::uint32_t k_box_types[] = {container::k_pack, container::k_icmp, container::k_sinf, container::k_sdat,
                                         container::k_qcxf, container::k_stch, container::k_tile, fourcc("free")};

constexpr std::uint32_t k_plane_codes[] = {
    fourcc(" y08"), fourcc(" y10"), fourcc(" y12"), fourcc(" y16"), fourcc("  yh"),
    fourcc("  yf"), fourcc("cb08"), fourcc("cb10"), fourcc("cb12"), fourcc("cb16"),
    fourcc(" cbh"), fourcc(" cbf"), fourcc("cr08"), fourcc("cr10"), fourcc("cr12"),
    fourcc("cr16"), fourcc(" crh"), fourcc(" crf"), fourcc(" a08"), fourcc(" a16"),
    fourcc("rl08"), fourcc("rl16"), fourcc("rg08"), fourcc("rg10"), fourcc("rg12"),
    fourcc("rg16"), fourcc("rgS1"), fourcc(" rgh"), fourcc(" rgf"), fourcc("y408"),
    fourcc("y410"), fourcc("y412"), fourcc("y416"), fourcc("y4S1"), fourcc(" y4h"),
    fourcc(" y4f"), fourcc("y208"), fourcc("y210"), fourcc("y212"), fourcc("y216"),
    fourcc("y2S1"), fourcc(" y2h"), fourcc(" y2f"), fourcc("stch"), fourcc("  f2"),
    fourcc("  f4"), fourcc("  h2"), fourcc("  h4"), fourcc("rg f"), fourcc("rg h"),
    fourcc("cb f"), fourcc("cb h"), fourcc("cr f"), fourcc("cr h"), 0};

class mutation {
  public:
    mutation(box_list& stream, unsigned seed, byte_mutator change) : tree(stream), random(seed), change_bytes(change) {}

    void apply();

  private:
    void insert_box();
    void remove_box();
    void duplicate_box();
    void swap_boxes();
    void resize_payload();
    void lie_about_size();
    void change_payload();
    void change_dimensions();
    void change_code();
    void change_description();
    void wrap_in_box();

    std::uint32_t below(std::size_t limit) { return static_cast<std::uint32_t>(random() % limit); }
    bool one_in(std::uint32_t count) { return below(count) == 0; }
    template <std::size_t Count>
    std::uint32_t any_of(const std::uint32_t (&values)[Count]) {
        return values[below(Count)];
    }
    // A list of the tree, which may be empty when the whole tree is.
    box_list& any_list();
    // A box of the tree; one is made when there is none.
    box& any_box();
    std::vector<bytes*> descriptions();
    std::uint32_t interesting_near(std::uint32_t value);
    box make_box(std::uint32_t type, std::size_t payload);
    box make_plane();

    box_list& tree;
    std::minstd_rand random;
    byte_mutator change_bytes;
};

box_list& mutation::any_list() {
    std::vector<box_list*> lists;
    collect_lists(tree, lists);
    return lists.empty() ? tree : *lists[below(lists.size())];
}

box& mutation::any_box() {
    box_list& list = any_list();
    if (list.boxes.empty()) {
        list.boxes.push_back(make_box(container::k_pack, 0));
    }
    return list.boxes[below(list.boxes.size())];
}

std::vector<bytes*> mutation::descriptions() {
    std::vector<box_list*> lists;
    collect_lists(tree, lists);
    std::vector<bytes*> found;
    for (box_list* list : lists) {
        for (box& each : list->boxes) {
            if (each.type == container::k_sinf) {
                found.push_back(&each.inside.rest);
            }
        }
    }
    return found;
}

std::uint32_t mutation::interesting_near(std::uint32_t value) {
    const std::uint32_t candidates[] = {0,          1,          7,          8,          value - 1,
                                        value + 1,  value - 8,  value + 8,  0x7fffffff, 0x80000000,
                                        0xfffffff8, 0xffffffff, value / 2,  value * 2,  below(256),
                                        0x01000000, 0xffffff,   value << 8, 2,          9};
    return any_of(candidates);
}

box mutation::make_box(std::uint32_t type, std::size_t payload) {
    box made;
    made.type = type;
    made.inside.rest.resize(payload);
    for (std::uint8_t& byte : made.inside.rest) {
        byte = static_cast<std::uint8_t>(below(256));
    }
    return made;
}

// An 'icmp' with a small plane.
box mutation::make_plane() {
    box plane = make_box(container::k_icmp, 0);
    box description = make_box(container::k_sinf, k_layout_field + 1);
    store_field(description.inside.rest, k_width_field, 1 + below(8));
    store_field(description.inside.rest, k_height_field, 1 + below(4));
    store_field(description.inside.rest, k_code_field, any_of(k_plane_codes));
    description.inside.rest[k_layout_field] = 0;
    plane.inside.boxes = {description, make_box(container::k_sdat, 1 + below(16))};
    return plane;
}

void mutation::insert_box() {
    box_list& list = any_list();
    const auto at = list.boxes.begin() + below(list.boxes.size() + 1);
    list.boxes.insert(at, one_in(3) ? make_plane() : make_box(any_of(k_box_types), below(24)));
}

void mutation::remove_box() {
    box_list& list = any_list();
    if (!list.boxes.empty()) {
        list.boxes.erase(list.boxes.begin() + below(list.boxes.size()));
    }
}

void mutation::duplicate_box() {
    box_list& list = any_list();
    if (!list.boxes.empty()) {
        const box copy = list.boxes[below(list.boxes.size())];
        list.boxes.insert(list.boxes.begin() + below(list.boxes.size() + 1), 1 + below(3), copy);
    }
}

void mutation::swap_boxes() {
    box_list& list = any_list();
    if (list.boxes.size() > 1) {
        std::swap(list.boxes[below(list.boxes.size())], list.boxes[below(list.boxes.size())]);
    }
}

void mutation::resize_payload() {
    bytes& payload = any_box().inside.rest;
    const std::size_t size = one_in(2) ? below(payload.size() + 1) : payload.size() + below(20);
    payload.resize(size, static_cast<std::uint8_t>(below(256)));
}

void mutation::lie_about_size() {
    box& liar = any_box();
    liar.declared = interesting_near(static_cast<std::uint32_t>(size_of(liar)));
    liar.lies = true;
}

void mutation::change_payload() {
    bytes& payload = any_box().inside.rest;
    const std::size_t size = payload.size();
    payload.resize(size + 16);
    payload.resize(change_bytes(payload.data(), size, payload.size()));
}

// Mostly of all planes at once, as chroma goes with its luma.
void mutation::change_dimensions() {
    const std::vector<bytes*> all = descriptions();
    if (all.empty()) {
        return;
    }
    const std::size_t field = one_in(2) ? k_width_field : k_height_field;
    const bytes& first = *all[below(all.size())];
    const std::uint32_t value = one_in(3) ? interesting_near(load_field(first, field)) : below(24);
    const bool one = one_in(3);
    const std::size_t only = below(all.size());
    for (std::size_t i = 0; i < all.size(); ++i) {
        const bool chroma = traits_of_plane(load_field(*all[i], k_code_field)).is_chroma();
        if (!one || i == only) {
            store_field(*all[i], field, chroma ? value / 2 + value % 2 : value);
        }
    }
}

void mutation::change_code() {
    const std::vector<bytes*> all = descriptions();
    if (!all.empty()) {
        store_field(*all[below(all.size())], k_code_field, any_of(k_plane_codes));
    }
}

// Layout, or the length of the description.
void mutation::change_description() {
    const std::vector<bytes*> all = descriptions();
    if (all.empty()) {
        return;
    }
    bytes& payload = *all[below(all.size())];
    if (one_in(2) && payload.size() > k_layout_field) {
        payload[k_layout_field] = static_cast<std::uint8_t>(one_in(2) ? below(2) : below(256));
    } else {
        payload.resize(one_in(4) ? below(40) : k_layout_field + below(3));
    }
}

void mutation::wrap_in_box() {
    box_list& list = any_list();
    if (list.boxes.empty()) {
        return;
    }
    const std::size_t at = below(list.boxes.size());
    if (one_in(2) && !list.boxes[at].inside.boxes.empty()) {
        const std::vector<box> children = list.boxes[at].inside.boxes;
        list.boxes.erase(list.boxes.begin() + static_cast<std::ptrdiff_t>(at));
        list.boxes.insert(list.boxes.begin() + static_cast<std::ptrdiff_t>(at), children.begin(), children.end());
        return;
    }
    const std::size_t count = 1 + below(std::min<std::size_t>(2, list.boxes.size() - at));
    const auto first = list.boxes.begin() + static_cast<std::ptrdiff_t>(at);
    box outer = make_box(any_of(k_box_types), 0);
    outer.inside.boxes.assign(first, first + static_cast<std::ptrdiff_t>(count));
    list.boxes.erase(first, first + static_cast<std::ptrdiff_t>(count));
    list.boxes.insert(list.boxes.begin() + static_cast<std::ptrdiff_t>(at), outer);
}

void mutation::apply() {
    using step = void (mutation::*)();
    constexpr step k_steps[] = {
        &mutation::insert_box,         &mutation::remove_box,        &mutation::duplicate_box,
        &mutation::swap_boxes,         &mutation::resize_payload,    &mutation::lie_about_size,
        &mutation::change_payload,     &mutation::change_payload,    &mutation::change_payload,
        &mutation::change_code,        &mutation::change_dimensions, &mutation::change_dimensions,
        &mutation::change_description, &mutation::wrap_in_box};
    if (one_in(4)) {
        forget_lies(tree);
    }
    const std::uint32_t steps = 1 + below(3);
    for (std::uint32_t i = 0; i < steps; ++i) {
        (this->*k_steps[below(std::size(k_steps))])();
    }
    if (one_in(8)) {
        any_box().type = any_of(k_box_types);
    }
    if (!one_in(5)) {
        fit_planes(tree);
    }
}

std::size_t change_choices(std::uint8_t* data, std::size_t size, std::minstd_rand& random) {
    const std::size_t choices = std::min(size, k_choice_bytes);
    if (choices != 0) {
        data[size - 1 - random() % choices] = static_cast<std::uint8_t>(random() >> 8);
    }
    return size;
}

}  // namespace

std::size_t mutate_input(std::uint8_t* data, std::size_t size, std::size_t room, unsigned seed,
                         byte_mutator change_bytes) {
    std::minstd_rand random(seed);
    const std::uint32_t kind = static_cast<std::uint32_t>(random() >> 4) % 16;
    if (kind == 0 || size < k_choice_bytes || room < size + k_choice_bytes) {
        return change_bytes(data, size, room);
    }
    if (kind < 5) {
        return change_choices(data, size, random);
    }
    const std::size_t stream_size = size - k_choice_bytes;
    box_list tree = parse_boxes(data, stream_size);
    mutation(tree, static_cast<unsigned>(random()), change_bytes).apply();
    bytes changed;
    write_boxes(tree, changed);
    if (changed.size() + k_choice_bytes > room) {
        return change_choices(data, size, random);
    }
    const bytes choices(data + stream_size, data + size);
    std::copy(changed.begin(), changed.end(), data);
    std::copy(choices.begin(), choices.end(), data + changed.size());
    return changed.size() + k_choice_bytes;
}

}  // namespace fuzz
