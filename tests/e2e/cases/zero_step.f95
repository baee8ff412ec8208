! A DO increment that is 0 at run time: the run-time library's error 14.
program zero_step
  implicit none
  integer :: i, step
  step = 0
  do i = 1, 10, step
    print *, 'never'
  end do
end program zero_step
