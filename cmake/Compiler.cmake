# The compiler options of everything that is built here.

set(TARSEL_SANITIZERS "")
if(TARSEL_SANITIZE)
    set(TARSEL_SANITIZERS -fsanitize=address,undefined,float-cast-overflow
        -fno-sanitize-recover=all)
endif()

function(tarsel_compile_options target)
    target_compile_options(${target} PRIVATE
        # Results are defined to the bit: no multiply-add where the code says multiply and add.
        -ffp-contract=off
        -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow -Wformat=2
        -Wcast-align -Wundef
        $<$<COMPILE_LANGUAGE:CXX>:-Wold-style-cast -Woverloaded-virtual -Wnon-virtual-dtor
            -Wextra-semi -Wzero-as-null-pointer-constant>
        $<$<BOOL:${TARSEL_WERROR}>:-Werror>
    )
    if(TARSEL_FUZZ)
        target_compile_options(${target} PRIVATE -fsanitize=fuzzer-no-link)
        target_link_options(${target} PRIVATE -fsanitize=fuzzer-no-link)
    endif()
    if(TARSEL_SANITIZE)
        target_compile_options(${target} PRIVATE ${TARSEL_SANITIZERS} -fno-omit-frame-pointer)
        target_link_options(${target} PRIVATE ${TARSEL_SANITIZERS})
    endif()
endfunction()
