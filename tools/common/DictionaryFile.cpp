#include "tools/common/DictionaryFile.h"

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <optional>

#include "tallbook/PropertyList.h"

#include "tools/common/KindName.h"

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

DictionaryFile readDictionaryFile(const std::string& path) {
  DictionaryFile file;
  file.path = path;
  std::error_code unknown;
  const fs::file_status status = fs::status(path, unknown);
  if (status.type() == fs::file_type::not_found) return file;

  file.state = DictionaryFile::State::Unreadable;
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
  file.content = std::move(content);
  file.state = DictionaryFile::State::Read;
  return file;
}

}  // namespace tallbook::tool
