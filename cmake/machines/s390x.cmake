# s390x, a big-endian 64-bit machine, with Debian's cross compiler. The programs run in QEMU's user mode.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR s390x)
set(CMAKE_CXX_COMPILER s390x-linux-gnu-g++)
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-s390x-static;-L;/usr/s390x-linux-gnu)
