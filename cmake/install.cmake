# What a package holds: library, header, and what finds them.
set(CMAKE_INSTALL_LIBDIR lib CACHE STRING "The package finds its parts from here, so every system has one layout")
include(GNUInstallDirs)

install(TARGETS norvala RUNTIME LIBRARY ARCHIVE)
install(FILES include/norvala.h TYPE INCLUDE)
if(WIN32)
  install(FILES ${PROJECT_BINARY_DIR}/Norvala.def TYPE LIB)
  install(FILES ${PROJECT_BINARY_DIR}/Norvala.lib TYPE LIB OPTIONAL)
endif()

include(CMakePackageConfigHelpers)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/NorvalaConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES cmake/NorvalaConfig.cmake ${PROJECT_BINARY_DIR}/NorvalaConfigVersion.cmake
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/Norvala)

configure_file(cmake/norvala.pc.in ${PROJECT_BINARY_DIR}/norvala.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/norvala.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

if(NORVALA_GALLERY AND WIN32)
  install(TARGETS gallery RUNTIME DESTINATION examples)
  install(FILES examples/smooth.c examples/data/coffee.png examples/data/photographs.md DESTINATION examples)
endif()
