// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "tallbook/AccountCreators.h"

#include <algorithm>
#include <iterator>

#include "model/AccountTypeCatalogue.h"
#include "model/CreatorsInformation.h"

namespace tallbook {

std::vector<AccountCreator> accountCreators() {
  const auto& catalogue = AccountTypeCatalogue::shared();
  std::vector<AccountCreator> creators;
  for (const DropIn& dropIn : catalogue.leftOut()) {
    creators.push_back(faultyCreator(dropIn.path, dropIn.fault));
  }
  CreatorsInformation information = CreatorsInformation::read();
  std::ranges::move(information.faults, std::back_inserter(creators));
  if (!information.isReadable) return creators;
  for (const CreatorEntries& entries : information.entries) {
    std::ranges::move(creatorsIn(entries), std::back_inserter(creators));
  }
  const auto& listed = information.entries;
  for (const auto& [type, unused] : catalogue.entries()) {
    if (std::ranges::find(listed, type, &CreatorEntries::type) != listed.end()) continue;
    creators.push_back(faultyCreator(
        information.file,
        "it has nothing for the type \"" + type.str() + "\", not even an empty array"));
  }
  return creators;
}

}  // namespace tallbook
