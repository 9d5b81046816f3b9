// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "platform/UnknownOwner.h"

#include <string>

namespace tallbook {
namespace {

enum class Unknown { Account = 1, Group };

class UnknownOwner final : public std::error_category {
 public:
  const char* name() const noexcept override { return "unknown owner"; }
  std::string message(int which) const override {
    return static_cast<Unknown>(which) == Unknown::Group ? "no such group in etc/group"
                                                         : "no such account in etc/passwd";
  }
  std::error_condition default_error_condition(int) const noexcept override {
    return std::errc::invalid_argument;
  }
};

std::error_code make(Unknown which) noexcept {
  static const UnknownOwner category;
  return {static_cast<int>(which), category};
}

}  // namespace

std::error_code unknownAccount() noexcept {
  return make(Unknown::Account);
}

std::error_code unknownGroup() noexcept {
  return make(Unknown::Group);
}

}  // namespace tallbook
