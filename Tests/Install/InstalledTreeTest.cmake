file(REMOVE_RECURSE ${ZEL_SCRATCH})
set(prefix ${ZEL_SCRATCH}/prefix)

function(run)
    execute_process(COMMAND ${ARGN} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

# What Debian gives all linkers; the back end has to stay.
file(WRITE ${ZEL_SCRATCH}/as-needed.cmake "link_libraries(-Wl,--as-needed)\n")

# Builds a project as an application would, and runs a program of it.
function(build_and_run source name)
    run(${CMAKE_COMMAND} -S ${source} -B ${ZEL_SCRATCH}/${name} -G Ninja -DCMAKE_PREFIX_PATH=${prefix}
        "-DCMAKE_CXX_FLAGS=${ZEL_CXX_FLAGS}"
        -DCMAKE_PROJECT_INCLUDE=${ZEL_SCRATCH}/as-needed.cmake)
    run(${CMAKE_COMMAND} --build ${ZEL_SCRATCH}/${name})
    run(${ZEL_SCRATCH}/${name}/${name})
endfunction()

run(${CMAKE_COMMAND} --install ${ZEL_BUILD_FOLDER} --prefix ${prefix})
build_and_run(${ZEL_EXAMPLES} box_filter)
if(EXISTS ${prefix}/bin/zel)
    run(${prefix}/bin/zel --version)
    run(bash ${CMAKE_CURRENT_LIST_DIR}/commands.bash ${prefix})
endif()
foreach(file README.md LICENSE CHANGELOG.md Docs/box-filter.md)
    file(SIZE ${prefix}/share/doc/zel/${file} size)
endforeach()

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

# The last of them, as other build systems find the tree.
set(ENV{PKG_CONFIG_PATH} ${prefix}/${ZEL_LIBRARY_FOLDER}/pkgconfig)
execute_process(COMMAND pkg-config --cflags --libs zel OUTPUT_VARIABLE flags OUTPUT_STRIP_TRAILING_WHITESPACE
                COMMAND_ERROR_IS_FATAL ANY)
separate_arguments(flags UNIX_COMMAND "${flags}")
run(c++ -std=c++20 ${ZEL_CXX_FLAGS} -Wl,--as-needed ${ZEL_SCRATCH}/readme/application.cpp ${flags}
    -Wl,-rpath,${prefix}/${ZEL_LIBRARY_FOLDER} -o ${ZEL_SCRATCH}/with-pkg-config)
run(${ZEL_SCRATCH}/with-pkg-config)
