# Debian packages by CPack, one for each component. tools/package.sh makes and tests those of both architectures; it adds the
# variants' builds to the component `runtime` of the plain one.
find_program(GZIP gzip)
if(TEVCV_VARIANT OR NOT GZIP)
  return()
endif()

set(CPACK_GENERATOR DEB)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "The tevcv authors <tevcv@example.org>")
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_COMPONENTS_ALL ${components})
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_SOURCE tevcv)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
if(CMAKE_SIZEOF_VOID_P EQUAL 4)
  set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE i386)
else()
  set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE amd64)
endif()
foreach(component IN LISTS components)
  string(TOUPPER ${component} upper)
  set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${${component}_package})
endforeach()

# Library packages of both architectures can be installed side by side, and one program serves both. CMake has no variable
# for the field before 3.31, so it travels behind the section.
set(side_by_side "\nMulti-Arch: same")
set(serves_both "\nMulti-Arch: foreign")

# What the libraries need is written out: a 64-bit machine has no packages of the 32-bit libraries to look it up in. The
# packages' test holds it against what the libraries import.
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION "libs${side_by_side}")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_DEPENDS "libc6 (>= 2.29), libgomp1 (>= 4.9), libstdc++6 (>= 4.1.1)")
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION
"image-analysis and computer-vision primitives
Plain C functions over images in memory: arithmetic and statistics, integral
images and cascades, filters, morphology, pyramids, optical flow, background
models, distance transforms, inpainting, segmentation, edges, corners, lines,
and lens correction. Results are the same to the bit on every architecture
and processor.

This package holds the library, on amd64 in three builds of which the system's
loader picks the one that suits the processor best, and the core library that
it asks for its thread count.
")

set(CPACK_COMPONENT_DEVELOPMENT_DEPENDS runtime)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION "libdevel${side_by_side}")
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION
"image-analysis and computer-vision primitives (development files)
Plain C functions over images in memory, with the same results to the bit on
every architecture and processor.

This package holds what programs are built with: the headers, which document
every function, the links for the linker, files for pkg-config and CMake, and
examples.
")

set(CPACK_COMPONENT_TOOLS_DEPENDS runtime)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION "graphics${serves_both}")
if(CPACK_DEBIAN_PACKAGE_ARCHITECTURE STREQUAL i386)
  set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS
    "libc6 (>= 2.34), libgcc-s1 (>= 3.0), libjpeg62-turbo (>= 1.3.1), libpng16-16 (>= 1.6.2-1), libstdc++6 (>= 12)")
else()
  set(CPACK_DEBIAN_TOOLS_PACKAGE_SHLIBDEPS ON)
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
endif()
set(CPACK_DEBIAN_TOOLS_DESCRIPTION
"image-analysis and computer-vision primitives (command-line program)
Edges, corners, lines, faces, filters, morphology, distance maps, inpainting,
segmentation, pyramids, tracking, background models and lens correction, on
picture files, from the shell.
")

# Control files of the libraries: their symbols and since when they are there, what programs that link to them depend on,
# and a renewal of the loader's cache.
set(symbols)
set(shlibs)
foreach(map IN ITEMS ${CMAKE_SOURCE_DIR}/core/tevcore.map ${CMAKE_BINARY_DIR}/tevcv/tevcvpx.map)
  get_filename_component(library ${map} NAME_WE)
  string(APPEND shlibs "lib${library} ${PROJECT_VERSION} ${runtime_package} (>= ${PROJECT_VERSION})\n")
  string(APPEND symbols "lib${library}.so.${PROJECT_VERSION} ${runtime_package} #MINVER#\n* Build-Depends-Package: ${development_package}\n")
  file(READ ${map} text)
  string(REGEX MATCHALL "\n    [A-Za-z0-9_]+" names "${text}")
  list(SORT names)
  foreach(name IN LISTS names)
    string(STRIP ${name} name)
    string(APPEND symbols " ${name}@Base ${PROJECT_VERSION}\n")
  endforeach()
endforeach()
set(control ${CMAKE_BINARY_DIR}/debian)
file(CONFIGURE OUTPUT ${control}/symbols CONTENT "${symbols}")
file(CONFIGURE OUTPUT ${control}/shlibs CONTENT "${shlibs}")
file(CONFIGURE OUTPUT ${control}/triggers CONTENT "activate-noawait ldconfig\n")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${control}/symbols ${control}/shlibs ${control}/triggers)

set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS cmake/changelog)
execute_process(COMMAND ${GZIP} -9nc ${CMAKE_SOURCE_DIR}/cmake/changelog
  OUTPUT_FILE ${control}/changelog.gz COMMAND_ERROR_IS_FATAL ANY)
foreach(component IN LISTS components)
  install(FILES ${control}/changelog.gz DESTINATION ${docs}/${${component}_package} COMPONENT ${component})
endforeach()
if(TARGET tevcv_cli)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS tools/tevcv/tevcv.1)
  execute_process(COMMAND ${GZIP} -9nc ${CMAKE_SOURCE_DIR}/tools/tevcv/tevcv.1
    OUTPUT_FILE ${control}/tevcv.1.gz COMMAND_ERROR_IS_FATAL ANY)
  install(FILES ${control}/tevcv.1.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tools)
endif()

include(CPack)
