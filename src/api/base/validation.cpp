// SPDX-License-Identifier: BSD-3-Clause
#include "api/base/validation.h"

#include "api/base/errors.h"
#include "api/base/pixel_format.h"

void check_encoder_params(const QVRUncompressed_UncompressedParams_t& up,
                          const QVRUncompressed_CompressedParams_t& cp) {
    const order_traits& order = traits_of_order(up.colorComponentOrder);
    if (order.has_alpha && cp.alphaCompression != 0 && up.componentType != 1 && up.componentType != 2) {
        throw_invalid_argument("Only 8 and 16 bit alpha supported for RLE compression");
    }
    if ((order.subsampling == 422 || order.subsampling == 420) && up.width % 2 != 0) {
        throw_invalid_argument("Width must be multiple of 2 for 422 and 420 subsampling");
    }
    if (order.subsampling == 420 && up.height % 2 != 0) {
        throw_invalid_argument("Height must be multiple of 2 for 420 subsampling");
    }
}
