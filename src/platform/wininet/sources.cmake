# The sources of wininet.h, part of the one shared platform library.
set(KOV_WININET_SOURCES)
foreach(name accounts connection connection_setup cookie_dates cookie_file cookies handles headers internet_url
        internet_url_crack lines options origin query redirects request settings upload wininet)
  list(APPEND KOV_WININET_SOURCES ${CMAKE_CURRENT_LIST_DIR}/${name}.cpp)
endforeach()
