#pragma once

#include <string>
#include <vector>

namespace tallbook::migrate {

// Reading that leaves no trace on what is read, not even an access time where the kernel permits
// that: it does to a file's owner and to the superuser.

/// Copies the bytes of a regular file to a new file. Where it cannot be read, or is longer than the
/// library reads, the copy is a file of which that holds as well.
void copyUntouched(const std::string& from, const std::string& to);

/// The names in a folder; none where it cannot be read.
std::vector<std::string> namesInUntouched(const std::string& folder);

/// Makes something at the path that opens for reading and is no file.
void makePipe(const std::string& path);

}  // namespace tallbook::migrate
