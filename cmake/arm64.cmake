# AArch64 from any Debian machine: its cross compiler, and headers and libraries of the root that scripts/test_arm64.sh
# makes. What the build itself has to run, runs under the emulator.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_LIBRARY_ARCHITECTURE aarch64-linux-gnu)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)

get_filename_component(CMAKE_SYSROOT ${CMAKE_CURRENT_LIST_DIR}/../build/arm64-root ABSOLUTE)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# In a root of unpacked packages nothing has linked these two to where they are looked for.
set(apart /usr/lib/${CMAKE_LIBRARY_ARCHITECTURE}/blas:/usr/lib/${CMAKE_LIBRARY_ARCHITECTURE}/lapack)
string(REPLACE "/usr" "${CMAKE_SYSROOT}/usr" rpath_link ${apart})
foreach(kind EXE SHARED MODULE)
  set(CMAKE_${kind}_LINKER_FLAGS_INIT "-Wl,-rpath-link,${rpath_link}")
endforeach()
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-aarch64-static -L ${CMAKE_SYSROOT} -E LD_LIBRARY_PATH=${apart})
