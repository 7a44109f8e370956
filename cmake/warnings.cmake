# What every target of the project is compiled with.
add_library(pedvar_warnings INTERFACE)
target_compile_options(pedvar_warnings INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Wold-style-cast -Wcast-align -Woverloaded-virtual
    -Wconversion -Wsign-conversion -Wdouble-promotion -Wimplicit-fallthrough -Werror
    # Members left to their defaults in designated and aggregate initialisers are meant.
    -Wno-missing-field-initializers
    # Optimising, g++ 12 sees faults inside std::string, std::variant and std::expected that are not there (GCC bugs
    # 105329, 105562, 109224); clang and the sanitizers look for the real ones.
    $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict -Wno-maybe-uninitialized -Wno-free-nonheap-object>)

add_library(pedvar_sanitizers INTERFACE)
if(PEDVAR_SANITIZE STREQUAL "ON")
    set(PEDVAR_SANITIZE address,undefined)
endif()
if(PEDVAR_FUZZ)
    target_compile_options(pedvar_sanitizers INTERFACE -fsanitize=fuzzer-no-link)
endif()
if(PEDVAR_SANITIZE)
    set(sanitizers -fsanitize=${PEDVAR_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_compile_options(pedvar_sanitizers INTERFACE ${sanitizers})
    target_link_options(pedvar_sanitizers INTERFACE ${sanitizers})
else()
    target_link_options(pedvar_sanitizers INTERFACE -static-libstdc++ -static-libgcc)
endif()
