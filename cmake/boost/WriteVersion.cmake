# cmake -DVERSION=<x.y.z> -DFILE=<file> -P WriteVersion.cmake: the version file beside BoostConfig.cmake.

include(CMakePackageConfigHelpers)
write_basic_package_version_file("${FILE}" VERSION ${VERSION} COMPATIBILITY AnyNewerVersion ARCH_INDEPENDENT)
