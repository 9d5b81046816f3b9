// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <functional>
#include <initializer_list>
#include <string>
#include <string_view>

#include "migration/AccountsDataMigrator.h"

/// What several conversions and version steps do alike.
namespace tallbook {

/// What people know the account by.
std::string nameOf(const BasicAccount& account);

bool hasClassAmong(const BasicAccount& account, std::initializer_list<std::string_view> classes);

/// The mail account's active switch; `absent` where there is none.
bool isActive(const BasicAccount& account, bool absent);

/// Whether the account is one of the earlier hosted service's mail accounts, by its class.
bool isHostedMailAccount(const BasicAccount& account);

/// Whether one of the account's children is as wanted.
bool hasChildWhich(const BasicAccount& account,
                   const std::function<bool(const Dictionary& child)>& isWanted);

/// Whether a list of dataclasses, null allowed, holds one.
bool holds(const ArrayRef& dataclasses, const String& dataclass);

}  // namespace tallbook
