#pragma once

namespace tallbook::Notifications {

/// Whether saves of this process notify nobody at present.
bool areSkipped() noexcept;

}  // namespace tallbook::Notifications
