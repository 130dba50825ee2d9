# Shared part of the mingw-w64 toolchains; the including file sets ZEBREADER_MINGW_TRIPLE.
set(CMAKE_C_COMPILER ${ZEBREADER_MINGW_TRIPLE}-gcc-posix)
set(CMAKE_CXX_COMPILER ${ZEBREADER_MINGW_TRIPLE}-g++-posix)
set(CMAKE_RC_COMPILER ${ZEBREADER_MINGW_TRIPLE}-windres)
set(CMAKE_FIND_ROOT_PATH /usr/${ZEBREADER_MINGW_TRIPLE})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# Only system DLLs at run time: the compiler's own runtime (libstdc++, libgcc,
# winpthread) goes into every binary.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static -static-libgcc -static-libstdc++")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-static -static-libgcc -static-libstdc++")
set(CMAKE_MODULE_LINKER_FLAGS_INIT "-static -static-libgcc -static-libstdc++")

# Tests run under Wine; 32-bit binaries need a 32-bit Wine.
find_program(ZEBREADER_WINE NAMES wine wine64 wine-stable)
if(ZEBREADER_WINE)
  set(CMAKE_CROSSCOMPILING_EMULATOR ${ZEBREADER_WINE})
endif()
