# What is installed, and where; debian/ sorts it into packages.

include(CMakePackageConfigHelpers)
set(built ${CMAKE_CURRENT_BINARY_DIR})

install(TARGETS progressd progressctl)
# progressctl acts as these under their names. Outside of PATH: who wants that puts this folder in front.
file(MAKE_DIRECTORY ${built}/names)
foreach(name zenity yad dialog whiptail)
    file(CREATE_LINK ../../bin/progressctl ${built}/names/${name} SYMBOLIC)
    install(FILES ${built}/names/${name} DESTINATION lib/progressd)
endforeach()

# made(FILE COMMAND SOURCE OPTION...): a file of the build's folder that the command writes to its output.
function(made file command source)
    add_custom_command(OUTPUT ${file} COMMAND ${command} ${source} ${ARGN} > ${file}
                       DEPENDS ${command} ${source} VERBATIM)
    add_custom_target(make_${file} ALL DEPENDS ${file})
endfunction()

install(FILES docs/man/progressd.1 docs/man/progressctl.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
find_program(LOWDOWN lowdown)
if(LOWDOWN)
    made(progressd-protocol.7
         ${CMAKE_CURRENT_SOURCE_DIR}/docs/man/protocol-page.sh ${CMAKE_CURRENT_SOURCE_DIR}/docs/protocol.md)
    install(FILES ${built}/progressd-protocol.7 DESTINATION ${CMAKE_INSTALL_MANDIR}/man7)
else()
    message(STATUS "lowdown is missing: the manual page progressd-protocol(7) is left out")
endif()
foreach(file progressctl.bash progressctl.fish _progressctl)
    made(${file} printWords ${CMAKE_CURRENT_SOURCE_DIR}/progressctl/completions/${file})
endforeach()
install(FILES ${built}/progressctl.bash RENAME progressctl
        DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
install(FILES ${built}/_progressctl DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions)
install(FILES ${built}/progressctl.fish DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d)

# The desktop knows the windows by the first, and software centres the packages by the second.
install(FILES packaging/progressd.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
install(FILES packaging/org.progressd.progressd.metainfo.xml DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo)
set(icon ${CMAKE_CURRENT_SOURCE_DIR}/packaging/progressd.svg)
set(icons ${CMAKE_INSTALL_DATADIR}/icons/hicolor)
install(FILES ${icon} DESTINATION ${icons}/scalable/apps)
find_program(RSVG_CONVERT rsvg-convert)
if(RSVG_CONVERT)
    foreach(size 16 24 32 48 64 128)
        made(progressd-${size}.png ${RSVG_CONVERT} ${icon} -w ${size} -h ${size})
        install(FILES ${built}/progressd-${size}.png RENAME progressd.png
                DESTINATION ${icons}/${size}x${size}/apps)
    endforeach()
else()
    message(STATUS "rsvg-convert is missing: the icon is left to desktops that draw SVG")
endif()

# The pages, and the pictures that they show, where they stand to each other as here.
install(FILES README.md CONTRIBUTING.md DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(FILES CHANGELOG.md DESTINATION ${CMAKE_INSTALL_DOCDIR}/docs)
install(DIRECTORY docs DESTINATION ${CMAKE_INSTALL_DOCDIR} PATTERN man EXCLUDE)
install(FILES python/README.md DESTINATION ${CMAKE_INSTALL_DOCDIR}/python)
install(DIRECTORY bench DESTINATION ${CMAKE_INSTALL_DOCDIR} FILES_MATCHING PATTERN "*.md")
install(DIRECTORY examples DESTINATION ${CMAKE_INSTALL_DOCDIR} PATTERN "*.sh"
        PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

install(TARGETS progressClient EXPORT progressclient)
# The header and find_package() used to be spelled progressClient, and are found by that as well.
set(header_folder ${CMAKE_INSTALL_INCLUDEDIR}/progressclient)
install(FILES client/progressClient.h RENAME progressclient.h DESTINATION ${header_folder})
install(FILES client/progressCommands.h client/progressError.h DESTINATION ${header_folder})
file(CREATE_LINK progressclient.h ${built}/progressClient.h SYMBOLIC)
install(FILES ${built}/progressClient.h DESTINATION ${header_folder})

# find_package(progressclient) gives the target progressclient::progressclient. A configuration of this name is found
# by any spelling.
set(config_folder ${CMAKE_INSTALL_LIBDIR}/cmake/progressclient)
install(EXPORT progressclient NAMESPACE progressclient:: FILE progressclient-targets.cmake DESTINATION ${config_folder})
file(WRITE ${built}/progressclient-config.cmake [[
include(${CMAKE_CURRENT_LIST_DIR}/progressclient-targets.cmake)
if(NOT TARGET progress::progressClient)
    add_library(progress::progressClient ALIAS progressclient::progressclient)
endif()
]])
write_basic_package_version_file(${built}/progressclient-config-version.cmake
        COMPATIBILITY SameMajorVersion)
install(FILES ${built}/progressclient-config.cmake
        ${built}/progressclient-config-version.cmake DESTINATION ${config_folder})
# Relative, so that a tree that was unpacked or moved elsewhere can be built with.
file(RELATIVE_PATH PREFIX_FROM_PC ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
configure_file(packaging/progressclient.pc.in progressclient.pc @ONLY)
install(FILES ${built}/progressclient.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

# Where Debian's Python looks, for all its versions.
install(DIRECTORY python/progressclient DESTINATION lib/python3/dist-packages PATTERN __pycache__ EXCLUDE)
