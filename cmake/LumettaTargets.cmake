# Every subsystem is a static library made of the sources in its folder (public headers
# at the root, private ones under internal/). Sources are globbed so that adding a file
# needs no edit here; CONFIGURE_DEPENDS re-globs on every build. EXCLUDE_DIRS names
# subfolders that are libraries of their own.
function(lumetta_library name)
  cmake_parse_arguments(ARG "" "" "DEPS;SYSTEM_DEPS;EXCLUDE_DIRS" ${ARGN})
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS
       ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp ${CMAKE_CURRENT_SOURCE_DIR}/*.h)
  list(FILTER sources INCLUDE REGEX "\\.cpp$|\\.h$")
  foreach(dir IN LISTS ARG_EXCLUDE_DIRS)
    list(FILTER sources EXCLUDE REGEX "^${CMAKE_CURRENT_SOURCE_DIR}/${dir}/")
  endforeach()
  set(cpp ${sources})
  list(FILTER cpp INCLUDE REGEX "\\.cpp$")
  if(NOT cpp)
    # A subsystem whose sources are still to come: headers only.
    add_library(${name} INTERFACE)
    target_include_directories(${name} INTERFACE ${PROJECT_SOURCE_DIR}/src)
    target_link_libraries(${name} INTERFACE ${ARG_DEPS})
  else()
    add_library(${name} STATIC ${sources})
    target_include_directories(${name} PUBLIC ${PROJECT_SOURCE_DIR}/src)
    target_link_libraries(${name} PUBLIC ${ARG_DEPS} PRIVATE ${ARG_SYSTEM_DEPS})
  endif()
  add_library(lumetta::${name} ALIAS ${name})
endfunction()

# One GoogleTest program per test folder: every *.cpp under it, plus EXTRA_SOURCES. Tests
# are listed to CTest when they run (PRE_TEST), so building does not run the programs.
# EMULATOR runs the program (for listing and for each test) through a wrapper, such as
# the one that enters a private network namespace. EXCLUDE_DIRS: subfolders with test
# programs of their own.
function(lumetta_test name)
  cmake_parse_arguments(ARG "" "TIMEOUT;EMULATOR" "DEPS;LABELS;EXTRA_SOURCES;EXCLUDE_DIRS" ${ARGN})
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp)
  foreach(dir IN LISTS ARG_EXCLUDE_DIRS)
    list(FILTER sources EXCLUDE REGEX "^${CMAKE_CURRENT_SOURCE_DIR}/${dir}/")
  endforeach()
  if(NOT sources)
    return()
  endif()
  add_executable(${name} ${sources} ${ARG_EXTRA_SOURCES})
  target_link_libraries(${name} PRIVATE ${ARG_DEPS} GTest::gtest GTest::gmock GTest::gtest_main)
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests)
  if(ARG_EMULATOR)
    # Discovery reads this property when gtest_discover_tests is called.
    set_target_properties(${name} PROPERTIES CROSSCOMPILING_EMULATOR ${ARG_EMULATOR})
  endif()
  if(NOT ARG_TIMEOUT)
    set(ARG_TIMEOUT 120)
  endif()
  gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST
                       PROPERTIES TIMEOUT ${ARG_TIMEOUT} LABELS "${ARG_LABELS}")
endfunction()
