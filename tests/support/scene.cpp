// SPDX-License-Identifier: BSD-3-Clause
#include "tests/support/scene.h"
