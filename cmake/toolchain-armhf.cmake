# Cross build for the controller's 32-bit ARM (armhf) with Debian's g++-arm-linux-gnueabihf.
# Tests run through qemu-user against the armhf runtime libraries of the cross toolchain.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR arm)

set(TESSERA_ARM_TRIPLET arm-linux-gnueabihf)
set(CMAKE_C_COMPILER ${TESSERA_ARM_TRIPLET}-gcc)
set(CMAKE_CXX_COMPILER ${TESSERA_ARM_TRIPLET}-g++)
set(CMAKE_LIBRARY_ARCHITECTURE ${TESSERA_ARM_TRIPLET})

set(CMAKE_FIND_ROOT_PATH /usr/${TESSERA_ARM_TRIPLET} /usr/lib/${TESSERA_ARM_TRIPLET})
# Packages and libraries come from the armhf sysroot unless the caller says otherwise (a tool
# built against a libtessera installed outside the sysroot passes -DCMAKE_FIND_ROOT_PATH_MODE_PACKAGE=BOTH).
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
if(NOT DEFINED CMAKE_FIND_ROOT_PATH_MODE_LIBRARY)
  set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
endif()
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE BOTH)
if(NOT DEFINED CMAKE_FIND_ROOT_PATH_MODE_PACKAGE)
  set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
endif()

set(CMAKE_CROSSCOMPILING_EMULATOR qemu-arm -L /usr/${TESSERA_ARM_TRIPLET})
