# The program of the whole workloads. scripts/workloads also brings this file into older states of the
# project (CMAKE_PROJECT_om_INCLUDE), so it needs nothing that the project has not had for long.
include(${PROJECT_SOURCE_DIR}/cmake/OmTarget.cmake)
add_executable(om_workloads ${CMAKE_CURRENT_LIST_DIR}/Workloads.cpp)
om_target(om_workloads)
target_link_libraries(om_workloads PRIVATE om::om)
