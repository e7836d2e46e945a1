# Takes NPP's headers and libraries from the vendor's Python wheel, for toolkits that come without NPP.
# Run as a script:  cmake -DZEL_NPP_FOLDER=folder -DZEL_CUDA_MAJOR=13 -P FetchNpp.cmake

if(EXISTS ${ZEL_NPP_FOLDER}/nvidia)
    return()
endif()

if(ZEL_CUDA_MAJOR GREATER_EQUAL 13)
    math(EXPR next_major "${ZEL_CUDA_MAJOR} + 1")
    set(wheel "nvidia-npp>=${ZEL_CUDA_MAJOR},<${next_major}")
else()
    set(wheel "nvidia-npp-cu${ZEL_CUDA_MAJOR}")
endif()

message(STATUS "Taking NPP from the wheel ${wheel}")
set(download_folder ${ZEL_NPP_FOLDER}.download)
execute_process(
    COMMAND python3 -m pip download --quiet --disable-pip-version-check --no-deps --only-binary :all:
            --dest ${download_folder} ${wheel}
    RESULT_VARIABLE failure
    ERROR_VARIABLE pip_error)
if(failure)
    message(FATAL_ERROR "pip cannot download ${wheel}: ${failure} ${pip_error}")
endif()
file(GLOB wheel_file ${download_folder}/*.whl)
file(ARCHIVE_EXTRACT INPUT ${wheel_file} DESTINATION ${ZEL_NPP_FOLDER})
file(REMOVE_RECURSE ${download_folder})
