# What `cmake --install` puts where, and the Debian package CPack makes of it:
#
#   lib/lumetta-updater/             the updater with Resources/CommonDialogs (and Styles/
#                                    when the source has one), where it looks for them
#   bin/lumetta-updater              a link to it
#   bin/lumetta-diag
#   include/lumetta/product.h
#   lib/cmake/LumettaUpdater/        find_package(LumettaUpdater): Lumetta::product and
#                                    lumetta_add_version_resource()
#   share/man/man1/                  a manual page for each program
#
# The install does not build first (the package test packs what the tests already built,
# without a build running beside them): build, then install or pack.
include(CMakePackageConfigHelpers)

set(LUMETTA_UPDATER_DIR lib/lumetta-updater)
set(LUMETTA_CMAKE_DIR lib/cmake/LumettaUpdater)

# The product-side header as a target, for products in this tree and through the package.
add_library(lumetta_product INTERFACE)
target_include_directories(lumetta_product INTERFACE
  $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include> $<INSTALL_INTERFACE:include>)
target_link_libraries(lumetta_product INTERFACE Threads::Threads)
set_target_properties(lumetta_product PROPERTIES EXPORT_NAME product)
add_library(Lumetta::product ALIAS lumetta_product)

# A build made for the demo and the tests also has an updater without the demo aids: that
# one is installed.
if(TARGET lumetta-updater-plain)
  set(installed_updater lumetta-updater-plain)
else()
  set(installed_updater lumetta-updater)
endif()
install(TARGETS ${installed_updater} RUNTIME DESTINATION ${LUMETTA_UPDATER_DIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/src/resources/CommonDialogs
        DESTINATION ${LUMETTA_UPDATER_DIR}/Resources)
if(EXISTS ${PROJECT_SOURCE_DIR}/src/resources/Styles)
  install(DIRECTORY ${PROJECT_SOURCE_DIR}/src/resources/Styles DESTINATION ${LUMETTA_UPDATER_DIR})
endif()
# The link resolves to the real program, which finds its resources beside itself. It is
# made here and installed as a link.
file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/install-links)
file(CREATE_LINK ../${LUMETTA_UPDATER_DIR}/lumetta-updater
     ${PROJECT_BINARY_DIR}/install-links/lumetta-updater SYMBOLIC)
install(FILES ${PROJECT_BINARY_DIR}/install-links/lumetta-updater DESTINATION bin)
install(TARGETS lumetta-diag RUNTIME DESTINATION bin)
install(FILES ${PROJECT_SOURCE_DIR}/include/lumetta/product.h DESTINATION include/lumetta)

# Manual pages, compressed as Debian ships them.
foreach(page lumetta-updater.1 lumetta-diag.1)
  set(source ${PROJECT_SOURCE_DIR}/doc/man/${page})
  set(packed ${PROJECT_BINARY_DIR}/doc/man/${page}.gz)
  add_custom_command(OUTPUT ${packed}
    COMMAND ${CMAKE_COMMAND} -E make_directory ${PROJECT_BINARY_DIR}/doc/man
    COMMAND gzip -9n -c ${source} > ${packed}
    DEPENDS ${source}
    COMMENT "Compressing the manual page ${page}")
  list(APPEND man_pages ${packed})
endforeach()
add_custom_target(lumetta-man-pages ALL DEPENDS ${man_pages})
install(FILES ${man_pages} DESTINATION share/man/man1)
# The systemd user units of the daily update check: one for the installed program, and one
# for the program in this build, which the tests verify.
set(systemd_units ${PROJECT_SOURCE_DIR}/src/resources/systemd)
set(LUMETTA_UPDATER_PATH ${CMAKE_INSTALL_PREFIX}/bin/lumetta-updater)
configure_file(${systemd_units}/lumetta-update-check@.service.in
               ${PROJECT_BINARY_DIR}/systemd/lumetta-update-check@.service @ONLY)
file(READ ${systemd_units}/lumetta-update-check@.service.in service_text)
string(REPLACE "@LUMETTA_UPDATER_PATH@" "$<TARGET_FILE:lumetta-updater>" service_text
       "${service_text}")
file(GENERATE OUTPUT ${PROJECT_BINARY_DIR}/systemd-build/lumetta-update-check@.service
     CONTENT "${service_text}")
configure_file(${systemd_units}/lumetta-update-check@.timer
               ${PROJECT_BINARY_DIR}/systemd-build/lumetta-update-check@.timer COPYONLY)
install(FILES ${PROJECT_BINARY_DIR}/systemd/lumetta-update-check@.service
              ${systemd_units}/lumetta-update-check@.timer
        DESTINATION lib/systemd/user)
# The update feed's format, for product makers who write feeds.
install(FILES ${PROJECT_SOURCE_DIR}/doc/update-feed.md DESTINATION share/doc/lumetta-updater)

# The CMake package.
install(TARGETS lumetta_product EXPORT LumettaUpdaterTargets)
install(EXPORT LumettaUpdaterTargets NAMESPACE Lumetta:: DESTINATION ${LUMETTA_CMAKE_DIR})
set(LUMETTA_DIAG_PATH bin/lumetta-diag)
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/LumettaUpdaterConfig.cmake.in
  ${PROJECT_BINARY_DIR}/LumettaUpdaterConfig.cmake
  INSTALL_DESTINATION ${LUMETTA_CMAKE_DIR}
  PATH_VARS LUMETTA_DIAG_PATH LUMETTA_UPDATER_DIR)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/LumettaUpdaterConfigVersion.cmake
  COMPATIBILITY SameMajorVersion ARCH_INDEPENDENT)
install(FILES ${PROJECT_BINARY_DIR}/LumettaUpdaterConfig.cmake
              ${PROJECT_BINARY_DIR}/LumettaUpdaterConfigVersion.cmake
        DESTINATION ${LUMETTA_CMAKE_DIR})

# The Debian package (scripts/package). Its dependencies are those of the shared libraries
# the programs use, as dpkg-shlibdeps finds them, and binutils, whose objcopy stamps
# version resources.
set(LUMETTA_PACKAGE_MAINTAINER "Lumetta Updater developers <updater@lumetta.example>"
    CACHE STRING "Maintainer field of the Debian package")
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME lumetta-updater)
set(CPACK_PACKAGE_VENDOR "Lumetta")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "${LUMETTA_PACKAGE_MAINTAINER}")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "update installer for one desktop product")
set(CPACK_PACKAGE_DESCRIPTION
"Lumetta Updater downloads a product's setup program over HTTP, runs it silently
and shows progress and outcome in one small dialog. It asks a running copy of
the product to exit first and offers to launch the new version afterwards.
The package also holds lumetta-diag, which shows what the updater sees and stamps
version resources into executables, the C header with which a product waits on
its exit event, and a CMake package for building products against it.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES TRUE)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "${LUMETTA_PACKAGE_MAINTAINER}")
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS binutils)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
include(CPack)
