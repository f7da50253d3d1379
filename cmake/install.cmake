# Installation: headers below include/names_manager, so that "names/..." and "host/..." are nobody else's; libraries; a CMake package; and a
# pkg-config file.
include(CMakePackageConfigHelpers)

set(names_package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/names_manager")
install(TARGETS names_module names_host names_manager EXPORT names_managerTargets
        ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}" LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}")
file(GLOB names_headers CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/names/names_manager.h" "${PROJECT_SOURCE_DIR}/names/names_manager.hpp")
file(GLOB host_headers CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/host/*.h")
install(FILES ${names_headers} DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/names_manager/names")
install(FILES ${host_headers} DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/names_manager/host")

install(EXPORT names_managerTargets NAMESPACE names_manager:: DESTINATION "${names_package_dir}")
configure_package_config_file("${CMAKE_CURRENT_LIST_DIR}/names_managerConfig.cmake.in" "${PROJECT_BINARY_DIR}/names_managerConfig.cmake"
                              INSTALL_DESTINATION "${names_package_dir}" NO_SET_AND_CHECK_MACRO NO_CHECK_REQUIRED_COMPONENTS_MACRO)
write_basic_package_version_file("${PROJECT_BINARY_DIR}/names_managerConfigVersion.cmake" COMPATIBILITY SameMinorVersion)
install(FILES "${PROJECT_BINARY_DIR}/names_managerConfig.cmake" "${PROJECT_BINARY_DIR}/names_managerConfigVersion.cmake"
        DESTINATION "${names_package_dir}")

# The prefix follows from where the file lies, so an installation can be moved.
list(TRANSFORM names_cxx_runtime PREPEND "-l" OUTPUT_VARIABLE names_pc_runtime)
list(JOIN names_pc_runtime " " names_pc_runtime)
file(RELATIVE_PATH names_pc_prefix "${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig" "${CMAKE_INSTALL_PREFIX}")
string(REGEX REPLACE "/$" "" names_pc_prefix "${names_pc_prefix}")
foreach(folder IN ITEMS INCLUDEDIR LIBDIR)
    set(names_pc_${folder} "\${prefix}")
    cmake_path(APPEND names_pc_${folder} "${CMAKE_INSTALL_${folder}}")
endforeach()
configure_file("${CMAKE_CURRENT_LIST_DIR}/names_manager.pc.in" "${PROJECT_BINARY_DIR}/names_manager.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/names_manager.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
