/** @file
 * All functions of the library, found in a DLL that was loaded at run time. C99 and C++, inline.
 */
#ifndef NORVALA_LOAD_H
#define NORVALA_LOAD_H

#include <string.h>
#ifdef _WIN32
#include <windows.h>
#else
#include <dlfcn.h>
#endif

#include "norvala_functions.h"

/** @defgroup load Loading at run time
 *  For hosts that do not link the library: `norvala_functions.h` has the type of a pointer to each function, its name
 *  followed by `_Function`, and `norvala_load.h` fills a structure of all of them.
 *
 *  @snippet loaded.c loading
 *  @{ */

/** A loaded library: what LoadLibrary or dlopen returned. */
#ifdef _WIN32
typedef HMODULE NorvalaLibrary;
#else
typedef void* NorvalaLibrary;
#endif

/** Pointers to all functions, each under the function's own name. */
typedef struct NorvalaFunctions {
#define NORVALA_MEMBER(name) name##_Function name;
  NORVALA_FUNCTIONS(NORVALA_MEMBER)
#undef NORVALA_MEMBER
} NorvalaFunctions;

/** Finds one function; `function` is the address of the pointer to fill. Returns 1, or 0 where there is none. */
static inline int NorvalaFind(NorvalaLibrary library, const char* name, void* function) {
#ifdef _WIN32
  const FARPROC found = GetProcAddress(library, name);
#else
  void* const found = dlsym(library, name);
#endif
  /* Pointers to functions are copied as bytes: conversions between their types are what compilers warn of. */
  memcpy(function, &found, sizeof found);
  return found != NULL;
}

/** Finds all functions.
 *  @param library   the loaded library; it must stay loaded as long as the functions are called
 *  @param functions receives the pointers
 *  @return null when every function was found, otherwise the name of the first one that is missing */
static inline const char* NorvalaLoad(NorvalaLibrary library, NorvalaFunctions* functions) {
#define NORVALA_FIND(name) \
  if (!NorvalaFind(library, #name, &functions->name)) return #name;
  NORVALA_FUNCTIONS(NORVALA_FIND)
#undef NORVALA_FIND
  return NULL;
}
/** @} */

#endif
