# SPDX-License-Identifier: Apache-2.0
# Debian packages, one a component, as ./package makes them: `cpack -G DEB` in a build directory configured
# for the prefix /usr.

set(CPACK_PACKAGE_NAME orva-networking)
set(CPACK_PACKAGE_CONTACT "orva-networking maintainers <maintainers@localhost>")
# Workers of other packages are built for one Qt: they depend on orva-api-qt5 or orva-api-qt6.
set(CPACK_PACKAGE_VERSION "${PROJECT_VERSION}+qt${ORVA_QT}")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL runtime development daemon world web)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION net)
if(CMAKE_CROSSCOMPILING AND CMAKE_SYSTEM_PROCESSOR STREQUAL "aarch64")
    set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE arm64)
endif()
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${CMAKE_BINARY_DIR}/lib")

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME orva-networking)
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION "network manager of an audio-streaming device, with its host")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_DEPENDS "dbus, systemd, rfkill, iputils-ping")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_RECOMMENDS "orva-lumod")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_PROVIDES "orva-api-qt${ORVA_QT}")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA
    "${PROJECT_SOURCE_DIR}/dist/postinst;${PROJECT_SOURCE_DIR}/dist/prerm;${PROJECT_SOURCE_DIR}/dist/postrm"
    # The administrator's edits outlive an upgrade.
    "${PROJECT_SOURCE_DIR}/dist/conffiles")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME orva-networking-dev)
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION "headers for workers of the audio-streaming device's host")
set(ORVA_QT_PACKAGE_5 qtbase5-dev)
set(ORVA_QT_PACKAGE_6 qt6-base-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS
    "orva-networking (= ${CPACK_PACKAGE_VERSION}), pkg-config, ${ORVA_QT_PACKAGE_${ORVA_QT}}, liblog4cplus-dev")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SHLIBDEPS OFF)

set(CPACK_DEBIAN_DAEMON_PACKAGE_NAME orva-lumod)
set(CPACK_DEBIAN_DAEMON_DESCRIPTION "connection daemon that drives the interfaces of the audio-streaming device")
set(CPACK_DEBIAN_DAEMON_PACKAGE_DEPENDS "dbus, dhcpcd-base")
# A device without a radio has no need of these.
set(CPACK_DEBIAN_DAEMON_PACKAGE_SUGGESTS "wpasupplicant, wireless-regdb")
set(CPACK_DEBIAN_DAEMON_PACKAGE_CONTROL_EXTRA "${PROJECT_SOURCE_DIR}/dist/daemon/conffiles")

set(CPACK_DEBIAN_WORLD_PACKAGE_NAME orva-world)
set(CPACK_DEBIAN_WORLD_DESCRIPTION "has the connection daemon play a network instead of driving one")
set(CPACK_DEBIAN_WORLD_PACKAGE_DEPENDS "orva-lumod (= ${CPACK_PACKAGE_VERSION})")
# The world was part of the daemon's package.
set(CPACK_DEBIAN_WORLD_PACKAGE_REPLACES "orva-lumod (<< 0.2.0)")
set(CPACK_DEBIAN_WORLD_PACKAGE_BREAKS "orva-lumod (<< 0.2.0)")
set(CPACK_DEBIAN_WORLD_PACKAGE_SHLIBDEPS OFF)

set(CPACK_DEBIAN_WEB_PACKAGE_NAME orva-web)
set(CPACK_DEBIAN_WEB_DESCRIPTION "page by which people set the audio-streaming device up")
set(CPACK_DEBIAN_WEB_PACKAGE_DEPENDS "orva-networking (= ${CPACK_PACKAGE_VERSION})")
set(CPACK_DEBIAN_WEB_PACKAGE_CONTROL_EXTRA
    "${PROJECT_SOURCE_DIR}/dist/web/postinst;${PROJECT_SOURCE_DIR}/dist/web/prerm;${PROJECT_SOURCE_DIR}/dist/web/conffiles")

set(CPACK_PROJECT_CONFIG_FILE "${PROJECT_SOURCE_DIR}/cmake/OrvaPackageTools.cmake")
include(CPack)
