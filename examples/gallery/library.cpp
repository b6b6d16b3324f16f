#include "library.h"

#include <stdexcept>

#ifdef _WIN32
#include <windows.h>
#else
#include <dlfcn.h>
#endif

namespace gallery {

#ifdef _WIN32

Library::Library(const std::string& file) : handle_(LoadLibraryA(file.c_str())) {
  if (handle_ == nullptr) throw std::runtime_error("cannot load " + file);
}

Library::~Library() { FreeLibrary(static_cast<HMODULE>(handle_)); }

void* Library::Address(const char* name) const {
  void* address = reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(handle_), name));
  if (address == nullptr) throw std::runtime_error(std::string("the library has no ") + name);
  return address;
}

#else

Library::Library(const std::string& file) : handle_(dlopen(file.c_str(), RTLD_NOW)) {
  if (handle_ == nullptr) throw std::runtime_error(std::string("cannot load the library: ") + dlerror());
}

Library::~Library() { dlclose(handle_); }

void* Library::Address(const char* name) const {
  void* address = dlsym(handle_, name);
  if (address == nullptr) throw std::runtime_error(std::string("the library has no ") + name);
  return address;
}

#endif

}  // namespace gallery
