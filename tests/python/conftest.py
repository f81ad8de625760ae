# SPDX-License-Identifier: BSD-3-Clause
"""What the tests of the Python package share."""

import os
import random

import numpy as np
import pytest


@pytest.fixture
def rng():
    """Random numbers; pytest shows the seed when a test fails. QVR_TEST_SEED brings it back."""
    seed = int(os.environ.get("QVR_TEST_SEED", random.randrange(1 << 32)))
    print(f"QVR_TEST_SEED={seed}")
    return np.random.default_rng(seed)
