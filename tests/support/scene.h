// SPDX-License-Identifier: BSD-3-Clause
#ifndef TESTS_SUPPORT_SCENE_H
#define TESTS_SUPPORT_SCENE_H
#endif
