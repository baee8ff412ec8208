! Loops, calls and returns for the breakpoint and stepping tests. The tests find lines by
! the marker comments.
program stepping
  implicit none
  integer :: i, total
  total = 0
  do i = 1, 10
    total = total + i        ! loop body
  end do
  call work(total)           ! call work
  total = total + 1          ! after work
  print *, 'total', total
end program stepping

subroutine work(n)
  integer :: n
  n = n * 2                  ! work first
  call leaf(n)               ! call leaf
  n = n + 3                  ! work last statement
end subroutine work          ! work end

subroutine leaf(m)
  integer :: m
  m = m - 1                  ! leaf body
end subroutine leaf            ! leaf end
