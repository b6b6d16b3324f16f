#pragma once

#include <string>
#include <type_traits>

#include "norvala.h"

namespace gallery {

// The shared library, loaded from a file at run time. Throws std::runtime_error where it or an export is missing.
class Library {
 public:
  explicit Library(const std::string& file);
  Library(const Library&) = delete;
  Library& operator=(const Library&) = delete;
  ~Library();

  // An export by name; Signature is the type of the header's declaration, as in
  // library.Function<decltype(Norvala_GetVersion)>("Norvala_GetVersion").
  template <class Signature>
  std::add_pointer_t<Signature> Function(const char* name) const {
    return reinterpret_cast<std::add_pointer_t<Signature>>(Address(name));
  }

 private:
  void* Address(const char* name) const;

  void* handle_;
};

}  // namespace gallery
