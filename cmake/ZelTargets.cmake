# What all targets of the project have in common: language level, warnings, visibility, numbers, output folders.

if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
    set(CMAKE_BUILD_TYPE Release CACHE STRING "Build type" FORCE)
endif()
if(ZEL_PLATFORM STREQUAL "cuda")
    include(ZelCuda)
elseif(NOT ZEL_PLATFORM STREQUAL "host")
    message(FATAL_ERROR "ZEL_PLATFORM is '${ZEL_PLATFORM}'; it can be 'host' or 'cuda'")
endif()

set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/lib)
set(CMAKE_ARCHIVE_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/lib)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

set(zel_cxx_only "$<COMPILE_LANGUAGE:CXX>")

add_library(zel_build_options INTERFACE)
target_compile_features(zel_build_options INTERFACE cxx_std_20)
target_compile_options(zel_build_options INTERFACE
    "$<${zel_cxx_only}:-Wall;-Wextra;-Wshadow;-Wnon-virtual-dtor;-Woverloaded-virtual>"
    # Contraction off: the bits of a result do not depend on what the compiler fuses. The other two keep all bits and
    # let square roots and conversions vectorise.
    "$<${zel_cxx_only}:-ffp-contract=off;-fno-math-errno;-fno-trapping-math;-fopenmp-simd>"
    "$<$<COMPILE_LANGUAGE:CUDA>:--fmad=false;--expt-relaxed-constexpr>")
if(ZEL_PLATFORM STREQUAL "host")
    target_compile_options(zel_build_options INTERFACE -march=${ZEL_HOST_ARCH})
endif()
if(ZEL_SANITIZE)
    target_compile_options(zel_build_options INTERFACE -fsanitize=${ZEL_SANITIZE} -fno-omit-frame-pointer)
    target_link_options(zel_build_options INTERFACE -fsanitize=${ZEL_SANITIZE})
endif()

# zel_device_sources(target file.cu...): device modules, compiled by nvcc for the cuda platform and as C++ for the host.
function(zel_device_sources target)
    target_sources(${target} PRIVATE ${ARGN})
    if(ZEL_PLATFORM STREQUAL "host")
        set_source_files_properties(${ARGN} PROPERTIES LANGUAGE CXX)
    endif()
endfunction()
