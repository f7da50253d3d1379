# Installation: headers below include/names_manager, so that "names/...", "host/..." and "files/..."
# are nobody else's; the libraries; a CMake package; a pkg-config file for each library; the pages
# that the headers' comments name, as docs/... beside the README.
include(CMakePackageConfigHelpers)

set(names_package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/names_manager")
set(names_libraries names_module)
if(NAMES_BUILD_HOST)
    list(APPEND names_libraries names_manager)
endif()
install(TARGETS ${names_libraries} EXPORT names_managerTargets
        ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT development
        LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT runtime
                                                      NAMELINK_COMPONENT development
        RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT runtime)
foreach(folder IN ITEMS names host files)
    file(GLOB headers CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/${folder}/*.h"
                                        "${PROJECT_SOURCE_DIR}/${folder}/names_manager.hpp"
                                        "${PROJECT_SOURCE_DIR}/${folder}/names_file.hpp")
    install(FILES ${headers} DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/names_manager/${folder}"
            COMPONENT development)
endforeach()

set(names_config "${PROJECT_BINARY_DIR}/names_managerConfig")
install(EXPORT names_managerTargets NAMESPACE names_manager:: DESTINATION "${names_package_dir}"
        COMPONENT development)
configure_package_config_file("${CMAKE_CURRENT_LIST_DIR}/names_managerConfig.cmake.in"
                              "${names_config}.cmake" INSTALL_DESTINATION "${names_package_dir}"
                              NO_SET_AND_CHECK_MACRO NO_CHECK_REQUIRED_COMPONENTS_MACRO)
write_basic_package_version_file("${names_config}Version.cmake" COMPATIBILITY SameMinorVersion)
install(FILES "${names_config}.cmake" "${names_config}Version.cmake"
        DESTINATION "${names_package_dir}" COMPONENT development)

install(FILES README.md CHANGELOG.md SECURITY.md DESTINATION "${CMAKE_INSTALL_DOCDIR}"
        COMPONENT development)
file(GLOB names_pages CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/docs/*.md")
install(FILES ${names_pages} DESTINATION "${CMAKE_INSTALL_DOCDIR}/docs" COMPONENT development)

# The prefix follows from where the file lies, so an installation can be moved.
list(TRANSFORM names_cxx_runtime PREPEND "-l" OUTPUT_VARIABLE names_pc_runtime)
list(JOIN names_pc_runtime " " names_pc_runtime)
file(RELATIVE_PATH names_pc_prefix "${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig"
     "${CMAKE_INSTALL_PREFIX}")
string(REGEX REPLACE "/$" "" names_pc_prefix "${names_pc_prefix}")
foreach(folder IN ITEMS INCLUDEDIR LIBDIR)
    set(names_pc_${folder} "\${prefix}")
    cmake_path(APPEND names_pc_${folder} "${CMAKE_INSTALL_${folder}}")
endforeach()
function(names_pc_file name libraries private description)
    set(file "${PROJECT_BINARY_DIR}/${name}.pc")
    configure_file("${CMAKE_CURRENT_FUNCTION_LIST_DIR}/names_manager.pc.in" "${file}" @ONLY)
    install(FILES "${file}" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig" COMPONENT development)
endfunction()
# A static library has no list of its own of what it needs: the module's is in every case static.
names_pc_file(names_manager_module "-lnames_manager_module ${names_pc_runtime}" ""
              "${PROJECT_DESCRIPTION}: the module alone, for hosts with services of their own")
if(NAMES_BUILD_HOST)
    list(TRANSFORM names_system_libraries PREPEND "-l" OUTPUT_VARIABLE names_pc_system)
    list(JOIN names_pc_system " " names_pc_system)
    names_pc_file(names_manager "-lnames_manager -pthread" "${names_pc_system} ${names_pc_runtime}"
                  "${PROJECT_DESCRIPTION}")
endif()
