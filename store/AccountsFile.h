#pragma once

#include <string>
#include <vector>

#include "tallbook/Value.h"

namespace tallbook {

/// The accounts file as a whole: where it lies, and the two ways in which it is touched.
namespace AccountsFile {

std::string path();
/// The file's top-level dictionary; null when it is missing or holds none.
DictionaryRef read();
/// Writes a new file with these record dictionaries and puts it in place of the old one. False,
/// with log lines, when a step fails: the old file is then untouched and no other file is left.
bool replace(std::vector<Value> records);

}  // namespace AccountsFile

}  // namespace tallbook
