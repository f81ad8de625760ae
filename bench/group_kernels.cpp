// SPDX-License-Identifier: BSD-3-Clause
//
// Each row kernel of each instruction set on a row that stays in the first-level cache, beside memcpy of the same
// traffic and beside its scalar definition.
#include <memory>

#include "api/base/pixel_format.h"
#include "cases.h"
#include "formats.h"
#include "instruction_sets.h"
#include "memory.h"
#include "pixel/kernels/row_kernels.h"

namespace bench {

namespace {

constexpr std::size_t k_room = 16384;

// The caller's samples, and the rows that are stored.
struct hot_rows {
    alignas(64) std::uint8_t caller[k_room];
    alignas(64) std::uint8_t colour[k_room];
    alignas(64) std::uint8_t beside[k_room];  // alpha, or low bits
};

struct kernel_case {
    std::string name;
    bool to_caller;       // else from there
    std::size_t traffic;  // bytes read and written
    std::function<void(const row_kernels&, hot_rows&)> run;
};

void add_reordering(std::vector<kernel_case>& all) {
    for (const std::uint32_t order : {1u, 3u, 4u, 6u, 7u, 8u, 11u, 12u}) {
        for (const unsigned sample_bytes : {1u, 2u, 4u}) {
            const pixel_map& map = traits_of_order(order).map;
            const auto rule = std::make_shared<const reorder_rule>(make_reorder_rule(map, sample_bytes));
            const std::size_t groups = k_room / 2 / rule->group_bytes;
            const std::size_t traffic = 2 * groups * rule->group_bytes;
            const bool has_alpha = map.alpha >= 0;
            const std::string rest = order_text(order) + "/" + std::to_string(8 * sample_bytes) + "-bit";
            all.push_back({"pack/" + rest, false, traffic, [=](const row_kernels& kernels, hot_rows& rows) {
                               kernels.pack(*rule, rows.caller, groups, rows.colour, has_alpha ? rows.beside : nullptr);
                           }});
            all.push_back({"unpack/" + rest, true, traffic, [=](const row_kernels& kernels, hot_rows& rows) {
                               kernels.unpack(*rule, rows.colour, rows.beside, groups, rows.caller);
                           }});
            if (has_alpha) {
                const std::size_t less = traffic - groups * sample_bytes;
                all.push_back(
                    {"pack-without-alpha/" + rest, false, less, [=](const row_kernels& kernels, hot_rows& rows) {
                         kernels.pack(*rule, rows.caller, groups, rows.colour, nullptr);
                     }});
            }
        }
    }
}

void add_reordering_of_words(std::vector<kernel_case>& all) {
    struct width {
        unsigned bits;
        void (*row_kernels::*to_stored)(const reorder_rule&, const std::uint8_t*, std::size_t, std::uint8_t*,
                                        std::uint8_t*);
        void (*row_kernels::*to_caller)(const reorder_rule&, const std::uint8_t*, const std::uint8_t*, std::size_t,
                                        std::uint8_t*);
    };
    const width widths[] = {{10, &row_kernels::pack_narrow_10, &row_kernels::widen_unpack_10},
                            {12, &row_kernels::pack_narrow_12, &row_kernels::widen_unpack_12}};
    for (const std::uint32_t order : {1u, 3u, 4u, 6u, 7u, 8u, 11u, 12u}) {
        const pixel_map& map = traits_of_order(order).map;
        const auto rule = std::make_shared<const reorder_rule>(make_reorder_rule(map, 2));
        const std::size_t groups = k_room / 2 / rule->group_bytes;
        for (const width& row : widths) {
            const std::size_t traffic = groups * rule->group_bytes + groups * map.colours * row.bits / 8;
            const std::string rest = "-" + std::to_string(row.bits) + "/" + order_text(order);
            all.push_back({"pack-narrow" + rest, false, traffic, [=](const row_kernels& kernels, hot_rows& rows) {
                               (kernels.*row.to_stored)(*rule, rows.caller, groups, rows.colour, rows.beside);
                           }});
            if (map.alpha < 0) {
                all.push_back({"widen-unpack" + rest, true, traffic, [=](const row_kernels& kernels, hot_rows& rows) {
                                   (kernels.*row.to_caller)(*rule, rows.colour, rows.beside, groups, rows.caller);
                               }});
            }
        }
    }
}

// Kernels that are told apart by their function alone.
void add_conversions(std::vector<kernel_case>& all) {
    using narrow = void (*row_kernels::*)(const std::uint8_t*, std::size_t, std::uint8_t*, std::uint8_t*);
    using widen = void (*row_kernels::*)(const std::uint8_t*, const std::uint8_t*, std::size_t, std::uint8_t*);
    struct conversion {
        const char* bits;
        narrow to_stored;
        widen to_caller;
        std::size_t units;  // samples, or pixels of packed rows
        std::size_t caller_bytes;
        std::size_t stored_bytes;
    };
    constexpr std::size_t k_samples = 3840;
    const conversion rows[] = {
        {"10", &row_kernels::narrow_10, &row_kernels::widen_10, k_samples, k_samples * 2, k_samples * 5 / 4},
        {"12", &row_kernels::narrow_12, &row_kernels::widen_12, k_samples, k_samples * 2, k_samples * 3 / 2},
        {"10-packed", &row_kernels::narrow_10_packed, &row_kernels::widen_10_packed, k_samples / 2, k_samples / 3 * 4,
         k_samples * 5 / 4},
    };
    for (const conversion& row : rows) {
        const std::size_t traffic = row.caller_bytes + row.stored_bytes;
        all.push_back(
            {std::string("narrow-") + row.bits, false, traffic, [row](const row_kernels& kernels, hot_rows& at) {
                 (kernels.*row.to_stored)(at.caller, row.units, at.colour, at.beside);
             }});
        all.push_back(
            {std::string("widen-") + row.bits, true, traffic, [row](const row_kernels& kernels, hot_rows& at) {
                 (kernels.*row.to_caller)(at.colour, at.beside, row.units, at.caller);
             }});
    }
    all.push_back({"fixed-to-float", true, k_samples * 6, [](const row_kernels& kernels, hot_rows& at) {
                       kernels.fixed_to_float(at.colour, k_samples, at.caller);
                   }});
}

void time_kernel(recorder& record, const kernel_case& what, const instruction_set& level) {
    const auto rows = std::make_unique<hot_rows>();
    fill_with_noise(reinterpret_cast<std::uint8_t*>(rows.get()), sizeof *rows, 1);
    const row_kernels& kernels = row_kernels_for(static_cast<cpu_features>(level.features));
    const row_kernels& definitions = row_kernels_for(cpu_scalar);
    std::vector<reference> beside = {{"memcpy", what.to_caller
                                                    ? copy_of_traffic(rows->caller, rows->colour, what.traffic)
                                                    : copy_of_traffic(rows->colour, rows->caller, what.traffic)}};
    if (level.features != cpu_scalar) {
        beside.push_back({"scalar", [&] { what.run(definitions, *rows); }});
    }
    record.compare([&] { what.run(kernels, *rows); }, beside);
}

}  // namespace

void add_kernels(case_list& cases, const options&) {
    std::vector<kernel_case> all;
    add_conversions(all);
    add_reordering(all);
    add_reordering_of_words(all);
    for (const instruction_set& level : usable_instruction_sets()) {
        for (const kernel_case& what : all) {
            cases.push_back({std::string("kernels/") + level.name + "/" + what.name + "/L1",
                             [=](recorder& record) { time_kernel(record, what, level); }});
        }
    }
}

}  // namespace bench
