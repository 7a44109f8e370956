# What comes from the web. libcurl is loaded when something is fetched, so only its header is needed here.
set(PEDVAR_WEB_SOURCES
    web/curl_url_session.cpp
    web/desktop_pages.cpp)
