# What every target of this repository has in common.

# om_target(<target>) sets the language level, the warnings and the sanitizers of a target.
function(om_target target)
  target_compile_features(${target} PUBLIC cxx_std_20)
  set_target_properties(${target} PROPERTIES CXX_EXTENSIONS OFF)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wconversion -Wshadow)
  # g++ 12 sees overlapping copies in any std::string concatenation (its bug 105651).
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    target_compile_options(${target} PRIVATE -Wno-restrict)
  endif()
  if(OM_WARNINGS_AS_ERRORS)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
  if(OM_SANITIZE AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # What sanitizers add to the code makes g++ see uninitialised values that are none.
    target_compile_options(${target} PRIVATE -Wno-maybe-uninitialized)
  endif()
  if(OM_SANITIZE)
    target_compile_options(${target} PRIVATE -fsanitize=${OM_SANITIZE} -fno-sanitize-recover=all
                                             -fno-omit-frame-pointer)
    target_link_options(${target} PRIVATE -fsanitize=${OM_SANITIZE})
  endif()
endfunction()

# om_library(<target> <name>) makes a target a versioned library that exports only what it says.
function(om_library target name)
  om_target(${target})
  set_target_properties(${target} PROPERTIES
    OUTPUT_NAME ${name}
    VERSION ${PROJECT_VERSION}
    SOVERSION ${PROJECT_VERSION_MAJOR}
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON
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
  target_include_directories(${target} PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>)
  # Public, because the containers are templates: every side of the seam has to agree.
  target_compile_definitions(${target} PUBLIC $<$<BOOL:${OM_HARDENING}>:OM_HARDENING=1>)
endfunction()
