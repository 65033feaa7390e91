# Installs the build into a prefix of its own, builds the consumer against what lies there, and runs it.
#   WAY       cmake: by find_package; pkg-config: by the .pc file; packages: by both, of the Debian packages unpacked into an empty root;
#             tarball: by find_package, of the archive
#   BUILD     build folder of the library          WORK      folder to work in, emptied first
#   CONSUMER  sources of the consumer              COMPILER  C compiler          LIBDIR  where libraries go below a prefix
cmake_minimum_required(VERSION 3.25)

set(prefix ${WORK}/prefix)
file(REMOVE_RECURSE ${WORK})
file(MAKE_DIRECTORY ${WORK})

macro(run)
  execute_process(COMMAND ${ARGN} WORKING_DIRECTORY ${WORK} COMMAND_ECHO STDOUT COMMAND_ERROR_IS_FATAL ANY)
endmacro()

# Unpacks what cpack made into `prefix`.
macro(unpack_packages)
  run(cpack --config ${BUILD}/CPackConfig.cmake -G DEB -B ${WORK}/packages)
  file(GLOB packages ${WORK}/packages/*.deb)
  list(LENGTH packages count)
  if(NOT count EQUAL 2)
    message(FATAL_ERROR "Two packages were expected: ${packages}")
  endif()
  foreach(package IN LISTS packages)
    run(dpkg-deb --extract ${package} ${WORK}/root)
  endforeach()
  set(prefix ${WORK}/root/usr)
endmacro()

macro(unpack_tarball)
  run(cpack --config ${BUILD}/CPackConfig.cmake -G TGZ -B ${WORK}/packages)
  file(GLOB tarball ${WORK}/packages/*.tar.gz)
  file(ARCHIVE_EXTRACT INPUT ${tarball} DESTINATION ${WORK}/root)
  file(GLOB prefix ${WORK}/root/tolvenar-*)
endmacro()

macro(build_by_cmake)
  run(${CMAKE_COMMAND} -S ${CONSUMER} -B ${WORK}/build -G Ninja -D CMAKE_PREFIX_PATH=${prefix} -D CMAKE_C_COMPILER=${COMPILER})
  run(${CMAKE_COMMAND} --build ${WORK}/build)
  run(${WORK}/build/consumer)
endmacro()

macro(build_by_pkg_config)
  set(ENV{PKG_CONFIG_PATH} ${prefix}/${LIBDIR}/pkgconfig)
  execute_process(COMMAND pkg-config --cflags --libs tolvenar OUTPUT_VARIABLE flags OUTPUT_STRIP_TRAILING_WHITESPACE
    COMMAND_ERROR_IS_FATAL ANY)
  separate_arguments(flags)
  run(${COMPILER} -std=c11 ${CONSUMER}/consumer.c ${flags} -Wl,-rpath,${prefix}/${LIBDIR} -o ${WORK}/consumer)
  run(${WORK}/consumer)
endmacro()

if(WAY STREQUAL "packages")
  unpack_packages()
  build_by_cmake()
  build_by_pkg_config()
elseif(WAY STREQUAL "tarball")
  unpack_tarball()
  build_by_cmake()
else()
  run(${CMAKE_COMMAND} --install ${BUILD} --prefix ${prefix})
  if(WAY STREQUAL "cmake")
    build_by_cmake()
  else()
    build_by_pkg_config()
  endif()
endif()
