! A call to a routine that no file defines is error 29 with the routine's name.
program error_missing
  real :: x
  x = 2.5
  print *, 'calling'
  call not_linked_anywhere(x)
  print *, 'never'
end program error_missing
