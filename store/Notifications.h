// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

namespace tallbook::Notifications {

/// Whether saves of this process notify nobody at present.
bool areSkipped() noexcept;

}  // namespace tallbook::Notifications
