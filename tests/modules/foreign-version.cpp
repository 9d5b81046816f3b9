// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

// A module of which one class was built for another version of the plug-in interface.

#include "tallbook/PlugInClass.h"

namespace {

using namespace tallbook;

PlugInClass makeNamed(const char* name) {
  PlugInClass made;
  made.name = name;
  return made;
}

const PlugInRegistration fitting(kPlugInInterfaceVersion, [] { return makeNamed("TestFitting"); });
const PlugInRegistration foreign(kPlugInInterfaceVersion + 1,
                                 [] { return makeNamed("TestForeign"); });

}  // namespace
