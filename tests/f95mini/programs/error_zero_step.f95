! A DO increment that is 0 at run time is error 14.
program error_zero_step
  integer :: i, step
  step = 0
  print *, 'before'
  do i = 1, 10, step
    print *, 'never'
  end do
end program error_zero_step
