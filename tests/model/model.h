// SPDX-License-Identifier: BSD-3-Clause
#ifndef QVR_TESTS_MODEL_H
#define QVR_TESTS_MODEL_H

// The whole model. Every operation either returns its result or throws
// model::failure with the text that the error callback hears.

#include "boxes.h"
#include "formats.h"
#include "frame.h"
#include "model_types.h"
#include "packing.h"
#include "rle.h"
#include "sizes.h"
#include "wrap.h"

#endif
