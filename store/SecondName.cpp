// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "store/SecondName.h"

namespace tallbook {
namespace {

using std::errc;

/// Said for a file system without hard links, a file that has as many as it may have or that the
/// process may read but not link, and a folder of another file system.
bool isWithoutLinks(const std::error_code& error) {
  return error == errc::operation_not_permitted || error == errc::operation_not_supported ||
         error == errc::function_not_supported || error == errc::too_many_links ||
         error == errc::cross_device_link;
}

SecondName refusedUnlessGone(const std::error_code& error) {
  return error == errc::no_such_file_or_directory ? SecondName::AnotherVersion
                                                  : SecondName::Refused;
}

/// A file of "mobile" with these bytes, which has its name only when it is complete.
std::error_code makeCopy(Folder& to, const std::string& name, const std::string& bytes) {
  const std::string unfinished = to.freshName();
  std::error_code error;
  const auto file = to.create(unfinished, error);
  if (!file) return error;
  error = file->write(bytes);
  if (!error) error = file->giveTo("mobile", "mobile");
  if (!error) error = file->finish();
  if (!error) error = to.renameToNew(unfinished, name);
  if (error) static_cast<void>(to.remove(unfinished));
  return error;
}

SecondName copy(Folder& folder, const std::string& name, const FileVersion& version, Folder& to,
                const std::string& second, std::error_code& error) {
  const FileContent content = folder.read(name);
  error = content.error;
  if (error) return refusedUnlessGone(error);
  if (content.version != version) return SecondName::AnotherVersion;
  error = makeCopy(to, second, content.bytes);
  return error ? SecondName::Refused : SecondName::Given;
}

}  // namespace

SecondName giveSecondName(Folder& folder, const std::string& name, const FileVersion& version,
                          Folder& to, const std::string& second, std::error_code& error) {
  error = folder.link(name, to, second);
  if (isWithoutLinks(error)) return copy(folder, name, version, to, second, error);
  if (error) return refusedUnlessGone(error);
  const FileLook linked = to.look(second, error);
  if (!error && linked.kind == FileKind::Regular && linked.version == version) {
    return SecondName::Given;
  }
  static_cast<void>(to.remove(second));
  if (error) return SecondName::Refused;
  if (linked.version != version) return SecondName::AnotherVersion;
  return copy(folder, name, version, to, second, error);
}

bool VersionToKeep::isKeptAs(const Folder& to, const std::string& second) {
  std::error_code error;
  const FileLook kept = to.look(second, error);
  if (error || kept.kind != FileKind::Regular) return false;
  if (kept.version == _version) return true;
  if (!_content) _content = _folder.read(_name);
  if (_content->error || _content->version != _version) return false;
  if (kept.version.size != _content->bytes.size()) return false;
  const FileContent content = to.read(second);
  return !content.error && content.bytes == _content->bytes;
}

}  // namespace tallbook
