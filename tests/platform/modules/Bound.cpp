// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

extern "C" __attribute__((visibility("default"))) int moduleAnswer() {
  return 42;
}
