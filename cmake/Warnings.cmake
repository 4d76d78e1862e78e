# vindaro_warnings(target): the project's warning set, errors when VINDARO_WERROR is on.
function(vindaro_warnings target)
  target_compile_options(${target} PRIVATE
    -Wall -Wextra -Wshadow -Wconversion -Wold-style-cast -Wnon-virtual-dtor
    -Wno-sign-conversion)
  if(VINDARO_WERROR)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
endfunction()
