#include "tools/common/MobileUser.h"

#include <fstream>
#include <string>
// Only the system tells who is who.
#include <grp.h>
#include <pwd.h>
#include <unistd.h>

#include "tools/common/Outcome.h"

namespace tallbook::tool {
namespace {

void write(const std::filesystem::path& path, const std::string& text) {
  std::filesystem::create_directories(path.parent_path());
  std::ofstream stream(path);
  stream << text;
  if (!stream.flush()) {
    throw Failure(ExitCode::NotSaved, path.string() + " cannot be written; choose another folder");
  }
}

void writeUser(const std::filesystem::path& root, uid_t user, gid_t group) {
  write(root / "etc/passwd", "mobile:x:" + std::to_string(user) + ":" + std::to_string(group) +
                                 ":Mobile:/var/mobile:/bin/sh\n");
}

void writeGroup(const std::filesystem::path& root, gid_t group) {
  write(root / "etc/group", "mobile:x:" + std::to_string(group) + ":\n");
}

}  // namespace

void makeCallerMobile(const std::filesystem::path& root) {
  writeUser(root, ::geteuid(), ::getegid());
  writeGroup(root, ::getegid());
}

void copyMobile(const std::filesystem::path& root) {
  if (const passwd* user = ::getpwnam("mobile")) writeUser(root, user->pw_uid, user->pw_gid);
  if (const group* own = ::getgrnam("mobile")) writeGroup(root, own->gr_gid);
}

}  // namespace tallbook::tool
