file(REMOVE_RECURSE ${ZEL_SCRATCH})
set(prefix ${ZEL_SCRATCH}/prefix)

function(run)
    execute_process(COMMAND ${ARGN} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

run(${CMAKE_COMMAND} --install ${ZEL_BUILD_FOLDER} --prefix ${prefix})
run(${CMAKE_COMMAND} -S ${ZEL_EXAMPLES} -B ${ZEL_SCRATCH}/examples -G Ninja -DCMAKE_PREFIX_PATH=${prefix}
    "-DCMAKE_CXX_FLAGS=${ZEL_CXX_FLAGS}")
run(${CMAKE_COMMAND} --build ${ZEL_SCRATCH}/examples)
run(${ZEL_SCRATCH}/examples/box_filter)
if(EXISTS ${prefix}/bin/zel)
    run(${prefix}/bin/zel --version)
endif()
