# Every library that the project uses, found once. Why each was chosen: docs/architecture.md.
find_package(Threads REQUIRED)
find_package(Boost 1.81 REQUIRED COMPONENTS json)
find_package(CURL 7.85 REQUIRED)
find_package(OpenSSL 3.0 REQUIRED)
find_package(fmt REQUIRED)
find_package(spdlog REQUIRED)
find_package(date REQUIRED)
find_package(simdjson REQUIRED)
find_package(CLI11 REQUIRED)
find_package(PkgConfig REQUIRED)
# Optional: without it, or without a journal at run time, log lines go to standard error alone.
pkg_check_modules(SYSTEMD IMPORTED_TARGET libsystemd)
if(TIDEWELL_DESKTOP)
    find_package(Qt6 6.4 REQUIRED COMPONENTS Widgets DBus Svg)
    pkg_check_modules(GIO REQUIRED IMPORTED_TARGET gio-2.0)
    pkg_check_modules(LIBSECRET REQUIRED IMPORTED_TARGET libsecret-1)
    # Only their headers: the program loads these two when it first needs them.
    pkg_check_modules(CANBERRA REQUIRED libcanberra)
    pkg_check_modules(PULSE REQUIRED libpulse)
endif()
if(TIDEWELL_TESTS)
    find_package(GTest REQUIRED)
endif()

add_library(tidewell_asio INTERFACE)
target_link_libraries(tidewell_asio INTERFACE Boost::boost Threads::Threads)
target_compile_definitions(tidewell_asio INTERFACE
    BOOST_ASIO_NO_DEPRECATED BOOST_ASIO_DISABLE_BOOST_COROUTINE)
