! CHAR of a value outside 0-255 is error 15, checked in every build.
program error_char
  integer :: code
  character :: c
  code = 65
  c = char(code)
  print *, c
  code = 300
  c = char(code)
  print *, 'never'
end program error_char
