# quorlan_numerics: the floating-point rules that the results depend on. Private to our targets, never on a caller's.
add_library(quorlan_numerics INTERFACE)
if(CMAKE_CXX_COMPILER_ID MATCHES "GNU|Clang")
    target_compile_options(quorlan_numerics INTERFACE -ffp-contract=off -fno-fast-math)
elseif(MSVC)
    target_compile_options(quorlan_numerics INTERFACE /fp:precise)
endif()

# quorlan_developer: warnings, sanitizers and coverage of our own builds. Never installed.
add_library(quorlan_developer INTERFACE)
if(CMAKE_CXX_COMPILER_ID MATCHES "GNU|Clang")
    # Clang's -Wconversion brings -Wsign-conversion along, GCC's does not: both see the same warnings.
    target_compile_options(quorlan_developer INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion
                                                       -Wno-sign-conversion)
    if(QUORLAN_WERROR)
        target_compile_options(quorlan_developer INTERFACE -Werror)
    endif()
    if(QUORLAN_SANITIZERS)
        target_compile_options(
            quorlan_developer INTERFACE -fsanitize=${QUORLAN_SANITIZERS} -fno-sanitize-recover=all
                                        -fno-omit-frame-pointer)
        target_link_options(quorlan_developer INTERFACE -fsanitize=${QUORLAN_SANITIZERS})
    endif()
    if(QUORLAN_COVERAGE)
        target_compile_options(quorlan_developer INTERFACE --coverage)
        target_link_options(quorlan_developer INTERFACE --coverage)
    endif()
endif()
