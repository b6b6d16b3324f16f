# Makes norvala_functions.h from the declarations of norvala.h: the type of a pointer to each function, and the list of
# their names.
function(norvala_write_function_types header target)
  file(READ ${header} text)
  string(REGEX REPLACE "/\\*([^*]|\\*+[^*/])*\\*+/" "" text "${text}")
  string(REGEX MATCHALL "NORVALA_API [^;#]*NORVALA_CALL Norvala_[^;]*" declarations "${text}")
  foreach(declaration IN LISTS declarations)
    string(REGEX REPLACE "[ \n]+" " " declaration "${declaration}")
    string(REGEX REPLACE "^NORVALA_API (.*) NORVALA_CALL (Norvala_[A-Za-z0-9_]+)(\\(.*\\))$"
      "/** Pointer to \\2. */\ntypedef \\1(NORVALA_CALL* \\2_Function)\n    \\3" type "${declaration}")
    string(REGEX REPLACE "^.* NORVALA_CALL (Norvala_[A-Za-z0-9_]+)\\(.*$" "\\1" name "${declaration}")
    string(APPEND types "${type};\n")
    string(APPEND names " \\\n  X(${name})")
  endforeach()
  file(CONFIGURE OUTPUT ${target} CONTENT [[
/** @file
 * Pointers to the functions of norvala.h, for hosts that load the library at run time. Made from that header.
 */
#ifndef NORVALA_FUNCTIONS_H
#define NORVALA_FUNCTIONS_H

#include "norvala.h"

/** Writes X(name) for every function of the library. */
#define NORVALA_FUNCTIONS(X)@names@

@types@
#endif
]] @ONLY)
endfunction()
