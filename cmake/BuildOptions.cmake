# What every target of this project is compiled and linked with.

add_library(uvel_build_options INTERFACE)
target_compile_options(uvel_build_options INTERFACE
    -Wall -Wextra -Wshadow -Wconversion $<$<BOOL:${UVEL_WARNINGS_END_BUILD}>:-Werror> -fno-semantic-interposition)
# gcc 12 sees overlapping copies in std::string's operator+ where there are none (its bug 105651)
target_compile_options(uvel_build_options INTERFACE $<$<COMPILE_LANG_AND_ID:CXX,GNU>:-Wno-restrict>)
# A sanitizer's report needs lines and functions; types would be a good part of the build.
if(UVEL_SANITIZE)
    target_compile_options(uvel_build_options INTERFACE -g1)
endif()
target_link_options(uvel_build_options INTERFACE -Wl,-z,defs -Wl,-z,relro -Wl,-z,now)

if(UVEL_SANITIZE)
    target_compile_options(uvel_build_options INTERFACE
        -fsanitize=${UVEL_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
    target_link_options(uvel_build_options INTERFACE -fsanitize=${UVEL_SANITIZE})
    if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
        # hooks are called through the type of their forwarder, which need not be their own
        target_compile_options(uvel_build_options INTERFACE -fno-sanitize=function)
        # programs in C bring no runtime for this check of C++ objects
        target_compile_options(uvel_build_options INTERFACE -fno-sanitize=vptr)
        # clang leaves a shared library's sanitizer symbols to the executable
        target_link_options(uvel_build_options INTERFACE -Wl,-z,undefs)
    endif()
endif()

# Only what is delivered counts: tests/CMakeLists.txt takes these options back, so that the tests are those of a release.
if(UVEL_COVERAGE)
    set(uvel_counted_options -O0 --coverage -fprofile-update=atomic)
    add_compile_options(${uvel_counted_options})
    add_library(uvel_coverage SHARED ${CMAKE_CURRENT_LIST_DIR}/coverage/at_exit.cpp)
    set_property(TARGET uvel_coverage PROPERTY COMPILE_OPTIONS "")
    target_sources(uvel_build_options INTERFACE ${CMAKE_CURRENT_LIST_DIR}/coverage/module.cpp)
    target_link_libraries(uvel_build_options INTERFACE uvel_coverage)
    # Each module writes its own counters: libgcov's functions must not be found in the library of another one.
    target_link_options(uvel_build_options INTERFACE --coverage -Wl,--exclude-libs,libgcov.a)
endif()
