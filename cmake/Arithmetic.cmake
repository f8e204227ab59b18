# How every part of the library is compiled: the same bits in every build.
#
# The arithmetic is written out (extended precision where it is wanted, wrapping on unsigned words), so the compiler gets
# no leave to change a result: no contraction to fused multiply-adds, no part of -ffast-math that reorders or drops.
# -fno-math-errno and -fno-trapping-math give up errno and exception flags alone; values stay.
#
# Image pointers may have any address. The vectoriser must not peel iterations to reach an alignment that never comes.
add_library(tevcv_flags INTERFACE)
target_compile_options(tevcv_flags INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow $<$<COMPILE_LANGUAGE:CXX>:-Wno-unknown-pragmas>
  -O3 -ffp-contract=off -fno-math-errno -fno-trapping-math --param=vect-max-peeling-for-alignment=0
  -fvisibility=hidden $<$<COMPILE_LANGUAGE:CXX>:-fvisibility-inlines-hidden> -fno-semantic-interposition
  $<$<COMPILE_LANGUAGE:CXX>:-fno-exceptions> $<$<COMPILE_LANGUAGE:CXX>:-fno-rtti>)
if(TEVCV_WERROR)
  target_compile_options(tevcv_flags INTERFACE -Werror)
endif()
if(TEVCV_SANITIZE)
  # Images at odd addresses are part of the contract, so alignment is not a finding.
  target_compile_options(tevcv_flags INTERFACE -O1 -g -fno-omit-frame-pointer
    -fsanitize=address,undefined,float-cast-overflow -fno-sanitize=alignment -fno-sanitize-recover=all)
  add_link_options(-fsanitize=address,undefined)
endif()
