// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

/// Marks what the shared library exports; everything else in it is hidden.
#define TALLBOOK_EXPORT __attribute__((visibility("default")))
/// Marks what an exported class keeps to itself.
#define TALLBOOK_INTERNAL __attribute__((visibility("hidden")))
