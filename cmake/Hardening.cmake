# Options that turn memory errors into crashes instead of exploits: in every optimised build without a
# sanitizer, which finds more.
include_guard()
include(CheckCXXCompilerFlag)
include(CheckPIESupported)

if(SONVEL_SANITIZE OR SONVEL_FUZZ)
  return()
endif()

check_pie_supported(LANGUAGES CXX)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

set(flags
    -U_FORTIFY_SOURCE  # the compiler may define a lower level
    -D_FORTIFY_SOURCE=3
    -D_GLIBCXX_ASSERTIONS
    -fstack-protector-strong)
set(CMAKE_REQUIRED_FLAGS -Werror)
check_cxx_compiler_flag(-fstack-clash-protection SONVEL_HAS_STACK_CLASH_PROTECTION) # clang 16 lacks it on ARM
unset(CMAKE_REQUIRED_FLAGS)
if(SONVEL_HAS_STACK_CLASH_PROTECTION)
  list(APPEND flags -fstack-clash-protection)
endif()
list(APPEND flags -ftrivial-auto-var-init=zero)
if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|i[3-6]86)$")
  list(APPEND flags -fcf-protection=full)
elseif(CMAKE_SYSTEM_PROCESSOR STREQUAL "aarch64")
  list(APPEND flags -mbranch-protection=standard)
endif()

add_compile_options("$<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:${flags}>")
add_link_options("LINKER:-z,relro,-z,now,-z,noexecstack")
