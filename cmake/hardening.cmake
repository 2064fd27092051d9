# Hardening by compiler and linker against malformed files: for libraries and programs that read files, not for the
# tests.
include(CheckCXXCompilerFlag)
include(CheckPIESupported)

# Without this, CMake leaves it to the compiler whether programs are linked as PIE.
check_pie_supported(LANGUAGES C CXX)

set(hardening_options)
# Not with sanitizers: they check more, and do not intercept the checked functions that _FORTIFY_SOURCE calls.
if(NOT SUBTITLE_SANITIZE)
  # -fno-plt: all symbols are bound at load time (-z now), so calls do not need the PLT. That makes up for part of the
  # cost of the other flags.
  set(CMAKE_REQUIRED_FLAGS -Werror) # Clang only warns of flags for other processors
  foreach(flag -fno-plt -fstack-protector-strong -fstack-clash-protection -fcf-protection -mbranch-protection=standard)
    string(MAKE_C_IDENTIFIER "HAVE${flag}" have)
    check_cxx_compiler_flag(${flag} ${have})
    if(${have})
      list(APPEND hardening_options ${flag})
    endif()
  endforeach()
  unset(CMAKE_REQUIRED_FLAGS)

  # Only with optimisation, as the C library warns without. -U comes first, as the compiler warns if a distribution's
  # level is redefined.
  set(optimised $<CONFIG:Release,RelWithDebInfo,MinSizeRel>)
  list(APPEND hardening_options $<${optimised}:-U_FORTIFY_SOURCE> $<${optimised}:-D_FORTIFY_SOURCE=3>)
endif()

function(subtitle_harden target)
  if(NOT SUBTITLE_HARDENING)
    return()
  endif()
  target_compile_options(${target} PRIVATE ${hardening_options})
  target_link_options(${target} PRIVATE LINKER:-z,relro LINKER:-z,now LINKER:-z,noexecstack)
endfunction()
