# What is installed, and where: the libraries, their headers under one folder that carries the major
# version, the CMake package, the pkg-config files and the debugger's printers. Nothing that is installed
# names the prefix, so a tree may be moved as a whole.

if(NOT OM_INSTALL)
  function(om_install)
  endfunction()
  return()
endif()

include(CMakePackageConfigHelpers)
include(GNUInstallDirs)

# The parts beside the library and its platform that find_package(om COMPONENTS …) may ask for. Each stands
# on those before it.
set(OM_PARTS display)

set(OM_INCLUDEDIR ${CMAKE_INSTALL_INCLUDEDIR}/om-${PROJECT_VERSION_MAJOR})
set(OM_PACKAGEDIR ${CMAKE_INSTALL_LIBDIR}/cmake/om)

# om_install(<target> <name> <description> [PART <part>] [REQUIRES <pkg-config modules>...]) installs a library
# with its headers and its pkg-config file. A part has packages of its own, and a file that defines its target.
function(om_install target name description)
  cmake_parse_arguments(PARSE_ARGV 3 ARG "" "PART" "REQUIRES")
  set(runtime runtime)
  set(development development)
  set(export omTargets)
  if(ARG_PART)
    set(runtime ${ARG_PART})
    set(development ${ARG_PART}-development)
    set(export om-${ARG_PART}Targets)
  endif()
  set_target_properties(${target} PROPERTIES
    EXPORT_NAME ${name}
    # One library finds the other wherever the two are.
    INSTALL_RPATH $ORIGIN)
  install(TARGETS ${target} EXPORT ${export}
    LIBRARY COMPONENT ${runtime} NAMELINK_COMPONENT ${development}
    ARCHIVE COMPONENT ${development}
    FILE_SET HEADERS DESTINATION ${OM_INCLUDEDIR} COMPONENT ${development}
    INCLUDES DESTINATION ${OM_INCLUDEDIR})
  if(ARG_PART)
    install(EXPORT ${export} NAMESPACE om:: DESTINATION ${OM_PACKAGEDIR} COMPONENT ${development})
  endif()

  get_target_property(PC_NAME ${target} OUTPUT_NAME)
  set(PC_DESCRIPTION ${description})
  list(JOIN ARG_REQUIRES " " PC_REQUIRES)
  file(RELATIVE_PATH PC_PREFIX "/prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/prefix")
  string(REGEX REPLACE "/$" "" PC_PREFIX ${PC_PREFIX})
  if(OM_HARDENING)
    set(PC_DEFINITIONS " -DOM_HARDENING=1")
  endif()
  configure_file(${PROJECT_SOURCE_DIR}/cmake/om.pc.in ${PC_NAME}.pc @ONLY)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${PC_NAME}.pc
          DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT ${development})
endfunction()

configure_package_config_file(cmake/omConfig.cmake.in omConfig.cmake INSTALL_DESTINATION ${OM_PACKAGEDIR})
write_basic_package_version_file(omConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/omConfig.cmake ${PROJECT_BINARY_DIR}/omConfigVersion.cmake
        DESTINATION ${OM_PACKAGEDIR} COMPONENT development)
install(EXPORT omTargets NAMESPACE om:: DESTINATION ${OM_PACKAGEDIR} COMPONENT development)
