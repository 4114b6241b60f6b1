# Release, unless the user or a preset names another type: without one the compiler makes a slow
# plug-in.
if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
  message(STATUS "No build type was given: Release (CMAKE_BUILD_TYPE asks for another)")
  set(CMAKE_BUILD_TYPE Release CACHE STRING "Release, Debug or RelWithDebInfo" FORCE)
endif()
