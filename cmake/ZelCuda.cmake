# The CUDA language, set up alike for all targets.

# The compute capabilities that the back end is made for, as far as the toolkit still knows them.
set(zel_cuda_architectures 60 61 62 70 72 75 80 86 87 89 90)
if(NOT DEFINED CMAKE_CUDA_ARCHITECTURES)
    find_program(ZEL_NVCC nvcc HINTS ENV CUDA_PATH PATH_SUFFIXES bin)
    if(NOT ZEL_NVCC)
        message(FATAL_ERROR "The cuda platform needs the CUDA toolkit, and there is no nvcc on the PATH")
    endif()
    execute_process(COMMAND ${ZEL_NVCC} --list-gpu-arch OUTPUT_VARIABLE known_architectures COMMAND_ERROR_IS_FATAL ANY)
    string(REGEX MATCHALL "[0-9]+" known_architectures "${known_architectures}")
    foreach(architecture IN LISTS zel_cuda_architectures)
        if(architecture IN_LIST known_architectures)
            list(APPEND CMAKE_CUDA_ARCHITECTURES ${architecture})
        endif()
    endforeach()
    set(CMAKE_CUDA_ARCHITECTURES ${CMAKE_CUDA_ARCHITECTURES} CACHE STRING "Compute capabilities to compile for")
endif()

enable_language(CUDA)
if(NOT CMAKE_CUDA20_STANDARD_COMPILE_OPTION)
    # CMake 3.25.1, which Debian 12 has, does not know yet that nvcc can do this.
    set(CMAKE_CUDA20_STANDARD_COMPILE_OPTION -std=c++20)
    set(CMAKE_CUDA20_EXTENSION_COMPILE_OPTION -std=c++20)
endif()
set(CMAKE_CUDA_STANDARD 20)
set(CMAKE_CUDA_STANDARD_REQUIRED ON)
set(CMAKE_CUDA_EXTENSIONS OFF)
set(CMAKE_CUDA_VISIBILITY_PRESET hidden)
set(CMAKE_CUDA_SEPARABLE_COMPILATION ON)
set(CMAKE_CUDA_RESOLVE_DEVICE_SYMBOLS ON)
# One runtime in the process: with static ones each library would have a pending error and a registry of its own.
set(CMAKE_CUDA_RUNTIME_LIBRARY Shared)
