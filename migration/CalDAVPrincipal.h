// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <compare>
#include <optional>
#include <string>
#include <vector>

#include "migration/AccountsDataMigrator.h"

namespace tallbook {

/// By what a CalDAV account is known to be that of a provider's mail account.
struct CalDAVPrincipal {
  std::string server;
  std::string login;
  std::string path;

  auto operator<=>(const CalDAVPrincipal&) const = default;
};

/// The principal of a CalDAV account; nullopt where it lacks the server, the login or the path.
std::optional<CalDAVPrincipal> principalOfCalDAVAccount(
    const AccountsDataMigrator::Account& account);

/// The principals that a mail account's own CalDAV account may have; none for an account of no
/// known provider.
std::vector<CalDAVPrincipal> expectedPrincipalsForAccount(
    const AccountsDataMigrator::Account& account);

}  // namespace tallbook
