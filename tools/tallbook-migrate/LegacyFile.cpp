#include "tools/tallbook-migrate/LegacyFile.h"

#include <optional>

#include "tallbook/PropertyList.h"

#include "tools/common/FileBytes.h"
#include "tools/common/KindName.h"

namespace tallbook::migrate {

LegacyFile readLegacyFile(const std::string& path) {
  std::error_code error;
  const std::string bytes = tool::bytesOfFile(path, error);
  LegacyFile file;
  if (error == std::errc::no_such_file_or_directory || error == std::errc::not_a_directory) {
    return file;
  }
  file.state = LegacyFile::State::Unreadable;
  if (error) {
    file.problem = "it cannot be read: " + error.message();
    return file;
  }
  const std::optional<Value> root = propertyListFromBytes(bytes, &file.problem);
  if (!root) return file;
  file.content = root->dictionary();
  if (file.content) {
    file.state = LegacyFile::State::Read;
  } else {
    file.problem = "its top level is of the kind " + std::string(tool::nameOfKind(root->kind())) +
                   ", not dictionary";
  }
  return file;
}

}  // namespace tallbook::migrate
