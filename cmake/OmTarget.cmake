# What the targets of this repository have in common.

# om_target(<target>) sets the language level and the sanitizers of a target. Our own builds add warnings; in
# the build of somebody else, who adds this folder, the flags are theirs.
function(om_target target)
  target_compile_features(${target} PUBLIC cxx_std_20)
  set_target_properties(${target} PROPERTIES CXX_EXTENSIONS OFF)
  if(OM_SANITIZE)
    target_compile_options(${target} PRIVATE -fsanitize=${OM_SANITIZE} -fno-sanitize-recover=all
                                             -fno-omit-frame-pointer)
    target_link_options(${target} PRIVATE -fsanitize=${OM_SANITIZE})
  endif()
  if(NOT PROJECT_IS_TOP_LEVEL)
    return()
  endif()
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wconversion -Wshadow)
  # g++ 12 sees overlapping copies in any std::string concatenation (its bug 105651).
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    target_compile_options(${target} PRIVATE -Wno-restrict)
  endif()
  if(OM_SANITIZE AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # What sanitizers add to the code makes g++ see uninitialised values that are none.
    target_compile_options(${target} PRIVATE -Wno-maybe-uninitialized)
  endif()
  if(OM_WARNINGS_AS_ERRORS)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
endfunction()

# om_library(<target> <name>) makes a target, whose sources are listed, a versioned library that exports only
# what it says.
function(om_library target name)
  om_target(${target})
  set_target_properties(${target} PROPERTIES
    OUTPUT_NAME ${name}
    VERSION ${PROJECT_VERSION}
    SOVERSION ${PROJECT_VERSION_MAJOR}
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON)
  target_include_directories(${target} PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>)
  # Public, because the containers are templates: every side of the seam has to agree. One answer for all
  # configurations of a build, so that what is installed does not ask for the configuration of its user.
  target_compile_definitions(${target} PUBLIC $<$<BOOL:${OM_HARDENING}>:OM_HARDENING=1>)
  om_list_files(${target})
  if(NOT PROJECT_IS_TOP_LEVEL)
    return()
  endif()
  set_target_properties(${target} PROPERTIES
    POSITION_INDEPENDENT_CODE ON
    BUILD_RPATH_USE_ORIGIN ON)
  # A program that puts its own definitions in the place of a library's, as a test does with the
  # region, replaces whole sources; within one, calls may be inlined and need no table.
  if(NOT OM_SANITIZE)
    target_compile_options(${target} PRIVATE -fno-semantic-interposition -fno-plt)
  endif()
  # So that a debugger can show what an optimised library holds; packages split it off.
  target_compile_options(${target} PRIVATE $<$<CONFIG:Release>:-g>)
  # With this and the relative path to the other library, a library does not depend on the folder that it was built in.
  target_compile_options(${target} PRIVATE
    $<$<CONFIG:Release>:-ffile-prefix-map=${PROJECT_SOURCE_DIR}=.>
    $<$<CONFIG:Release>:-ffile-prefix-map=${PROJECT_BINARY_DIR}=build>)
endfunction()

# om_list_files(<target>) writes the files of a library to files/<target>.txt in the build folder, for scripts and
# tests: a line for each, with "public" (installed), "private" or "source" and its path from the root.
function(om_list_files target)
  get_target_property(public ${target} HEADER_SET)
  get_target_property(rest ${target} SOURCES)
  set(lines)
  foreach(file ${public} ${rest})
    cmake_path(ABSOLUTE_PATH file BASE_DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR} NORMALIZE OUTPUT_VARIABLE path)
    if(file IN_LIST public)
      set(kind public)
    elseif(file MATCHES "\\.h$")
      set(kind private)
    else()
      set(kind source)
    endif()
    cmake_path(RELATIVE_PATH path BASE_DIRECTORY ${PROJECT_SOURCE_DIR})
    list(APPEND lines "${kind} ${path}")
  endforeach()
  list(REMOVE_DUPLICATES lines)
  list(JOIN lines "\n" text)
  file(CONFIGURE OUTPUT ${PROJECT_BINARY_DIR}/files/${target}.txt CONTENT "${text}\n" @ONLY)
endfunction()
