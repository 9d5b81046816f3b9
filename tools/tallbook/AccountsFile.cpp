#include "tools/tallbook/AccountsFile.h"

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <optional>

#include "tallbook/AccountsManager.h"
#include "tallbook/PropertyList.h"
#include "tallbook/Vocabulary.h"

#include "tools/tallbook/ValueText.h"

namespace tallbook::tool {
namespace {

namespace fs = std::filesystem;

std::optional<std::string> bytesOf(const std::string& path) {
  std::error_code unknown;
  const std::uintmax_t size = fs::file_size(path, unknown);
  std::ifstream stream(path, std::ios::binary);
  if (unknown || !stream) return std::nullopt;
  std::string bytes(size, '\0');
  stream.read(bytes.data(), static_cast<std::streamsize>(size));
  if (stream.bad()) return std::nullopt;
  bytes.resize(static_cast<std::size_t>(stream.gcount()));
  return bytes;
}

}  // namespace

ArrayRef AccountsFile::records() const {
  return content ? (*content)[kPlistAccountsKey].array() : nullptr;
}

AccountsFile readAccountsFile(const std::string& path) {
  AccountsFile file;
  file.path = path;
  std::error_code unknown;
  const fs::file_status status = fs::status(path, unknown);
  if (status.type() == fs::file_type::not_found) return file;

  file.state = AccountsFile::State::Unreadable;
  if (status.type() == fs::file_type::none) {
    file.problem = unknown.message();
    return file;
  }
  if (status.type() != fs::file_type::regular) {
    file.problem = "it is not a regular file";
    return file;
  }
  const std::optional<std::string> bytes = bytesOf(path);
  if (!bytes) {
    file.problem = "it cannot be opened for reading";
    return file;
  }
  const std::optional<Value> root = propertyListFromBytes(*bytes, &file.problem);
  if (!root) return file;
  DictionaryRef content = root->dictionary();
  if (!content) {
    file.problem = "its top level is of the kind " + std::string(nameOfKind(root->kind())) +
                   ", not dictionary";
    return file;
  }
  const Value& records = (*content)[kPlistAccountsKey];
  if (records.kind() != Value::Kind::Array && !records.isNull()) {
    file.problem =
        "\"Accounts\" is of the kind " + std::string(nameOfKind(records.kind())) + ", not array";
    return file;
  }
  file.content = std::move(content);
  file.state = AccountsFile::State::Read;
  return file;
}

AccountsFile readAccountsFile() {
  return readAccountsFile(AccountsManager::fullPathToTallbookPlist());
}

Failure unreadable(const AccountsFile& file, const std::string& advice) {
  return Failure(ExitCode::Unreadable,
                 file.path + " is no accounts file: " + file.problem + "; " + advice);
}

}  // namespace tallbook::tool
