// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

// What a C++ program costs that does nothing: the measure for those that do a little.

int main() {}
