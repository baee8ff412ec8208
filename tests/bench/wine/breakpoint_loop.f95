! The program of the breakpoint benchmark: a line reached on every pass of a long loop,
! and a call of a routine with debug information on the next line.
program breakpoint_loop
  implicit none
  integer :: i, total
  total = 0
  do i = 1, 20000
    total = total + i        ! counted line
    call step_target(total)  ! call line
  end do
  print *, total
end program breakpoint_loop

subroutine step_target(n)
  integer :: n
  n = n + 1
  n = n - 1
end subroutine step_target
