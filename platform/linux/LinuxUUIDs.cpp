#include "platform/linux/LinuxUUIDs.h"

#include <uuid.h>

namespace tallbook {

String LinuxUUIDs::newUUID() {
  uuid_t uuid;
  ::uuid_generate_random(uuid);
  char text[UUID_STR_LEN];
  ::uuid_unparse_upper(uuid, text);
  return String(text);
}

}  // namespace tallbook
