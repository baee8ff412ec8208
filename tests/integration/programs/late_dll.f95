! Calls a routine of a library that it loads only while it runs.
program late_dll
  implicit none
  integer :: n
  n = 1
  call load_and_call(n)      ! load the library
  print *, 'n', n
end program late_dll
