#include "platform/linux/LinuxBookmarksLibrary.h"

namespace tallbook {

void LinuxBookmarksLibrary::cloudTabsWereSwitchedOn() {
  _bus.emit({"/com/orvane/Bookmarks", "com.orvane.Bookmarks", "CloudTabsSwitchedOn"},
            {MessageBus::Arguments()});
}

}  // namespace tallbook
