# zel_install_library(target name [include folder]): a library of the installed tree, found there as zel::NAME with
# find_package(zel). Its headers need C++20.
function(zel_install_library target exported_name)
    target_compile_features(${target} PUBLIC cxx_std_20)
    set_target_properties(${target} PROPERTIES
        EXPORT_NAME ${exported_name}
        INSTALL_RPATH $ORIGIN
        VERSION ${PROJECT_VERSION}
        SOVERSION ${PROJECT_VERSION_MAJOR})
    set_property(GLOBAL APPEND_STRING PROPERTY zel_pc_libraries " -l${target}")
    install(TARGETS ${target} EXPORT zel INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
    foreach(folder IN LISTS ARGN)
        install(DIRECTORY ${folder}/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
    endforeach()
endfunction()

# Called once, after all libraries.
function(zel_install_package)
    include(CMakePackageConfigHelpers)
    set(destination ${CMAKE_INSTALL_LIBDIR}/cmake/zel)
    install(EXPORT zel NAMESPACE zel:: FILE zelTargets.cmake DESTINATION ${destination})
    configure_package_config_file(cmake/zelConfig.cmake.in zelConfig.cmake INSTALL_DESTINATION ${destination})
    write_basic_package_version_file(zelConfigVersion.cmake COMPATIBILITY SameMinorVersion)
    install(FILES ${PROJECT_BINARY_DIR}/zelConfig.cmake ${PROJECT_BINARY_DIR}/zelConfigVersion.cmake
            DESTINATION ${destination})

    # For other build systems. The tree may be moved: its place is told from where the file lies.
    set(destination ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
    file(RELATIVE_PATH zel_prefix_from_pc /prefix/${destination} /prefix)
    get_property(zel_pc_libraries GLOBAL PROPERTY zel_pc_libraries)
    configure_file(cmake/zel.pc.in zel.pc @ONLY)
    install(FILES ${PROJECT_BINARY_DIR}/zel.pc DESTINATION ${destination})

    set(destination ${CMAKE_INSTALL_DATADIR}/doc/zel)
    install(FILES README.md LICENSE CHANGELOG.md DESTINATION ${destination})
    install(DIRECTORY Docs DESTINATION ${destination})
endfunction()
