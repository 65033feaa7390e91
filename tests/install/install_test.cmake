# Installs the build into a prefix of its own, builds the consumer against what lies there, and runs it.
#   WAY       cmake: by find_package; pkg-config: by the .pc file
#   BUILD     build folder of the library          WORK      folder to work in, emptied first
#   CONSUMER  sources of the consumer              COMPILER  C compiler          LIBDIR  where libraries go below a prefix
cmake_minimum_required(VERSION 3.25)

set(prefix ${WORK}/prefix)
file(REMOVE_RECURSE ${WORK})
file(MAKE_DIRECTORY ${WORK})

macro(run)
  execute_process(COMMAND ${ARGN} WORKING_DIRECTORY ${WORK} COMMAND_ECHO STDOUT COMMAND_ERROR_IS_FATAL ANY)
endmacro()

run(${CMAKE_COMMAND} --install ${BUILD} --prefix ${prefix})
if(WAY STREQUAL "cmake")
  run(${CMAKE_COMMAND} -S ${CONSUMER} -B ${WORK}/build -G Ninja -D CMAKE_PREFIX_PATH=${prefix} -D CMAKE_C_COMPILER=${COMPILER})
  run(${CMAKE_COMMAND} --build ${WORK}/build)
  run(${WORK}/build/consumer)
else()
  set(ENV{PKG_CONFIG_PATH} ${prefix}/${LIBDIR}/pkgconfig)
  execute_process(COMMAND pkg-config --cflags --libs tolvenar OUTPUT_VARIABLE flags OUTPUT_STRIP_TRAILING_WHITESPACE
    COMMAND_ERROR_IS_FATAL ANY)
  separate_arguments(flags)
  run(${COMPILER} -std=c11 ${CONSUMER}/consumer.c ${flags} -Wl,-rpath,${prefix}/${LIBDIR} -o ${WORK}/consumer)
  run(${WORK}/consumer)
endif()
