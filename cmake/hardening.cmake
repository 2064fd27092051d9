# What compiler and linker put between a file that is wrong and the host: for what reads files, not for the tests.
include(CheckCXXCompilerFlag)
include(CheckPIESupported)

# Without it CMake leaves linking as PIE to the compiler's default.
check_pie_supported(LANGUAGES C CXX)

set(hardening_options)
# The sanitizers check more, and do not know the checked functions that fortifying calls.
if(NOT SUBTITLE_SANITIZE)
  # The linker asks for all addresses at the start, so calls need no detour through a table that looks them up; leaving
  # it out makes good for part of what the guards cost.
  foreach(flag -fno-plt -fstack-protector-strong -fstack-clash-protection -fcf-protection)
    string(MAKE_C_IDENTIFIER "HAVE${flag}" have)
    check_cxx_compiler_flag(${flag} ${have})
    if(${have})
      list(APPEND hardening_options ${flag})
    endif()
  endforeach()

  # It needs optimisation, or the C library warns; and so does the compiler of a level over that of the distribution.
  set(optimised $<CONFIG:Release,RelWithDebInfo,MinSizeRel>)
  list(APPEND hardening_options $<${optimised}:-U_FORTIFY_SOURCE> $<${optimised}:-D_FORTIFY_SOURCE=3>)
endif()

function(subtitle_harden target)
  target_compile_options(${target} PRIVATE ${hardening_options})
  target_link_options(${target} PRIVATE LINKER:-z,relro LINKER:-z,now LINKER:-z,noexecstack)
endfunction()
