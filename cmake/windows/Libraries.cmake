# The libraries that tools/windows-libs has built, under the names that CMake gives those of the system elsewhere.
set(VENTRIX_WINDOWS_LIBS ${CMAKE_SOURCE_DIR}/build/windows-libs)
include(windows/IcuImport)

function(ventrix_static_library name file definition)
    add_library(${name} STATIC IMPORTED GLOBAL)
    set_target_properties(${name} PROPERTIES IMPORTED_LOCATION ${VENTRIX_WINDOWS_LIBS}/lib/${file})
    target_include_directories(${name} INTERFACE ${VENTRIX_WINDOWS_LIBS}/include ${VENTRIX_WINDOWS_LIBS}/include/libxml2)
    if(definition)
        target_compile_definitions(${name} INTERFACE ${definition})
    endif()
    target_link_libraries(${name} INTERFACE ${ARGN})
endfunction()

ventrix_static_library(Iconv::Iconv libiconv.a "")
ventrix_static_library(LibXml2::LibXml2 libxml2.a LIBXML_STATIC Iconv::Iconv ws2_32)
ventrix_static_library(LibXslt::LibXslt libxslt.a LIBXSLT_STATIC LibXml2::LibXml2)
ventrix_static_library(LibXslt::LibExslt libexslt.a LIBEXSLT_STATIC LibXslt::LibXslt)

# Debian has the desk host's header-only libraries for Linux only; they are the same.
include_directories(SYSTEM ${VENTRIX_WINDOWS_LIBS}/include)
add_compile_definitions(UNICODE _UNICODE NOMINMAX WIN32_LEAN_AND_MEAN _WIN32_WINNT=0x0A00)
