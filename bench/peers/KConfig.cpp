// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

// KConfig: a group an account, named by its identifier, in a file of its own without the system's
// defaults.

#include <KConfig>
#include <KConfigGroup>
#include <QDir>
#include <QStringList>

#include "bench/peers/Peer.h"

namespace tallbook::peers {
namespace {

// A relative name would be looked for among the user's own settings.
KConfig opened() {
  return KConfig(QDir::current().absoluteFilePath(QStringLiteral("accounts.ini")),
                 KConfig::SimpleConfig);
}

void make() {
  KConfig file = opened();
  forEachRecord([&](const Record& record) {
    KConfigGroup group(&file, record.identifier);
    for (std::size_t at = 0; at < std::size(kKeys); ++at) {
      const QString value = QString::fromUtf8(record.values[at]);
      switch (kKeys[at].kind) {
        case Kind::List:
          group.writeEntry(kKeys[at].name, QStringList(value));
          break;
        case Kind::Boolean:
          group.writeEntry(kKeys[at].name, value.toInt() != 0);
          break;
        default:
          group.writeEntry(kKeys[at].name, value);
      }
    }
  });
  if (!file.sync()) fail("cannot save");
}

void addText(Checksum& checksum, const char* key, const QString& text) {
  const QByteArray bytes = text.toUtf8();
  checksum.add(key, std::string_view(bytes.data(), static_cast<std::size_t>(bytes.size())));
}

void addValue(const KConfigGroup& group, const Key& key, Checksum& checksum) {
  switch (key.kind) {
    case Kind::Text:
      addText(checksum, key.name, group.readEntry(key.name, QString()));
      break;
    case Kind::List:
      for (const QString& text : group.readEntry(key.name, QStringList())) {
        addText(checksum, key.name, text);
      }
      break;
    case Kind::Integer:
      checksum.add(key.name, group.readEntry(key.name, 0));
      break;
    case Kind::Boolean:
      checksum.add(key.name, group.readEntry(key.name, false));
      break;
    case Kind::Date:
      checksum.add(key.name, group.readEntry(key.name, qint64{0}));
      break;
  }
}

void read(Checksum& checksum) {
  static const KConfig file = opened();
  for (const QString& name : file.groupList()) {
    addText(checksum, kIdentifier, name);
    const KConfigGroup group(&file, name);
    for (const Key& key : kKeys) addValue(group, key, checksum);
  }
}

void change(const Change& change) {
  static KConfig file = opened();
  KConfigGroup(&file, change.identifier).writeEntry(kPort, change.port);
  if (!file.sync()) fail("cannot save");
}

}  // namespace
}  // namespace tallbook::peers

int main(int count, char** words) {
  using namespace tallbook::peers;
  return run({PEER_VERSION, make, read, change}, count, words);
}
