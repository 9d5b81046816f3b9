// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <string>

#include "tallbook/Value.h"

#include "fuzz/Drawn.h"

namespace tallbook::fuzz {

/// A text out of any bytes.
String drawnText(Drawn& drawn);
/// A value of any kind.
Value drawnValue(Drawn& drawn, int depth = 3);
/// One of few, so that accounts meet under them; null for a record without.
String drawnIdentifier(Drawn& drawn);
String drawnType(Drawn& drawn);
String drawnDataclass(Drawn& drawn);
/// A key that an account has; now and then any other.
String drawnKey(Drawn& drawn);
/// What is usually stored under the key; now and then anything.
Value drawnValueOf(Drawn& drawn, const String& key, bool isOfChild = false);
/// The record of an account; most of them are such that a store loads them.
DictionaryRef drawnRecord(Drawn& drawn, bool isChild = false);
ArrayRef drawnRecords(Drawn& drawn, bool areChildren = false);
/// The top level of an accounts file.
DictionaryRef drawnAccountsFile(Drawn& drawn);
/// The bytes of a file of this content, or what a disk may hold in its place.
std::string drawnFile(Drawn& drawn, const Value& content);

}  // namespace tallbook::fuzz
