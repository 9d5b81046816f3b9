// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "platform/linux/LinuxDirectories.h"

#include "platform/linux/AccountDatabase.h"

namespace tallbook {

std::string LinuxDirectories::mobileHome() const {
  // Asking the running system may mean asking a directory server: once is enough.
  std::scoped_lock guard(_asking);
  if (!_home.empty()) return _home;
  _home = _root.path() + "/var/mobile";
  if (!_root.path().empty()) return _home;
  std::error_code unknown;
  const auto home = AccountDatabase(_root).homeOf("mobile", unknown);
  if (home && home->size() > 1 && home->front() == '/') _home = *home;
  if (_home.back() == '/') _home.pop_back();
  return _home;
}

}  // namespace tallbook
