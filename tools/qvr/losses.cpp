// SPDX-License-Identifier: BSD-3-Clause
#include "losses.h"

namespace qvr {

void loss_log::lose(const location& where, const std::string& what, const std::string& way_out) {
    if (strict) {
        throw failure(exit_code::usage, where, what + ", which --strict does not allow",
                      (way_out.empty() ? "" : way_out + ", or ") + "leave --strict out to go on without it");
    }
    once(where.file, what);
}

}  // namespace qvr
