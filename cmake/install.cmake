# What a package holds: library, header, and what finds them.
set(CMAKE_INSTALL_LIBDIR lib CACHE STRING "The package finds its parts from here, so every system has one layout")
set(CMAKE_INSTALL_MESSAGE NEVER)
include(GNUInstallDirs)

install(TARGETS norvala RUNTIME LIBRARY ARCHIVE)
install(FILES include/norvala.h include/norvala.hpp include/norvala_helpers.h include/norvala_load.h
  ${PROJECT_BINARY_DIR}/include/norvala_functions.h TYPE INCLUDE)

math(EXPR bits "8 * ${CMAKE_SIZEOF_VOID_P}")
include(CMakePackageConfigHelpers)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/NorvalaConfigVersion.cmake COMPATIBILITY SameMajorVersion)
# CMake shows the version of a package that it refuses: for the other bitness, that is where the reason goes.
file(APPEND ${PROJECT_BINARY_DIR}/NorvalaConfigVersion.cmake "if(PACKAGE_VERSION_UNSUITABLE)
  set(PACKAGE_VERSION \"${PROJECT_VERSION} for ${bits}-bit programs, which the ones of this build are not\")
endif()
")
install(FILES cmake/NorvalaConfig.cmake ${PROJECT_BINARY_DIR}/NorvalaConfigVersion.cmake
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/Norvala)

configure_file(cmake/norvala.pc.in ${PROJECT_BINARY_DIR}/norvala.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/norvala.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

if(NOT WIN32)
  return()
endif()

# The archive for Windows adds the linkers' files, documentation and examples. The target norvala_archive packs it.
install(FILES ${PROJECT_BINARY_DIR}/Norvala.def TYPE LIB)
install(FILES ${PROJECT_BINARY_DIR}/Norvala.lib TYPE LIB OPTIONAL)
install(FILES docs/archive.md DESTINATION . RENAME README.md)
install(FILES CHANGELOG.md DESTINATION .)
set(html ${PROJECT_BINARY_DIR}/docs)
install(DIRECTORY ${html}/ DESTINATION docs OPTIONAL FILES_MATCHING PATTERN *.html PATTERN style.css)
install(DIRECTORY docs/pictures/ DESTINATION docs)
if(NORVALA_GALLERY)
  install(TARGETS gallery RUNTIME DESTINATION examples)
  install(FILES examples/CMakeLists.txt examples/linked.c examples/linked.cpp examples/loaded.c examples/reference.c
    examples/data/coffee.png examples/data/photographs.md DESTINATION examples)
  install(DIRECTORY examples/gallery DESTINATION examples)
  install(FILES ${NORVALA_STB}/stb_image.h ${NORVALA_STB}/stb_image_write.h DESTINATION examples/stb)

  set(archive norvala-${PROJECT_VERSION}-win${bits})
  add_custom_target(norvala_archive
    COMMAND ${CMAKE_COMMAND} -E rm -rf ${archive} ${archive}.zip ${html}
    COMMAND ${CMAKE_COMMAND} -E make_directory ${html}
    COMMAND ${CMAKE_COMMAND} -E chdir ${PROJECT_SOURCE_DIR} ${CMAKE_COMMAND} -E env NORVALA_VERSION=${PROJECT_VERSION}
      NORVALA_DOCS=${html} doxygen docs/html/Doxyfile
    COMMAND ${CMAKE_COMMAND} --install . --prefix ${archive}
    COMMAND python3 ${PROJECT_SOURCE_DIR}/cmake/pack.py ${archive}
    WORKING_DIRECTORY ${PROJECT_BINARY_DIR} VERBATIM)
  add_dependencies(norvala_archive norvala gallery)
  if(TARGET norvala_lib)
    add_dependencies(norvala_archive norvala_lib)
  endif()
endif()
