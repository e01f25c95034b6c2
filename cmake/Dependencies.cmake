# Debian's two small OpenCV packages carry no CMake package file, hence the direct look-ups.
find_path(OPENCV_INCLUDE_DIR opencv2/core.hpp PATH_SUFFIXES opencv4 REQUIRED)
find_library(OPENCV_CORE_LIBRARY opencv_core REQUIRED)
find_library(OPENCV_IMGPROC_LIBRARY opencv_imgproc REQUIRED)
add_library(kvx_opencv INTERFACE)
target_include_directories(kvx_opencv SYSTEM INTERFACE ${OPENCV_INCLUDE_DIR})
target_link_libraries(kvx_opencv INTERFACE ${OPENCV_IMGPROC_LIBRARY} ${OPENCV_CORE_LIBRARY})

find_package(PNG REQUIRED)
find_package(nlohmann_json 3.11 REQUIRED)
find_package(Threads REQUIRED)

find_path(TURBOJPEG_INCLUDE_DIR turbojpeg.h REQUIRED)
find_library(TURBOJPEG_LIBRARY turbojpeg REQUIRED)
add_library(kvx_turbojpeg INTERFACE)
target_include_directories(kvx_turbojpeg SYSTEM INTERFACE ${TURBOJPEG_INCLUDE_DIR})
target_link_libraries(kvx_turbojpeg INTERFACE ${TURBOJPEG_LIBRARY})

find_path(TINYXML2_INCLUDE_DIR tinyxml2.h REQUIRED)
find_library(TINYXML2_LIBRARY tinyxml2 REQUIRED)
add_library(kvx_tinyxml2 INTERFACE)
target_include_directories(kvx_tinyxml2 SYSTEM INTERFACE ${TINYXML2_INCLUDE_DIR})
target_link_libraries(kvx_tinyxml2 INTERFACE ${TINYXML2_LIBRARY})

find_path(HWY_INCLUDE_DIR hwy/highway.h REQUIRED)
find_library(HWY_LIBRARY hwy REQUIRED)
add_library(kvx_hwy INTERFACE)
target_include_directories(kvx_hwy SYSTEM INTERFACE ${HWY_INCLUDE_DIR})
target_link_libraries(kvx_hwy INTERFACE ${HWY_LIBRARY})
