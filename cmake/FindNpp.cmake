# NPP's image filters, as the targets Npp::filtering and Npp::morphology: from the toolkit, or else from the vendor's
# wheel, which is taken into the build folder.

set(npp_folder ${PROJECT_BINARY_DIR}/npp)

macro(zel_find_npp)
    find_path(Npp_INCLUDE_DIR nppi_filtering_functions.h HINTS ${CUDAToolkit_INCLUDE_DIRS} ${ARGN} PATH_SUFFIXES include)
    foreach(library IN ITEMS nppc nppif nppim)
        # A wheel has only the name with the major version.
        find_library(Npp_${library}_LIBRARY
            NAMES ${library} lib${library}.so.${CUDAToolkit_VERSION_MAJOR}
            HINTS ${CUDAToolkit_LIBRARY_DIR} ${ARGN}
            PATH_SUFFIXES lib)
    endforeach()
endmacro()

zel_find_npp()
if(NOT Npp_INCLUDE_DIR)
    set(ZEL_NPP_FOLDER ${npp_folder})
    set(ZEL_CUDA_MAJOR ${CUDAToolkit_VERSION_MAJOR})
    include(${CMAKE_CURRENT_LIST_DIR}/FetchNpp.cmake)
    file(GLOB wheel_roots ${npp_folder}/nvidia/*)
    zel_find_npp(${wheel_roots})
endif()

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(Npp
    REQUIRED_VARS Npp_INCLUDE_DIR Npp_nppc_LIBRARY Npp_nppif_LIBRARY Npp_nppim_LIBRARY)

if(Npp_FOUND AND NOT TARGET Npp::filtering)
    foreach(pair IN ITEMS "filtering nppif" "morphology nppim")
        separate_arguments(pair)
        list(POP_FRONT pair name library)
        add_library(Npp::${name} UNKNOWN IMPORTED)
        set_target_properties(Npp::${name} PROPERTIES
            IMPORTED_LOCATION ${Npp_${library}_LIBRARY}
            INTERFACE_INCLUDE_DIRECTORIES ${Npp_INCLUDE_DIR}
            INTERFACE_LINK_LIBRARIES ${Npp_nppc_LIBRARY})
    endforeach()
endif()
