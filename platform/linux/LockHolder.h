// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <string>

#include "platform/linux/FileDescriptor.h"

namespace tallbook {

/// Who holds the advisory lock (`flock`) on the open file, for a person to read: the process and
/// its program, as the kernel lists them. "a process that the kernel does not name" where it lists
/// none: one of another container, or a file system whose device numbers it spells otherwise.
std::string holderOfLockOn(const FileDescriptor& file);

}  // namespace tallbook
