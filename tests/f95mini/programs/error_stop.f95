! STOP 'text' reports the text as error 345.
program error_stop
  print *, 'checking'
  call check(-1)
  print *, 'never'
end program error_stop

subroutine check(n)
  integer :: n
  if (n < 0) stop 'Negative input'
end subroutine check
