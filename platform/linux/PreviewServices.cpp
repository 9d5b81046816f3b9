// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "platform/linux/PreviewServices.h"

namespace tallbook {
namespace {

class PreviewHold final : public LockHold {
 public:
  void release() noexcept override {}
};

}  // namespace

std::unique_ptr<LockHold> PreviewNamedLock::lock(std::string_view name, const LongWait&, Deadline) {
  std::error_code error;
  const auto folder = _files.openFolder(_root.path() + "/tmp", error);
  if (!folder) return nullptr;
  const std::string fileName(name);
  const FileKind kind = folder->look(fileName, error).kind;
  if (!error && kind == FileKind::Nothing) error = createFile(*folder, fileName, {});
  if (!error && kind == FileKind::Regular) error = folder->read(fileName).error;
  const bool isFile = kind == FileKind::Nothing || kind == FileKind::Regular;
  return isFile && !error ? std::make_unique<PreviewHold>() : nullptr;
}

const void* PreviewModuleLoader::load(const std::string&, std::string& error) {
  error = "a preview loads no modules";
  return nullptr;
}

}  // namespace tallbook
