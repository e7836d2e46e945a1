file(REMOVE_RECURSE ${ZEL_SCRATCH})
set(prefix ${ZEL_SCRATCH}/prefix)

function(run)
    execute_process(COMMAND ${ARGN} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

# Builds a project as an application would, and runs a program of it.
function(build_and_run source name)
    run(${CMAKE_COMMAND} -S ${source} -B ${ZEL_SCRATCH}/${name} -G Ninja -DCMAKE_PREFIX_PATH=${prefix}
        "-DCMAKE_CXX_FLAGS=${ZEL_CXX_FLAGS}")
    run(${CMAKE_COMMAND} --build ${ZEL_SCRATCH}/${name})
    run(${ZEL_SCRATCH}/${name}/${name})
endfunction()

run(${CMAKE_COMMAND} --install ${ZEL_BUILD_FOLDER} --prefix ${prefix})
build_and_run(${ZEL_EXAMPLES} box_filter)
if(EXISTS ${prefix}/bin/zel)
    run(${prefix}/bin/zel --version)
endif()

# The README's project, with each of its programs in turn.
file(READ ${ZEL_README} readme)
string(REGEX MATCH "\n```cmake\n([^`]*)```" found "${readme}")
file(WRITE ${ZEL_SCRATCH}/readme/CMakeLists.txt "${CMAKE_MATCH_1}")
set(programs 0)
while(readme MATCHES "\n```cpp\n([^`]*)```(.*)")
    set(readme "${CMAKE_MATCH_2}")
    file(WRITE ${ZEL_SCRATCH}/readme/application.cpp "${CMAKE_MATCH_1}")
    build_and_run(${ZEL_SCRATCH}/readme application)
    math(EXPR programs "${programs} + 1")
endwhile()
if(programs EQUAL 0)
    message(FATAL_ERROR "${ZEL_README} has no programs")
endif()
