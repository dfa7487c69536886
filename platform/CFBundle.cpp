// CFBundle.cpp: the bundle part of CoreFoundation.h: framework bundles with their executables.
#include "platform/CoreFoundation.h"

#include <dlfcn.h>
#include <sys/stat.h>

#include <string>

#include "platform/CFObject.h"

CFBundleObject::~CFBundleObject() {
  if (m_pExecutable != nullptr) dlclose(m_pExecutable);
}

CFBundleRef CFBundleCreate(CFAllocatorRef, CFURLRef bundleURL) {
  std::string path;
  struct stat status;
  if (bundleURL == nullptr || !FileURLPath(bundleURL->m_strText, path) ||
      stat(path.c_str(), &status) != 0 || !S_ISDIR(status.st_mode))
    return nullptr;
  CFBundleObject* bundle = new CFBundleObject;
  bundle->m_strPath = path;
  return bundle;
}

Boolean CFBundleLoadExecutable(CFBundleRef bundle) {
  if (bundle == nullptr) return false;
  if (bundle->m_pExecutable != nullptr) return true;
  const std::string& path = bundle->m_strPath;
  std::string name = path.substr(path.rfind('/') + 1);
  name = name.substr(0, name.rfind('.'));
  bundle->m_pExecutable = dlopen((path + "/" + name).c_str(), RTLD_NOW | RTLD_LOCAL);
  return bundle->m_pExecutable != nullptr;
}
