// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

// A module that calls what nobody provides.

extern "C" int tallbookTestSymbolThatNobodyProvides();
extern "C" int callIt();

int callIt() {
  return tallbookTestSymbolThatNobodyProvides();
}
