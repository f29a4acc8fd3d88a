# The Debian packages that `cpack -G DEB` makes: the two libraries, what is needed to build with them,
# their debug symbols, and the documentation. The preset "package" configures for a system's own folders.

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

set(CPACK_DEBIAN_DOCUMENTATION_PACKAGE_NAME libom-doc)
set(CPACK_DEBIAN_DOCUMENTATION_PACKAGE_SECTION doc)
set(CPACK_DEBIAN_DOCUMENTATION_PACKAGE_ARCHITECTURE all)

# The pages that scripts/docs has made, where it has, and the guides.
install(DIRECTORY docs/ DESTINATION share/doc/libom-doc COMPONENT documentation
        FILES_MATCHING PATTERN "*.md" PATTERN "*.svg" PATTERN "doxygen" EXCLUDE PATTERN "snippets" EXCLUDE)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/build/docs/html DESTINATION share/doc/libom-doc
        COMPONENT documentation OPTIONAL)
include(CPack)
