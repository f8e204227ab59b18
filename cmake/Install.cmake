# What `cmake --install` puts where. Components: `runtime` (what programs run with), `development` (what they are built
# with) and `tools`.

# All that is installed from a build.
add_custom_target(delivery)
add_dependencies(delivery tevcvpx tevcore)
if(TARGET tevcv_cli)
  add_dependencies(delivery tevcv_cli)
endif()

# The system's loader looks into glibc-hwcaps/<level> beside a library for a build that suits the processor better. Such a
# variant is the one file, picked by its SONAME. The core library has none: it computes no images, and a program may bring
# its own, which must serve whatever variant is picked.
if(TEVCV_VARIANT)
  install(TARGETS tevcvpx
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/glibc-hwcaps/${TEVCV_VARIANT} COMPONENT runtime NAMELINK_SKIP)
  return()
endif()

install(TARGETS tevcvpx tevcore EXPORT tevcvTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
if(TARGET tevcv_cli)
  install(TARGETS tevcv_cli RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)
endif()

# The public headers; those of the workers stay here.
install(FILES ${CMAKE_SOURCE_DIR}/include/tevcv.h ${CMAKE_SOURCE_DIR}/include/tevcore.h
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)
install(DIRECTORY ${CMAKE_SOURCE_DIR}/include/tevcv
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development FILES_MATCHING PATTERN "*.h")

# For pkg-config and find_package(). Both find everything from where they lie themselves, so the tree may move.
file(RELATIVE_PATH to_prefix /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
file(RELATIVE_PATH to_headers /${CMAKE_INSTALL_LIBDIR}/pkgconfig /${CMAKE_INSTALL_INCLUDEDIR})
configure_file(cmake/tevcvpx.pc.in ${CMAKE_BINARY_DIR}/tevcvpx.pc @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/tevcvpx.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/tevcv)
install(EXPORT tevcvTargets NAMESPACE tevcv:: DESTINATION ${package_dir} COMPONENT development)
include(CMakePackageConfigHelpers)
configure_package_config_file(cmake/tevcvConfig.cmake.in ${CMAKE_BINARY_DIR}/tevcvConfig.cmake
  INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${CMAKE_BINARY_DIR}/tevcvConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_BINARY_DIR}/tevcvConfig.cmake ${CMAKE_BINARY_DIR}/tevcvConfigVersion.cmake
  DESTINATION ${package_dir} COMPONENT development)

# Documents lie where Debian has them, in one directory a package.
set(docs ${CMAKE_INSTALL_DATAROOTDIR}/doc)
set(runtime_package libtevcvpx${PROJECT_VERSION})
set(development_package libtevcvpx-dev)
set(tools_package tevcv-tools)
set(components runtime development)
if(TARGET tevcv_cli)
  list(APPEND components tools)
endif()
foreach(component IN LISTS components)
  install(FILES ${CMAKE_SOURCE_DIR}/LICENSE
    DESTINATION ${docs}/${${component}_package} COMPONENT ${component} RENAME copyright)
endforeach()
install(FILES ${CMAKE_SOURCE_DIR}/README.md DESTINATION ${docs}/${development_package} COMPONENT development)
install(DIRECTORY ${CMAKE_SOURCE_DIR}/examples DESTINATION ${docs}/${development_package} COMPONENT development
  PATTERN CMakeLists.txt EXCLUDE)
