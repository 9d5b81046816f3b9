// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <string>
#include <vector>

#include "tallbook/AccountCreators.h"
#include "tallbook/Value.h"

namespace tallbook {

/// What one file of the creators information has for one type: a list of entries in a sound file.
struct CreatorEntries {
  std::string file;
  String type;
  Value list;
};

/// What stands for something at that place that serves nobody, and why, on one line.
AccountCreator faultyCreator(const std::string& place, const std::string& why);

/// Each entry, with what is wrong with it; what stands in the place of a list of entries is one.
std::vector<AccountCreator> creatorsIn(const CreatorEntries& entries);

}  // namespace tallbook
