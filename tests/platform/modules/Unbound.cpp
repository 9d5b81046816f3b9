// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

void thisFunctionIsNowhere();

extern "C" __attribute__((visibility("default"))) void callNowhere() {
  thisFunctionIsNowhere();
}
