# Installation (cmake --install), CMake package and pkg-config file for consumers, Debian packages (cpack -G DEB).
include(CMakePackageConfigHelpers)

# Created folders are writable for their owner only, whatever the umask.
set(CMAKE_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE
    WORLD_READ WORLD_EXECUTE)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS ${CMAKE_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS})

install(TARGETS DVUtilities EXPORT DVUtilitiesTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT library NAMELINK_COMPONENT development)
install(TARGETS VtLib VoUtils VtSimpleDB EXPORT DVUtilitiesTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT library NAMELINK_SKIP)
install(TARGETS tscript tsqlbox RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)
install(FILES docs/man/tscript.1 docs/man/tsqlbox.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tools)
# Another package may own the name sqlcmd. The tool has a place of its own; the name is a link: made by
# `cmake --install`, and an alternative (update-alternatives) in the Debian package.
set(dvu_sqlcmd ${CMAKE_INSTALL_LIBEXECDIR}/dvutilities)
install(TARGETS sqlcmd RUNTIME DESTINATION ${dvu_sqlcmd} COMPONENT tools)
install(FILES docs/man/sqlcmd.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 RENAME dvutilities-sqlcmd.1 COMPONENT tools)
file(MAKE_DIRECTORY "${CMAKE_BINARY_DIR}/names")
file(CREATE_LINK "../${dvu_sqlcmd}/sqlcmd" "${CMAKE_BINARY_DIR}/names/sqlcmd" SYMBOLIC)
file(CREATE_LINK "dvutilities-sqlcmd.1" "${CMAKE_BINARY_DIR}/names/sqlcmd.1" SYMBOLIC)
install(FILES "${CMAKE_BINARY_DIR}/names/sqlcmd" DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT names)
install(FILES "${CMAKE_BINARY_DIR}/names/sqlcmd.1" DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT names)
set(dvu_completion tools/tscript/completion)
install(FILES ${dvu_completion}/tscript.bash DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions
  COMPONENT tools RENAME tscript)
install(FILES ${dvu_completion}/_tscript DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions COMPONENT tools)
install(FILES ${dvu_completion}/tscript.fish DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d
  COMPONENT tools)
install(DIRECTORY include/DVUtilities DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development
  FILES_MATCHING PATTERN "*.h")
install(FILES LICENSE CHANGELOG.md DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT library)
install(FILES README.md CONTRIBUTING.md DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT tools)
install(DIRECTORY docs DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT tools
  FILES_MATCHING PATTERN "*.md" PATTERN "*.png" PATTERN "*.svg" PATTERN man EXCLUDE)

set(dvu_config_dir ${CMAKE_INSTALL_LIBDIR}/cmake/DVUtilities)
install(EXPORT DVUtilitiesTargets NAMESPACE DVUtilities:: DESTINATION ${dvu_config_dir} COMPONENT development)
configure_package_config_file(cmake/DVUtilitiesConfig.cmake.in "${CMAKE_BINARY_DIR}/DVUtilitiesConfig.cmake"
  INSTALL_DESTINATION ${dvu_config_dir})
write_basic_package_version_file("${CMAKE_BINARY_DIR}/DVUtilitiesConfigVersion.cmake"
  COMPATIBILITY SameMajorVersion)
file(RELATIVE_PATH DVU_PREFIX_FROM_PC  # the library folder may have two levels: lib/x86_64-linux-gnu
  "${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig" "${CMAKE_INSTALL_PREFIX}")
configure_file(cmake/DVUtilities.pc.in "${CMAKE_BINARY_DIR}/DVUtilities.pc" @ONLY)
install(FILES "${CMAKE_BINARY_DIR}/DVUtilitiesConfig.cmake" "${CMAKE_BINARY_DIR}/DVUtilitiesConfigVersion.cmake"
  DESTINATION ${dvu_config_dir} COMPONENT development)
install(FILES "${CMAKE_BINARY_DIR}/DVUtilities.pc"
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)

