# hidapi's hidraw backend, static: target hidapi_whole links every call of it, so that a plugin can export them
# to its drivers.
find_path(HIDAPI_INCLUDE_DIR hidapi.h PATH_SUFFIXES hidapi)
find_library(HIDAPI_HIDRAW_ARCHIVE libhidapi-hidraw.a)
find_library(UDEV_LIBRARY udev)
foreach(found HIDAPI_INCLUDE_DIR HIDAPI_HIDRAW_ARCHIVE UDEV_LIBRARY)
  if(NOT ${found})
    message(FATAL_ERROR "${found} not found: install libhidapi-dev and libudev-dev, or set it with -D${found}=...")
  endif()
endforeach()

find_package(Threads REQUIRED)
add_library(hidapi_whole INTERFACE)
target_include_directories(hidapi_whole SYSTEM INTERFACE ${HIDAPI_INCLUDE_DIR})
# One argument, so that nothing can come between its three parts.
target_link_libraries(hidapi_whole INTERFACE
  "-Wl,--whole-archive,${HIDAPI_HIDRAW_ARCHIVE},--no-whole-archive" ${UDEV_LIBRARY} Threads::Threads)
