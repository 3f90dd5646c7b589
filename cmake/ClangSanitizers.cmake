# How programs get the run-time of a sanitizer from Clang. The tests have forms of operator new of their own, which ask
# for the next ones: the run-time's, which have to be in a library as with GCC, or the standard library's.

execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-resource-dir
    OUTPUT_VARIABLE clang_resources OUTPUT_STRIP_TRAILING_WHITESPACE)
set(clang_runtimes ${clang_resources}/lib/linux)

if(CORVEX_SANITIZE MATCHES thread)
    # As a library it would start too late, so it is linked into each program, without its part for C++, which has
    # operator new.
    set(runtime ${clang_runtimes}/libclang_rt.tsan-${CMAKE_SYSTEM_PROCESSOR}.a)
    add_link_options(-fno-sanitize-link-runtime)
    target_link_options(sanitizer_options INTERFACE
        -Wl,--whole-archive ${runtime} -Wl,--no-whole-archive -Wl,--dynamic-list=${runtime}.syms -lpthread -lrt -ldl -lm)
else()
    add_link_options(-shared-libsan -Wl,-rpath,${clang_runtimes})
endif()
