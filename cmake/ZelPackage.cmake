# What cpack puts into the Debian package: the installed tree of a host build below /usr. See the preset 'package'.

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME zel)
set(CPACK_PACKAGE_CONTACT "the brontal_zel developers <maintainers@zel.invalid>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION science)
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION "Filters, correlations, template matching and denoising of images,
 as a library for C++ and as the program zel. This is the build for CPUs
 with AVX2 and FMA (x86-64-v3).")
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/debian/Compress.cmake)
# Dependencies are those of the packages that its libraries come from; its own libraries are among them.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
if(ZEL_HOST_ARCH STREQUAL "x86-64-v3")
    set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/cmake/debian/preinst)
endif()
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

# The licence where Debian looks for it, with what linking FFTW means for the binaries.
if(CMAKE_INSTALL_PREFIX STREQUAL "/usr" AND ZEL_PLATFORM STREQUAL "host")
    file(READ LICENSE zel_licence)
    configure_file(cmake/debian/copyright.in copyright @ONLY)
    install(FILES ${PROJECT_BINARY_DIR}/copyright DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/zel)
endif()

include(CPack)
