# Installs a build into a folder of its own, builds the consumer against it there, and runs it.
#   cmake -DBUILD=FOLDER -DWORK=FOLDER -DQT_MAJOR=5|6 [-DCXX_FLAGS=FLAGS] [-DLAUNCHER=ccache] -P run.cmake
# Without BUILD the library that the system has installed is taken; with CHECKOUT=FOLDER its sources are.
cmake_minimum_required(VERSION 3.22)

function(run)
    execute_process(COMMAND ${ARGN} OUTPUT_VARIABLE output ERROR_VARIABLE output RESULT_VARIABLE result)
    if(NOT result EQUAL 0)
        list(JOIN ARGN " " command)
        message(FATAL_ERROR "${command}: ${result}\n${output}")
    endif()
endfunction()

file(REMOVE_RECURSE ${WORK})
if(BUILD)
    run(${CMAKE_COMMAND} --install ${BUILD} --prefix ${WORK}/prefix)
endif()
run(${CMAKE_COMMAND} -S ${CMAKE_CURRENT_LIST_DIR} -B ${WORK}/build -G Ninja
    -DCMAKE_PREFIX_PATH=${WORK}/prefix
    -DCMAKE_BUILD_TYPE=Release # as the packages: ccache knows the sources by then
    -DQT_MAJOR=${QT_MAJOR}
    -DCHECKOUT=${CHECKOUT}
    -DCMAKE_CXX_FLAGS=${CXX_FLAGS}
    -DCMAKE_CXX_COMPILER_LAUNCHER=${LAUNCHER})
run(${CMAKE_COMMAND} --build ${WORK}/build)
run(${CMAKE_COMMAND} -E env QT_QPA_PLATFORM=offscreen ${WORK}/build/consumer)
