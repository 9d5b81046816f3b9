#include "tools/tallbook-migrate/Outcome.h"

namespace tallbook::migrate {

std::string_view nameOf(Outcome outcome) {
  switch (outcome) {
    case Outcome::Unchanged:
      return "unchanged";
    case Outcome::Upgraded:
      return "upgraded";
    case Outcome::Repaired:
      return "repaired";
    case Outcome::Changed:
      return "changed";
    case Outcome::Converted:
      return "converted";
    case Outcome::NotConverted:
      return "not converted";
    case Outcome::Wrapped:
      return "wrapped";
    case Outcome::Added:
      return "added";
    case Outcome::Folded:
      return "folded";
    case Outcome::Replaced:
      return "replaced";
    case Outcome::Dropped:
      return "dropped";
  }
  return "";
}

}  // namespace tallbook::migrate
