# Libraries from packages. pugixml alone is built here, from its packaged source, since the packaged library is the
# narrow build; script/setup unpacks it below build/.

find_package(Threads REQUIRED)
find_package(CURL REQUIRED)
find_package(ICU REQUIRED COMPONENTS uc i18n data)
find_package(fmt REQUIRED)
find_package(OpenSSL REQUIRED)
find_package(SQLite3 REQUIRED)
find_package(PkgConfig REQUIRED)
pkg_check_modules(SODIUM REQUIRED IMPORTED_TARGET libsodium)
find_package(CLI11 REQUIRED)
find_package(RapidJSON REQUIRED)
find_package(Boost 1.81 REQUIRED)

set(KOV_PUGIXML_DIR "${PROJECT_SOURCE_DIR}/build/third-party/pugixml" CACHE PATH "Unpacked source of pugixml")
if(NOT EXISTS "${KOV_PUGIXML_DIR}/src/pugixml.cpp")
  message(FATAL_ERROR "pugixml's source is missing in ${KOV_PUGIXML_DIR}; run script/setup")
endif()
add_library(pugixml_wide STATIC "${KOV_PUGIXML_DIR}/src/pugixml.cpp")
target_include_directories(pugixml_wide SYSTEM PUBLIC "${KOV_PUGIXML_DIR}/src")
target_compile_definitions(pugixml_wide PUBLIC PUGIXML_WCHAR_MODE)
if(CMAKE_BUILD_TYPE STREQUAL "Debug")
  target_compile_options(pugixml_wide PRIVATE -O1)
endif()

if(KOV_TESTS)
  find_package(GTest REQUIRED)
endif()
