! With --check, a subscript outside its bounds stops the program with error 11.
program error_subscript
  integer :: v(-1:3), i
  do i = -1, 3
    v(i) = i
  end do
  print *, 'last good', v(3)
  i = 4
  v(i) = 0
  print *, 'not reached'
end program error_subscript
