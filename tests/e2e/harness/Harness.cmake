# Test programs that need HTTP servers on loopback port 80: every *.cpp of the calling
# folder plus the shared harness, run (for discovery and for each test) inside a private
# network namespace through netns-run.
find_program(LUMETTA_NGINX_PROGRAM nginx PATHS /usr/sbin /usr/local/sbin REQUIRED)
find_package(Python3 COMPONENTS Interpreter REQUIRED)
set(LUMETTA_HARNESS_DIR ${CMAKE_CURRENT_LIST_DIR})

if(NOT TARGET demo-product)
  add_subdirectory(${PROJECT_SOURCE_DIR}/tests/fixtures/demo-product
                   ${PROJECT_BINARY_DIR}/tests/fixtures/demo-product)
  add_subdirectory(${PROJECT_SOURCE_DIR}/tests/fixtures/demo-setup
                   ${PROJECT_BINARY_DIR}/tests/fixtures/demo-setup)
endif()

function(lumetta_network_test name)
  cmake_parse_arguments(ARG "" "TIMEOUT" "DEPS;LABELS" ${ARGN})
  if(NOT ARG_TIMEOUT)
    set(ARG_TIMEOUT 120)
  endif()
  lumetta_test(${name} DEPS ${ARG_DEPS} foundation platform LABELS ${ARG_LABELS}
               TIMEOUT ${ARG_TIMEOUT} EXTRA_SOURCES ${LUMETTA_HARNESS_DIR}/TestHarness.cpp
               EMULATOR ${LUMETTA_HARNESS_DIR}/netns-run)
  if(NOT TARGET ${name})
    return()
  endif()
  target_include_directories(${name} PRIVATE ${LUMETTA_HARNESS_DIR})
  target_compile_definitions(${name} PRIVATE
    LUMETTA_NGINX="${LUMETTA_NGINX_PROGRAM}"
    LUMETTA_PYTHON="${Python3_EXECUTABLE}"
    LUMETTA_FAULT_SERVER="${LUMETTA_HARNESS_DIR}/fault_server.py"
    LUMETTA_DEMO_PRODUCT="$<TARGET_FILE:demo-product>"
    LUMETTA_DEMO_SETUP="$<TARGET_FILE:demo-setup>")
  add_dependencies(${name} demo-product demo-setup)
endfunction()
