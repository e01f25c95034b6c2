# cpack -G DEB makes the Debian packages, one per component: what is installed with COMPONENT NAME is package NAME.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME kvx)
set(CPACK_PACKAGE_CONTACT "kvx maintainers <maintainers@kvx.invalid>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING ONE_PER_GROUP)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")  # else it stands before that of every component
set(CPACK_COMPONENTS_ALL kvx kvx-data libkvx-dev)

# kvx_package(NAME SECTION DEPENDS SUMMARY TEXT...): what Debian is told of a component. Every package has the copyright and
# the changelog where they belong. Lines of the text are at most 79 characters long.
function(kvx_package name section depends summary)
  string(TOUPPER ${name} upper)
  string(REPLACE ";" "\n" text "${summary};${ARGN}")
  set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${name} PARENT_SCOPE)
  set(CPACK_DEBIAN_${upper}_PACKAGE_SECTION ${section} PARENT_SCOPE)
  set(CPACK_DEBIAN_${upper}_PACKAGE_DEPENDS "${depends}" PARENT_SCOPE)
  set(CPACK_COMPONENT_${upper}_DESCRIPTION "${text}" PARENT_SCOPE)
  install(FILES ${CMAKE_BINARY_DIR}/copyright ${CMAKE_BINARY_DIR}/changelog.gz
    DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${name} COMPONENT ${name})
endfunction()

# The changelog in Debian's form: one entry, whose date is that of the last commit, so that builds repeat.
execute_process(COMMAND git -C ${CMAKE_SOURCE_DIR} log -1 --format=%cD OUTPUT_VARIABLE date ERROR_QUIET
  OUTPUT_STRIP_TRAILING_WHITESPACE)
if(NOT date)
  set(date "Thu, 01 Jan 1970 00:00:00 +0000")
endif()
file(READ ${CMAKE_SOURCE_DIR}/LICENSE license)
string(REGEX REPLACE "\n\n" "\n.\n" license "${license}")
string(REGEX REPLACE "\n(.)" "\n \\1" license " ${license}")
configure_file(${CMAKE_CURRENT_LIST_DIR}/copyright.in ${CMAKE_BINARY_DIR}/copyright @ONLY)
configure_file(${CMAKE_CURRENT_LIST_DIR}/changelog.in ${CMAKE_BINARY_DIR}/changelog @ONLY)
execute_process(COMMAND gzip -9nf ${CMAKE_BINARY_DIR}/changelog)

set(kvx_data "kvx-data (= ${PROJECT_VERSION})")
kvx_package(kvx video "${kvx_data}" "video effects on pictures, sequences and videos"
  "kvx runs more than two hundred video effects on the CPU: colour looks, film"
  "wear, stylisation, distortions, overlays, time-driven layouts, generators and"
  "background fills. It reads and writes pictures, numbered sequences, videos and"
  "pipes, and keeps their sound, subtitles and metadata."
  "."
  "This package holds the command.")
kvx_package(kvx-data video "" "effects and materials of the kvx video effects"
  "kvx is a library of video effects that run on the CPU, behind one plug-in."
  "."
  "This package holds what every program with these effects needs: the plug-in,"
  "which a host can also load by itself, its catalogue and the materials.")
set(kvx_dev_needs "${kvx_data}")
if(KVX_BUILD_C)
  string(APPEND kvx_dev_needs ", libkvx0 (= ${PROJECT_VERSION})")
endif()
kvx_package(libkvx-dev libdevel "${kvx_dev_needs}" "headers for hosts of the kvx video effects"
  "kvx is a library of video effects that run on the CPU, behind one plug-in."
  "."
  "This package holds the headers that a host of the plug-in includes and the"
  "files by which CMake finds it.")

# Loaded when it is wanted, which is not seen in the command's file.
string(REGEX MATCH "^[0-9]+" libavfilter "${LIBAVFILTER_VERSION}")
string(JOIN ", " CPACK_DEBIAN_KVX_PACKAGE_DEPENDS ${CPACK_DEBIAN_KVX_PACKAGE_DEPENDS} libavfilter${libavfilter})

# CPack calls ldconfig for every shared object, also for such as lie in folders where it does nothing.
function(kvx_override_ldconfig name)
  file(WRITE ${CMAKE_BINARY_DIR}/overrides/${name} "${name}: maintscript-calls-ldconfig\n")
  install(FILES ${CMAKE_BINARY_DIR}/overrides/${name} DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides
    COMPONENT ${name})
endfunction()
kvx_override_ldconfig(kvx-data)

if(KVX_BUILD_C)
  list(APPEND CPACK_COMPONENTS_ALL libkvx0)
  kvx_package(libkvx0 libs "${kvx_data}" "C library of the kvx video effects"
    "libkvx renders the effects of kvx on images in memory, from C and from every"
    "language that can call C.")
  kvx_override_ldconfig(libkvx0)
  file(WRITE ${CMAKE_BINARY_DIR}/libkvx0/shlibs "libkvx 0 libkvx0 (>= ${PROJECT_VERSION})\n")
  file(WRITE ${CMAKE_BINARY_DIR}/libkvx0/triggers "activate-noawait ldconfig\n")
  set(CPACK_DEBIAN_LIBKVX0_PACKAGE_CONTROL_EXTRA
    ${CMAKE_BINARY_DIR}/libkvx0/shlibs ${CMAKE_BINARY_DIR}/libkvx0/triggers)
endif()
if(TARGET kvx_python)
  list(APPEND CPACK_COMPONENTS_ALL python3-kvx)
  set(CPACK_DEBIAN_PYTHON3-KVX_PACKAGE_ARCHITECTURE all)
  kvx_package(python3-kvx python "libkvx0 (= ${PROJECT_VERSION}), python3, python3-numpy"
    "kvx video effects for Python and NumPy"
    "The effects of kvx on NumPy arrays and Pillow images, by libkvx.")
endif()
if(KVX_BUILD_GSTREAMER)
  list(APPEND CPACK_COMPONENTS_ALL gstreamer1.0-kvx)
  kvx_package(gstreamer1.0-kvx libs "${kvx_data}" "GStreamer elements of the kvx video effects"
    "One GStreamer element for every effect of kvx, with keyframes and presets.")
endif()
if(KVX_BUILD_MLT)
  list(APPEND CPACK_COMPONENTS_ALL libmlt-kvx)
  kvx_package(libmlt-kvx libs "${kvx_data}" "MLT filters of the kvx video effects"
    "One MLT filter for every effect of kvx, with keyframes, and what Kdenlive wants"
    "to know of them.")
endif()
if(KVX_BUILD_GEGL)
  list(APPEND CPACK_COMPONENTS_ALL gegl-kvx)
  kvx_package(gegl-kvx graphics "${kvx_data}, python3" "GEGL operations of the kvx video effects"
    "One GEGL operation for every effect of kvx, and so for GIMP.")
  kvx_override_ldconfig(gegl-kvx)
endif()

include(CPack)
