// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "tests/support/TestPlatform.h"

#include "platform/linux/LinuxPlatform.h"

namespace tallbook {

TestPlatform::TestPlatform(const std::string& root)
    : _linux(makeLinuxPlatform({root, LinuxPlatformOptions::LogSink::Nowhere})),
      _fileSystem(&_linux->fileSystem()),
      capturedPreferences(_linux->preferences()),
      scriptedUUIDs(_linux->uuids()),
      resources(root + "/usr/share/tallbook") {}

}  // namespace tallbook
