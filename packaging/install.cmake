# What is installed, and where. Components: the programs with all that is to be read, the library, what it takes to
# build with it, and the Python module.

include(CMakePackageConfigHelpers)

# compressed(FROM TO): a copy in the build's folder, the same for the same content.
find_program(GZIP gzip REQUIRED)
function(compressed from to)
    add_custom_command(OUTPUT ${to} COMMAND ${GZIP} -9nc ${from} > ${to} DEPENDS ${from} VERBATIM)
    add_custom_target(make_${to} ALL DEPENDS ${to})
endfunction()

install(TARGETS progressd progressctl COMPONENT programs)
# manual_page(SOURCE): installs progressd.1 and the like, compressed.
function(manual_page source)
    get_filename_component(page ${source} NAME)
    string(REGEX REPLACE ".*\\." "" section ${page})
    compressed(${source} ${page}.gz)
    install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${page}.gz
            DESTINATION ${CMAKE_INSTALL_MANDIR}/man${section} COMPONENT programs)
endfunction()
manual_page(${CMAKE_CURRENT_SOURCE_DIR}/docs/man/progressd.1)
manual_page(${CMAKE_CURRENT_SOURCE_DIR}/docs/man/progressctl.1)
find_program(LOWDOWN lowdown)
if(LOWDOWN)
    set(protocol_page ${CMAKE_CURRENT_BINARY_DIR}/progressd-protocol.7)
    set(make_page ${CMAKE_CURRENT_SOURCE_DIR}/docs/man/protocol-page.sh ${CMAKE_CURRENT_SOURCE_DIR}/docs/protocol.md)
    add_custom_command(OUTPUT ${protocol_page} COMMAND ${make_page} > ${protocol_page} DEPENDS ${make_page} VERBATIM)
    manual_page(${protocol_page})
else()
    message(STATUS "lowdown is missing: the manual page progressd-protocol(7) is left out")
endif()
install(FILES client/completions/progressctl.bash RENAME progressctl
        DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT programs)
install(FILES client/completions/_progressctl
        DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions COMPONENT programs)
install(FILES client/completions/progressctl.fish
        DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d COMPONENT programs)
install(DIRECTORY examples
        DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT programs USE_SOURCE_PERMISSIONS)
# The pages, and the pictures that they show.
install(DIRECTORY docs/
        DESTINATION ${CMAKE_INSTALL_DOCDIR}/docs COMPONENT programs PATTERN man EXCLUDE)
install(FILES README.md DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT programs)
compressed(${CMAKE_CURRENT_SOURCE_DIR}/CHANGELOG.md changelog.gz)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/changelog.gz DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT programs)

install(TARGETS progressClient EXPORT progressClient
        LIBRARY COMPONENT library NAMELINK_COMPONENT development)
install(FILES client/progressClient.h
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/progressclient COMPONENT development)

# find_package(progressClient) gives the target progress::progressClient.
set(config_folder ${CMAKE_INSTALL_LIBDIR}/cmake/progressClient)
install(EXPORT progressClient NAMESPACE progress:: FILE progressClientConfig.cmake
        DESTINATION ${config_folder} COMPONENT development)
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/progressClientConfigVersion.cmake
        COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/progressClientConfigVersion.cmake
        DESTINATION ${config_folder} COMPONENT development)
# Relative, so that a tree that was unpacked or moved elsewhere can be built with.
file(RELATIVE_PATH PREFIX_FROM_PC ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
configure_file(packaging/progressclient.pc.in progressclient.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/progressclient.pc
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)

# Where Debian's Python looks, for all its versions.
install(DIRECTORY python/progressclient
        DESTINATION lib/python3/dist-packages COMPONENT python PATTERN __pycache__ EXCLUDE)
