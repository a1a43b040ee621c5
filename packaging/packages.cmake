# The Debian packages: progressd, libprogressclient2, libprogressclient-dev, python3-progressclient.
# `cmake --build … --target package`.

set(library_package libprogressclient${PROJECT_VERSION_MAJOR})

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_CONTACT "The progressd authors <progressd@progressd.invalid>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL programs library development python)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS OFF)
# Files as a package has them, whatever the umask of the build.
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(CPACK_DEBIAN_PROGRAMS_PACKAGE_NAME progressd)
set(CPACK_DEBIAN_PROGRAMS_PACKAGE_SECTION x11)
set(CPACK_DEBIAN_PROGRAMS_DESCRIPTION "progress windows for programs and scripts
 A small daemon that draws progress bars, texts, buttons, a busy window and
 questions on behalf of other processes, and learns how long recurring runs
 take. Comes with progressctl, which drives it from the shell and can take the
 place of zenity --progress.")

set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME ${library_package})
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_RECOMMENDS progressd)
file(WRITE ${CMAKE_CURRENT_BINARY_DIR}/shlibs
    "libprogressclient ${PROJECT_VERSION_MAJOR} ${library_package} (>= ${PROJECT_VERSION})\n")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA
    ${CMAKE_CURRENT_SOURCE_DIR}/packaging/triggers ${CMAKE_CURRENT_BINARY_DIR}/shlibs)
set(CPACK_DEBIAN_LIBRARY_DESCRIPTION "client library of the progress daemon
 Starts the daemon progressd, shows bars, texts and buttons through it, asks
 questions and hears what the user does. Needs sockets and nothing else.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libprogressclient-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${library_package} (= ${PROJECT_VERSION}-1)")
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION "client library of the progress daemon - development files
 The header of the client library of progressd, and what CMake and pkg-config
 need to find it.")

set(CPACK_DEBIAN_PYTHON_PACKAGE_NAME python3-progressclient)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SECTION python)
set(CPACK_DEBIAN_PYTHON_PACKAGE_ARCHITECTURE all)
set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS "python3 (>= 3.9)")
set(CPACK_DEBIAN_PYTHON_PACKAGE_RECOMMENDS progressd)
set(CPACK_DEBIAN_PYTHON_DESCRIPTION "progress windows for Python loops and programs
 A module that shows through the daemon progressd how far a loop or a program
 is, with bars, texts, buttons and questions. Needs nothing but the standard
 library; without a display or a daemon the work goes on all the same.")

# Debian wants a changelog and a copyright file in each package's own folder.
file(READ ${CMAKE_CURRENT_SOURCE_DIR}/LICENSE license)
string(REGEX MATCH "Copyright \\(c\\) ([^\n]*)" COPYRIGHT_FIELD "${license}")
set(COPYRIGHT_FIELD ${CMAKE_MATCH_1})
string(STRIP "${license}" LICENSE_FIELD)
string(REPLACE "\n\n" "\n.\n" LICENSE_FIELD "${LICENSE_FIELD}")
string(REPLACE "\n" "\n " LICENSE_FIELD " ${LICENSE_FIELD}")
configure_file(packaging/copyright.in copyright @ONLY)
configure_file(packaging/changelog.in changelog @ONLY)
compressed(${CMAKE_CURRENT_BINARY_DIR}/changelog changelog.Debian.gz)
foreach(component ${CPACK_COMPONENTS_ALL})
    string(TOUPPER ${component} upper)
    install(FILES ${CMAKE_CURRENT_BINARY_DIR}/copyright ${CMAKE_CURRENT_BINARY_DIR}/changelog.Debian.gz
            DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${CPACK_DEBIAN_${upper}_PACKAGE_NAME}
            COMPONENT ${component})
endforeach()

include(CPack)
