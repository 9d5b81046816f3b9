#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tallbook/Value.h"

#include "tools/tallbook-migrate/Device.h"

namespace tallbook::migrate {

enum class Source { AccountsFile, LegacyExchange, LegacyOutgoing, LegacyIncoming };

/// One account where it stands: in the accounts file or in a legacy file.
struct Entry {
  Source source;
  Value element;  ///< what stands there
  /// The element under the keys of the accounts file, with what a conversion makes of it where the
  /// element alone decides that; null for an element that is no dictionary.
  DictionaryRef record;
  std::optional<std::size_t> parent;  ///< of a child: its parent's place in the list

  /// The text under a key; empty where there is none.
  std::string text(std::string_view key) const;
  bool isLegacy() const { return source != Source::AccountsFile; }
};

/// The name that a person knows the account by, its parent's where it has none. The parent is
/// looked up in `list`.
std::string nameOf(const Entry& entry, const std::vector<Entry>& list);

/// "legacy mail file" or "legacy Exchange file", for a legacy source.
std::string nameOfFile(Source source);
/// The key under which a file lists the accounts of the source.
std::string_view keyOfAccounts(Source source);

/// Whether it is the class of the earlier hosted service's mail accounts.
bool isHostedClass(std::string_view className);

/// The records of an accounts file, each before its children.
std::vector<Entry> entriesOf(const tool::AccountsFile& file);
/// The same and the accounts of the legacy files after them.
std::vector<Entry> entriesOf(const DeviceState& state);

/// All of a record but what a conversion or a version step may give it: finds a record again that
/// had no identifier.
std::string lastingContent(const Dictionary& record);

}  // namespace tallbook::migrate
