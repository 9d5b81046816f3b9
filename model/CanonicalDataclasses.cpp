#include "model/CanonicalDataclasses.h"

#include <utility>
#include <vector>

#include "tallbook/Vocabulary.h"

namespace tallbook {

const ArrayRef& canonicalDataclasses() {
  static const ArrayRef dataclasses = Array::makeFrozen(
      {kAccountDataclassMail, kAccountDataclassContacts, kAccountDataclassCalendars,
       kAccountDataclassReminders, kAccountDataclassBookmarks, kAccountDataclassNotes,
       kAccountDataclassMediaStream, kAccountDataclassDeviceLocator,
       kAccountDataclassContactsSearch, kAccountDataclassBackup, kAccountDataclassUbiquity,
       kAccountDataclassKeyValue, kAccountDataclassPouchet, kAccountDataclassSharedStreams});
  return dataclasses;
}

ArrayRef inCanonicalOrder(const ArrayRef& dataclasses) {
  if (!dataclasses) return Array::make();
  const ArrayRef& canonical = canonicalDataclasses();
  std::vector<Value> ordered;
  for (const Value& dataclass : *canonical) {
    if (dataclasses->contains(dataclass)) ordered.push_back(dataclass);
  }
  for (const Value& dataclass : *dataclasses) {
    if (dataclass.stringView() && !canonical->contains(dataclass)) ordered.push_back(dataclass);
  }
  return Array::make(std::move(ordered));
}

}  // namespace tallbook
