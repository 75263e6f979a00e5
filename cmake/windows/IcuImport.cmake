# The import libraries of ICU, and the one place where its version is chosen: the suffix of its functions and the names
# of its DLLs. The real host has ICU 73; what is tested here is built from Debian's sources, which are of 72.
set(VENTRIX_ICU_MAJOR 72 CACHE STRING "The version of the ICU that lies beside the module: 72, or 73 for the real host")

# ventrix_icu_import(uc icuuc ucnv_open ...) makes ICU::uc, which imports the functions from icuucNN.dll.
function(ventrix_icu_import name dll)
    set(definition "LIBRARY ${dll}${VENTRIX_ICU_MAJOR}.dll\nEXPORTS\n")
    foreach(function IN LISTS ARGN)
        # The program calls the plain name, the DLL exports the one with the version.
        string(APPEND definition "    ${function} == ${function}_${VENTRIX_ICU_MAJOR}\n")
    endforeach()
    set(folder ${CMAKE_BINARY_DIR}/icu_import)
    file(WRITE ${folder}/${dll}.def "${definition}")
    execute_process(COMMAND ${CMAKE_DLLTOOL} -d ${folder}/${dll}.def -l ${folder}/lib${dll}.a COMMAND_ERROR_IS_FATAL ANY)
    add_library(ICU::${name} INTERFACE IMPORTED GLOBAL)
    target_include_directories(ICU::${name} INTERFACE ${VENTRIX_WINDOWS_LIBS}/include)
    target_compile_definitions(ICU::${name} INTERFACE U_DISABLE_RENAMING=1)
    target_link_libraries(ICU::${name} INTERFACE ${folder}/lib${dll}.a)
endfunction()

# The last three are used by the tests only.
ventrix_icu_import(uc icuuc ucnv_open ucnv_close ucnv_fromUChars ucnv_toUChars ucnv_setFallback ucnv_setToUCallBack
    UCNV_TO_U_CALLBACK_ESCAPE u_getDataDirectory u_setDataDirectory u_tolower uloc_getDefault uloc_setDefault)
ventrix_icu_import(i18n icuin ucol_open ucol_close ucol_setAttribute ucol_setStrength ucol_strcoll)
add_library(ICU::data INTERFACE IMPORTED GLOBAL)
