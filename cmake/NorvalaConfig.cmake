# find_package(Norvala) gives the target Norvala::Norvala. The package can be moved as a whole.
get_filename_component(norvala_prefix "${CMAKE_CURRENT_LIST_DIR}/../../.." ABSOLUTE)

if(NOT TARGET Norvala::Norvala)
  add_library(Norvala::Norvala SHARED IMPORTED)
  set_target_properties(Norvala::Norvala PROPERTIES INTERFACE_INCLUDE_DIRECTORIES "${norvala_prefix}/include")
  if(WIN32)
    set_target_properties(Norvala::Norvala PROPERTIES IMPORTED_LOCATION "${norvala_prefix}/bin/Norvala.dll")
    if(MSVC)
      set_target_properties(Norvala::Norvala PROPERTIES IMPORTED_IMPLIB "${norvala_prefix}/lib/Norvala.lib")
    else()
      set_target_properties(Norvala::Norvala PROPERTIES IMPORTED_IMPLIB "${norvala_prefix}/lib/libNorvala.dll.a")
    endif()
  else()
    set_target_properties(Norvala::Norvala PROPERTIES IMPORTED_LOCATION "${norvala_prefix}/lib/libNorvala.so")
  endif()
endif()

unset(norvala_prefix)
