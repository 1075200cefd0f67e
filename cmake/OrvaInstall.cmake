# SPDX-License-Identifier: Apache-2.0
# The components of what is installed: runtime (the device), library (what it and its workers link), development
# (writing workers), daemon (the connection daemon), world (has the daemon play a network instead) and web (the
# page that people see). debian/rules makes a package of each.

include(CMakePackageConfigHelpers)

set(ORVA_USER orva CACHE STRING "User that the host runs as")
set(ORVA_DBUS_DATADIR "${CMAKE_INSTALL_DATADIR}/dbus-1" CACHE STRING "Where the bus's files go")
set(ORVA_SYSTEMD_DIR "lib/systemd/system" CACHE STRING "Where systemd's units go")
set(ORVA_WORKER_DIR "${CMAKE_INSTALL_LIBDIR}/orva/workers")
set(ORVA_LUMOD "${CMAKE_INSTALL_FULL_SBINDIR}/lumod")
set(ORVA_WORLD "${CMAKE_INSTALL_FULL_DATADIR}/orva/world.json")
set(ORVA_HELPER_DIR "${CMAKE_INSTALL_FULL_LIBEXECDIR}/orva")
set(ORVA_MODULE "${CMAKE_INSTALL_FULL_LIBDIR}/orva/workers/libnetworking.so")
# The pkg-config file finds its prefix from where it stands, as the CMake package does.
file(RELATIVE_PATH ORVA_PC_TO_PREFIX
    "${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig" "${CMAKE_INSTALL_PREFIX}")

foreach(file IN ITEMS
        dbus/org.orva.Host1.conf dbus/org.orva.lumod.conf dbus/org.orva.lumod.service
        examples/host.json dist/orva-web.service dist/orva-web.sysusers examples/lumod.conf dist/lumod.service dist/lumod-world.conf dist/orva-host.service dist/orva-wait-online.service dist/orva.sysusers dist/orva.pc)
    configure_file("${file}.in" "${CMAKE_BINARY_DIR}/${file}" @ONLY)
endforeach()
configure_package_config_file(dist/OrvaConfig.cmake.in "${CMAKE_BINARY_DIR}/dist/OrvaConfig.cmake"
    INSTALL_DESTINATION "${CMAKE_INSTALL_LIBDIR}/cmake/Orva" PATH_VARS ORVA_WORKER_DIR)
write_basic_package_version_file("${CMAKE_BINARY_DIR}/dist/OrvaConfigVersion.cmake"
    COMPATIBILITY SameMinorVersion)

# orva_manual(PAGE SOURCE COMPONENT NAME SEE_ALSO): makes the manual page PAGE of what SOURCE tells, see manual.awk.
function(orva_manual page source component name see_also)
    string(REGEX REPLACE "^(.*)\\.([0-9])$" "\\1 \\2" title "${page}")
    string(TOUPPER "${title}" title)
    string(REPLACE ", ." ",\\n." see_also "${see_also}")
    set(made "${CMAKE_BINARY_DIR}/dist/${page}")
    add_custom_command(OUTPUT "${made}"
        COMMAND awk -v "title=${title}" -v "name=${name}" -v "more=${see_also}" -f "${CMAKE_SOURCE_DIR}/dist/manual.awk"
                "${source}" > "${made}"
        DEPENDS dist/manual.awk "${source}" VERBATIM)
    add_custom_target("manual-${page}" ALL DEPENDS "${made}")
    string(REGEX MATCH "[0-9]$" section "${page}")
    install(FILES "${made}" DESTINATION "${CMAKE_INSTALL_MANDIR}/man${section}" COMPONENT ${component})
endfunction()

# --- runtime
install(TARGETS orva-host RUNTIME DESTINATION "${CMAKE_INSTALL_SBINDIR}" COMPONENT runtime)
install(TARGETS orvactl RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT runtime)
install(TARGETS networking LIBRARY DESTINATION "${ORVA_WORKER_DIR}" COMPONENT runtime)
install(FILES "${CMAKE_BINARY_DIR}/dbus/org.orva.Host1.conf"
    DESTINATION "${ORVA_DBUS_DATADIR}/system.d" COMPONENT runtime)
install(FILES dbus/org.orva.Host1.xml
    DESTINATION "${ORVA_DBUS_DATADIR}/interfaces" COMPONENT runtime)
install(FILES "${CMAKE_BINARY_DIR}/dist/orva-host.service"
              "${CMAKE_BINARY_DIR}/dist/orva-wait-online.service"
    DESTINATION "${ORVA_SYSTEMD_DIR}" COMPONENT runtime)
install(FILES "${CMAKE_BINARY_DIR}/dist/orva.sysusers"
    DESTINATION lib/sysusers.d RENAME orva.conf COMPONENT runtime)
install(FILES "${CMAKE_BINARY_DIR}/examples/host.json"
    DESTINATION "${CMAKE_INSTALL_FULL_SYSCONFDIR}/orva" COMPONENT runtime)
install(FILES README.md CHANGELOG.md docs/nodes.md docs/operator.md docs/page.md DESTINATION "${CMAKE_INSTALL_DOCDIR}" COMPONENT runtime)
install(FILES examples/settings.json DESTINATION "${CMAKE_INSTALL_DOCDIR}/examples" COMPONENT runtime)
install(FILES "${CMAKE_BINARY_DIR}/src/ctl/orvactl.1" DESTINATION "${CMAKE_INSTALL_MANDIR}/man1" COMPONENT runtime)
install(FILES dist/orva-host.8 DESTINATION "${CMAKE_INSTALL_MANDIR}/man8" COMPONENT runtime)
orva_manual(orva-nodes.7 "${CMAKE_SOURCE_DIR}/docs/nodes.md" runtime
    "orva-nodes \\\\- the nodes of the network manager's host, and their records"
    ".BR orvactl (1), .BR orva-host (8), .BR host.json (5)")
