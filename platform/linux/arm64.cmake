# The compilers of Debian's crossbuild-essential-arm64, and the architecture of the package.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)

set(CMAKE_C_COMPILER aarch64-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)
set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE arm64)
