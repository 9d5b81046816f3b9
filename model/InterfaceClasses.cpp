// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

// Classes that modules and hosts implement. Without a function that is not inline, each module
// would have a table and a type of its own for them, and the library none that could be compared
// with those of an earlier release.

#include "tallbook/AccountProtocols.h"
#include "tallbook/DataMigrator.h"
#include "tallbook/MigrationObserver.h"

namespace tallbook {

AccountFullAccountProtocol::~AccountFullAccountProtocol() = default;
AccountRefreshProtocol::~AccountRefreshProtocol() = default;
AccountLoader::~AccountLoader() = default;
DataMigrator::~DataMigrator() = default;
MigrationObserver::~MigrationObserver() = default;

}  // namespace tallbook
