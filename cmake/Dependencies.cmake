# What the libraries stand on. Every dependency is an imported target named here once.
find_package(PkgConfig REQUIRED)
find_package(TBB REQUIRED)
pkg_check_modules(CBOR REQUIRED IMPORTED_TARGET libcbor)
find_package(PNG REQUIRED)
find_package(JPEG REQUIRED)
find_package(GIF 5 REQUIRED)
pkg_check_modules(TIFF REQUIRED IMPORTED_TARGET libtiff-4>=4.5)
pkg_check_modules(WEBP REQUIRED IMPORTED_TARGET libwebp libwebpmux libwebpdemux)
pkg_check_modules(OPENEXR REQUIRED IMPORTED_TARGET OpenEXR)
pkg_check_modules(OPENCOLORIO REQUIRED IMPORTED_TARGET OpenColorIO)
pkg_check_modules(LCMS2 REQUIRED IMPORTED_TARGET lcms2)

# FLANN: its headers alone, which want LZ4. What its pkg-config file names beyond that is for files
# and clusters of machines.
pkg_check_modules(LZ4 REQUIRED IMPORTED_TARGET liblz4)
find_path(FLANN_INCLUDE_DIR flann/flann.hpp REQUIRED)
add_library(FLANN::FLANN INTERFACE IMPORTED)
target_include_directories(FLANN::FLANN INTERFACE ${FLANN_INCLUDE_DIR})
target_link_libraries(FLANN::FLANN INTERFACE PkgConfig::LZ4)

pkg_check_modules(AGG REQUIRED IMPORTED_TARGET libagg)

if(RENDERER_BUILD_TOOLS)
  find_package(pugixml REQUIRED)
  find_package(CLI11 REQUIRED)
endif()
if(RENDERER_BUILD_TESTS)
  find_package(GTest REQUIRED)
endif()
if(RENDERER_BUILD_BENCHMARKS)
  find_package(benchmark REQUIRED)
  pkg_check_modules(CAIRO REQUIRED IMPORTED_TARGET cairo)
endif()
