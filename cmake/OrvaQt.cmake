# SPDX-License-Identifier: Apache-2.0
# The Qt to build with. One process has one Qt, so what a worker is built against says which it is.

set(ORVA_QT 5 CACHE STRING "Major version of Qt: 5 or 6")
set_property(CACHE ORVA_QT PROPERTY STRINGS 5 6)
if(ORVA_QT STREQUAL "5")
    set(ORVA_QT_VERSION 5.15)
elseif(ORVA_QT STREQUAL "6")
    set(ORVA_QT_VERSION 6.4)
else()
    message(FATAL_ERROR "ORVA_QT is ${ORVA_QT}; it can be 5 or 6")
endif()
find_package(Qt${ORVA_QT} ${ORVA_QT_VERSION} REQUIRED COMPONENTS Core Network DBus)
