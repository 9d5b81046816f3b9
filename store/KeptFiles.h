// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <string>

#include "tallbook/SaveFailure.h"

#include "platform/FileReplacement.h"

namespace tallbook {

/// What the name of a file that is kept unread ends in, before its number.
constexpr const char* kUnreadableEnding = ".unreadable-";

/// Keeps a file that is no accounts file beside itself, as `NAME.unreadable-N`, before it is
/// replaced: the content that nobody could read may be the only copy of somebody's accounts. N is
/// one above the highest that there is; the same content is kept once, and of more than nine files
/// the oldest go.
///
/// `Done` means that the version is kept on the disk; `NotTheFileRead` that another one lies there;
/// `Failed`, with the reason, that it could not be kept and must not be replaced.
Replacement keepMalformedFile(Folder& folder, const std::string& name, const FileVersion& version,
                              SaveFailure& failure);

}  // namespace tallbook
