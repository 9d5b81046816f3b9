// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "platform/FileReplacement.h"

#include <optional>

namespace tallbook {
namespace {

using std::errc;

/// One attempt. A version is replaced by whoever holds its live claim: a note, under a name made of
/// the version, that says which finished file is to come next. Only one claim of a version is alive
/// at a time: the first, or the one after a dead claim, whose file was withdrawn. A claim of the
/// present version is never removed; one of an earlier version is litter, and nobody's.
class Attempt {
 public:
  Attempt(Folder& folder, const std::string& name, const FileVersion& read,
          const std::string& finished, std::error_code& error)
      : _folder(folder), _name(name), _read(read), _finished(finished), _error(error) {}

  Replacement run() {
    _error.clear();
    if (!_read) return makeFirst();
    for (_claims = 1;; ++_claims) {
      const std::string claim = claimNumber(_claims);
      const std::error_code made = _folder.makeNote(claim, _finished);
      if (!made) return replaceByOwnClaim();
      if (isWithoutNotes(made)) return compareAndReplace();
      if (made != errc::file_exists) return fail(made);
      const std::string other = _folder.noteText(claim, _error);
      // Claims are removed when their version is over.
      if (_error == errc::no_such_file_or_directory) return lost();
      if (_error) return fail(_error);
      if (const auto over = help(other)) return *over;
    }
  }

 private:
  std::string claimNumber(int number) const {
    std::string name = ".tallbook-claim";
    for (const auto part :
         {static_cast<std::int64_t>(_read.inode), _read.modifiedSeconds, _read.modifiedNanoseconds,
          static_cast<std::int64_t>(_read.size), std::int64_t{number}}) {
      name += "-" + std::to_string(part);
    }
    return name;
  }
  static bool isWithoutNotes(const std::error_code& error) {
    return error == errc::operation_not_permitted || error == errc::operation_not_supported ||
           error == errc::function_not_supported;
  }

  // Whether another version lies there by now. False, with `_error`, where nobody can tell.
  bool isOver() {
    const FileLook now = _folder.look(_name, _error);
    return !_error && now.version != _read;
  }

  // The kernel itself makes sure that only one file is the first.
  Replacement makeFirst() {
    const std::error_code made = _folder.renameToNew(_finished, _name);
    if (!made) return done();
    return made == errc::file_exists ? lost() : fail(made);
  }

  Replacement replaceByOwnClaim() {
    const bool over = isOver();
    if (_error) return fail(_error);
    if (over) {
      // If it was by our file, a helper has put that in place: it goes from its own name then and
      // at no other time.
      const FileLook ours = _folder.look(_finished, _error);
      if (_error) return fail(_error);
      return ours.kind == FileKind::Nothing ? done() : lost();
    }
    const std::error_code renamed = _folder.rename(_finished, _name);
    if (!renamed) return done();
    // Somebody put it in place for us; or somebody cleaned up what was not theirs.
    if (renamed == errc::no_such_file_or_directory && isOver()) return done();
    return fail(renamed);
  }

  // Finishes the replacement of another's claim. Nothing where that claim is dead: its owner has
  // withdrawn the file, and the next claim counts.
  std::optional<Replacement> help(const std::string& other) {
    // Whoever may write in this folder can leave a note, and must not have us, who may do more,
    // move files from other folders into it.
    if (other.find('/') != std::string::npos) return std::nullopt;
    // After the claim was read: one that was made too late is on a version that is over.
    const bool over = isOver();
    if (_error) return fail(_error);
    if (over) return lost();
    const std::error_code renamed = _folder.rename(other, _name);
    if (!renamed) return lost();
    if (renamed != errc::no_such_file_or_directory) return fail(renamed);
    // Put in place by somebody else; or withdrawn, if the version outlived it.
    const bool overNow = isOver();
    if (_error) return fail(_error);
    if (overNow) return lost();
    return std::nullopt;
  }

  // For file systems without symbolic links: what another save does between the look and the
  // rename is lost.
  Replacement compareAndReplace() {
    --_claims;
    const bool over = isOver();
    if (_error) return fail(_error);
    if (over) return lost();
    const std::error_code renamed = _folder.rename(_finished, _name);
    return renamed ? fail(renamed) : done();
  }

  Replacement done() {
    _error = _folder.flush();
    removeClaims();
    return Replacement::Done;
  }
  Replacement lost() {
    _error.clear();
    removeClaims();
    return Replacement::NotTheFileRead;
  }
  // The file goes first, so that no helper can put it in place after the failure was reported. The
  // claim, dead now, stays as long as its version.
  Replacement fail(const std::error_code& why) {
    if (_folder.remove(_finished) == errc::no_such_file_or_directory && _claims > 0 && isOver()) {
      return done();
    }
    _error = why;
    return Replacement::Failed;
  }
  void removeClaims() {
    for (int number = _claims; number > 0; --number) {
      static_cast<void>(_folder.remove(claimNumber(number)));
    }
  }

  Folder& _folder;
  const std::string& _name;
  const FileVersion& _read;
  const std::string& _finished;
  std::error_code& _error;
  int _claims = 0;
};

}  // namespace

Replacement replaceIfUnchanged(Folder& folder, const std::string& name, const FileVersion& read,
                               const std::string& finished, std::error_code& error) {
  return Attempt(folder, name, read, finished, error).run();
}

}  // namespace tallbook
