# SPDX-License-Identifier: Apache-2.0
# Run by cpack before it packs. It passes over a tool that it cannot find, and the package then lacks what the
# tool would have told: without dpkg-shlibdeps it depends on no library.
if(CPACK_GENERATOR STREQUAL "DEB")
    find_program(ORVA_FILE file)
    find_program(ORVA_SHLIBDEPS dpkg-shlibdeps)
    if(NOT ORVA_FILE OR NOT ORVA_SHLIBDEPS)
        message(FATAL_ERROR "A package wants Debian's packages file and dpkg-dev to be made; ./package installs them.")
    endif()
endif()
