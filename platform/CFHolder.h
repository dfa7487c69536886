// CFHolder.h: the one owner of Core Foundation objects. What a Create... or Copy... call returns
// is released exactly once, when its holder goes, whatever path leaves the scope; a null object
// is never handed to CFRelease, which does not accept one.
#pragma once

#include <memory>
#include <type_traits>

#include "platform/CoreFoundation.h"

struct CFReleaser {
  void operator()(CFTypeRef object) const { CFRelease(object); }
};

// CFHolder<CFStringRef> name(CFStringCreate...(...)); name.get() is the string.
template <class Ref>
using CFHolder = std::unique_ptr<std::remove_pointer_t<Ref>, CFReleaser>;

// A holder for `object`, its type taken from the object.
template <class Ref>
CFHolder<Ref> CFHold(Ref object) {
  return CFHolder<Ref>(object);
}
