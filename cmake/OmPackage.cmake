# The Debian packages that `cpack -G DEB` makes: the two libraries, what is needed to build with them,
# their debug symbols, the same for each part, and the documentation. The preset "package" configures for a system's own folders.

set(CPACK_PACKAGE_NAME om)
set(CPACK_PACKAGE_VENDOR om)
set(CPACK_PACKAGE_CONTACT "The maintainers of om <om@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY ${PROJECT_DESCRIPTION})
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_COMPONENTS_ALL runtime development documentation)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libom${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_RUNTIME_DEBUGINFO_PACKAGE ON)

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libom-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "libom${PROJECT_VERSION_MAJOR} (= ${PROJECT_VERSION})")

foreach(part IN LISTS OM_PARTS)
  string(TOUPPER ${part} OM_PART)
  if(NOT OM_BUILD_${OM_PART})
    continue()
  endif()
  list(APPEND CPACK_COMPONENTS_ALL ${part} ${part}-development)
  set(CPACK_DEBIAN_${OM_PART}_PACKAGE_NAME libom${part}${PROJECT_VERSION_MAJOR})
  set(CPACK_DEBIAN_${OM_PART}_PACKAGE_SECTION libs)
  set(CPACK_DEBIAN_${OM_PART}_PACKAGE_DEPENDS "libom${PROJECT_VERSION_MAJOR} (= ${PROJECT_VERSION})")
  set(CPACK_DEBIAN_${OM_PART}_PACKAGE_SHLIBDEPS ON)
  set(CPACK_DEBIAN_${OM_PART}_DEBUGINFO_PACKAGE ON)
  set(CPACK_DEBIAN_${OM_PART}-DEVELOPMENT_PACKAGE_NAME libom${part}-dev)
  set(CPACK_DEBIAN_${OM_PART}-DEVELOPMENT_PACKAGE_SECTION libdevel)
  set(CPACK_DEBIAN_${OM_PART}-DEVELOPMENT_PACKAGE_DEPENDS
      "libom${part}${PROJECT_VERSION_MAJOR} (= ${PROJECT_VERSION}), libom-dev (= ${PROJECT_VERSION})")
endforeach()
# A part's library needs those of the library, which are in another package of the same build.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/backend/tables ${PROJECT_BINARY_DIR}/platform)

set(CPACK_DEBIAN_DOCUMENTATION_PACKAGE_NAME libom-doc)
set(CPACK_DEBIAN_DOCUMENTATION_PACKAGE_SECTION doc)
set(CPACK_DEBIAN_DOCUMENTATION_PACKAGE_ARCHITECTURE all)

# The pages that scripts/docs has made, where it has, and the guides.
install(DIRECTORY docs/ DESTINATION share/doc/libom-doc COMPONENT documentation
        FILES_MATCHING PATTERN "*.md" PATTERN "*.svg" PATTERN "doxygen" EXCLUDE PATTERN "snippets" EXCLUDE)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/build/docs/html DESTINATION share/doc/libom-doc
        COMPONENT documentation OPTIONAL)
include(CPack)
