#pragma once

#include <string>
#include <system_error>

#include "platform/FileSystem.h"

namespace tallbook {

/// How an attempt to give a file a second name ended.
enum class SecondName {
  Given,
  AnotherVersion,  ///< of the file lies there by now; nothing was changed
  Refused          ///< by the system, "file exists" where something has the name already
};

/// Keeps the version `version` of the file `name` under a second name in the folder `to`, whatever
/// is put in its place afterwards: by a hard link, where that is not possible by a copy that
/// belongs to "mobile". What a link leads to is copied, since it is the link that gets replaced.
SecondName giveSecondName(Folder& folder, const std::string& name, const FileVersion& version,
                          Folder& to, const std::string& second, std::error_code& error);

}  // namespace tallbook
