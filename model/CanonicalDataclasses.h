#pragma once

#include "tallbook/Value.h"

/// What `BasicAccount` answers about the order of dataclasses, for the catalogue as well: it is
/// built before the class may be used.
namespace tallbook {

/// The fourteen dataclasses in canonical order; one frozen list for the process.
const ArrayRef& canonicalDataclasses();

/// The strings in canonical order, each dataclass once, then the rest as they came; empty for null.
ArrayRef inCanonicalOrder(const ArrayRef& dataclasses);

}  // namespace tallbook