orva_manual(host.json.5 "${CMAKE_BINARY_DIR}/examples/host.json" runtime
    "host.json \\\\- configuration of the network manager's host"
    ".BR orva-host (8), .BR orva-nodes (7), .BR lumod.conf (5)")
install(FILES "${CMAKE_BINARY_DIR}/src/ctl/orvactl"
    DESTINATION "${CMAKE_INSTALL_DATADIR}/bash-completion/completions" COMPONENT runtime)
install(FILES "${CMAKE_BINARY_DIR}/src/ctl/_orvactl"
    DESTINATION "${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions" COMPONENT runtime)
install(FILES "${CMAKE_BINARY_DIR}/src/ctl/orvactl.fish"
    DESTINATION "${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d" COMPONENT runtime)

# --- library
install(TARGETS orva_api orva_processhandler EXPORT OrvaTargets
    LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT library
    NAMELINK_COMPONENT development)

# --- development
install(DIRECTORY examples/worker DESTINATION "${CMAKE_INSTALL_DOCDIR}/examples" COMPONENT development)
install(DIRECTORY src/api/ DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/orva" COMPONENT development
    FILES_MATCHING PATTERN "*.h")
install(FILES src/processhandler/orvaprocesshandler.h
    DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/orva" COMPONENT development)
install(FILES src/testing/heldclock.h src/testing/logcapture.h src/testing/workerhost.h src/host/rootworker.h
    DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/orva/testing" COMPONENT development)
install(TARGETS orva_testing EXPORT OrvaTargets
    ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT development)
install(FILES docs/worker.md DESTINATION "${CMAKE_INSTALL_DOCDIR}" COMPONENT development)
install(EXPORT OrvaTargets NAMESPACE Orva::
    DESTINATION "${CMAKE_INSTALL_LIBDIR}/cmake/Orva" COMPONENT development)
install(FILES "${CMAKE_BINARY_DIR}/dist/OrvaConfig.cmake"
              "${CMAKE_BINARY_DIR}/dist/OrvaConfigVersion.cmake"
    DESTINATION "${CMAKE_INSTALL_LIBDIR}/cmake/Orva" COMPONENT development)
install(FILES "${CMAKE_BINARY_DIR}/dist/orva.pc"
    DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig" COMPONENT development)

# --- daemon
install(TARGETS lumod RUNTIME DESTINATION "${CMAKE_INSTALL_SBINDIR}" COMPONENT daemon)
install(TARGETS dhcp-event lumod-keep RUNTIME DESTINATION "${ORVA_HELPER_DIR}" COMPONENT daemon)
install(FILES "${CMAKE_BINARY_DIR}/examples/lumod.conf"
    DESTINATION "${CMAKE_INSTALL_FULL_SYSCONFDIR}/orva" COMPONENT daemon)
install(FILES "${CMAKE_BINARY_DIR}/dbus/org.orva.lumod.conf"
    DESTINATION "${ORVA_DBUS_DATADIR}/system.d" COMPONENT daemon)
install(FILES "${CMAKE_BINARY_DIR}/dbus/org.orva.lumod.service"
    DESTINATION "${ORVA_DBUS_DATADIR}/system-services" COMPONENT daemon)
install(FILES "${CMAKE_BINARY_DIR}/dist/lumod.service"
    DESTINATION "${ORVA_SYSTEMD_DIR}" COMPONENT daemon)
install(FILES dist/lumod.8 DESTINATION "${CMAKE_INSTALL_MANDIR}/man8" COMPONENT daemon)
orva_manual(lumod.conf.5 "${CMAKE_BINARY_DIR}/examples/lumod.conf" daemon
    "lumod.conf \\\\- how lumod drives the interfaces of a machine"
    ".BR lumod (8), .BR host.json (5)")

# --- web
install(TARGETS orva-web RUNTIME DESTINATION "${CMAKE_INSTALL_SBINDIR}" COMPONENT web)
install(FILES "${CMAKE_BINARY_DIR}/dist/orva-web.service" DESTINATION "${ORVA_SYSTEMD_DIR}" COMPONENT web)
install(FILES "${CMAKE_BINARY_DIR}/dist/orva-web.sysusers"
    DESTINATION lib/sysusers.d RENAME orva-web.conf COMPONENT web)
install(FILES dist/orva-web.8 DESTINATION "${CMAKE_INSTALL_MANDIR}/man8" COMPONENT web)
# It may hold an access code.
install(FILES examples/web.json DESTINATION "${CMAKE_INSTALL_FULL_SYSCONFDIR}/orva"
    PERMISSIONS OWNER_READ OWNER_WRITE COMPONENT web)

# --- world
install(FILES examples/world.json DESTINATION "${CMAKE_INSTALL_DATADIR}/orva" COMPONENT world)
install(FILES "${CMAKE_BINARY_DIR}/dist/lumod-world.conf"
    DESTINATION "${ORVA_SYSTEMD_DIR}/lumod.service.d" RENAME world.conf COMPONENT world)