# Each package with programs or libraries lists what they were built with: libraries that are linked, and
# libraries of headers, which are compiled in.
get_filename_component(sybdb_file "${SYBDB_LIBRARY}" REALPATH)
string(REGEX REPLACE ".*\\.so\\." "" SYBDB_VERSION "${sybdb_file}")
set(linked_spdlog "")
set(compiled_spdlog "spdlog ${spdlog_VERSION}\n")
if(DVU_SHARED_SPDLOG)
  set(linked_spdlog "lib${compiled_spdlog}")
  set(compiled_spdlog "")
endif()
set(compiler_version "${CMAKE_CXX_COMPILER_ID} ${CMAKE_CXX_COMPILER_VERSION}")
file(CONFIGURE OUTPUT linked/library.txt @ONLY CONTENT "Linked libraries and their versions

libfmt ${fmt_VERSION}
${linked_spdlog}libtomlplusplus ${tomlplusplus_VERSION}
libsodium ${sodium_VERSION}
libodbc ${odbc_VERSION} (unixODBC)
libssl, libcrypto ${openssl_VERSION} (OpenSSL)
libstdc++, libgcc_s: ${compiler_version}

Loaded for Windows authentication

libgssapi_krb5 ${gssapi_VERSION} (Kerberos)

Compiled in

${compiled_spdlog}nlohmann-json ${nlohmann_json_VERSION}
")
file(CONFIGURE OUTPUT linked/tools.txt @ONLY CONTENT "Linked libraries and their versions

libodbc ${odbc_VERSION} (unixODBC)
libsybdb ${SYBDB_VERSION} (FreeTDS)
libsqlite3 ${sqlite3_VERSION}
libssl, libcrypto ${openssl_VERSION} (OpenSSL)
libgssapi_krb5 ${gssapi_VERSION} (Kerberos)
libedit ${libedit_VERSION}
libsodium ${sodium_VERSION}
libstdc++, libgcc_s: ${compiler_version}

Compiled in

CLI11 ${CLI11_VERSION}
nlohmann-json ${nlohmann_json_VERSION}
Boost ${Boost_VERSION} (headers)
")
foreach(component library tools)
  install(FILES "${CMAKE_CURRENT_BINARY_DIR}/linked/${component}.txt" DESTINATION ${CMAKE_INSTALL_DOCDIR}
    COMPONENT ${component} RENAME linked-libraries-${component}.txt)
endforeach()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME dvutilities)
set(CPACK_PACKAGE_VENDOR "The DVUtilities developers")
set(CPACK_PACKAGE_CONTACT "The DVUtilities developers <dvutilities@localhost>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL library development tools)
set(CPACK_COMPONENTS_GROUPING ONE_PER_GROUP)
set(CPACK_COMPONENT_LIBRARY_DESCRIPTION "SQL Server access and script packages: shared library and host layer")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "SQL Server access and script packages: headers and build files")
set(CPACK_COMPONENT_TOOLS_DESCRIPTION "SQL Server access and script packages: tscript, sqlcmd, tsqlbox")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${CMAKE_LIBRARY_OUTPUT_DIRECTORY}")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME libdvutilities${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_RECOMMENDS tdsodbc)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libdvutilities-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "libdvutilities${PROJECT_VERSION_MAJOR} (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME dvutilities-tools)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION database)
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "libdvutilities${PROJECT_VERSION_MAJOR} (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_TOOLS_PACKAGE_RECOMMENDS tdsodbc)
foreach(script IN ITEMS postinst prerm)
  configure_file(cmake/debian/${script}.in "${CMAKE_BINARY_DIR}/debian/${script}" @ONLY
    FILE_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
  list(APPEND CPACK_DEBIAN_TOOLS_PACKAGE_CONTROL_EXTRA "${CMAKE_BINARY_DIR}/debian/${script}")
endforeach()
set(CPACK_DEBIAN_TOOLS_PACKAGE_CONTROL_STRICT_PERMISSION ON)
include(CPack)
