# mdtools_add_version_resource(TARGET PRODUCT_NAME name PRODUCT_VERSION version COPYRIGHT text)
#
# Stamps a program or a library with the three texts that Tools::VersionInfo reads, under the language
# keys that the family asks for first ("040704b0", German in Unicode). The product version's first
# word is the version, its second word the build date ("24.1 15052023"). Texts are UTF-8. A Windows
# module gets a version resource, an ELF module a section of its own.

# The bytes of a text as elements of a C array, with a final NUL.
function(_mdtools_to_bytes result text)
    string(HEX "${text}" digits)
    string(REGEX REPLACE "(..)" "0x\\1, " bytes "${digits}")
    set(${result} "${bytes}0x00," PARENT_SCOPE)
endfunction()

# A text as it is between the quotes of a resource script.
function(_mdtools_to_resource_text result text)
    string(REPLACE "\\" "\\\\" text "${text}")
    string(REPLACE "\"" "\"\"" text "${text}")
    set(${result} "${text}" PARENT_SCOPE)
endfunction()

function(mdtools_add_version_resource target)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "PRODUCT_NAME;PRODUCT_VERSION;COPYRIGHT" "")
    set(source "${CMAKE_CURRENT_BINARY_DIR}/${target}-version")
    if(WIN32)
        # The four numbers of the fixed part; what the version does not have is 0.
        string(REGEX MATCH "^[^ ]*" version "${arg_PRODUCT_VERSION}")
        string(REGEX MATCHALL "[0-9]+" numbers "${version}.0.0.0.0")
        list(SUBLIST numbers 0 4 numbers)
        string(REPLACE ";" "," versionNumbers "${numbers}")
        _mdtools_to_resource_text(productName "${arg_PRODUCT_NAME}")
        _mdtools_to_resource_text(productVersion "${arg_PRODUCT_VERSION}")
        _mdtools_to_resource_text(copyright "${arg_COPYRIGHT}")
        enable_language(RC)
        configure_file("${CMAKE_CURRENT_FUNCTION_LIST_DIR}/version_resource.rc.in" "${source}.rc" @ONLY)
        target_sources(${target} PRIVATE "${source}.rc")
    else()
        _mdtools_to_bytes(productName "${arg_PRODUCT_NAME}")
        _mdtools_to_bytes(productVersion "${arg_PRODUCT_VERSION}")
        _mdtools_to_bytes(copyright "${arg_COPYRIGHT}")
        foreach(text ProductName ProductVersion LegalCopyright "MdTools version 1" 040704b0)
            string(MAKE_C_IDENTIFIER "${text}" name)
            _mdtools_to_bytes(key${name} "${text}")
        endforeach()
        configure_file("${CMAKE_CURRENT_FUNCTION_LIST_DIR}/version_section.cpp.in" "${source}.cpp" @ONLY)
        target_sources(${target} PRIVATE "${source}.cpp")
    endif()
endfunction()
