! A program for the batch drivers: a loop that calls a function and a subroutine.
program batch
  implicit none
  integer :: i, total, twice
  integer :: values(3)
  total = 0
  values = 0
  do i = 1, 2
    values(i) = twice(i)
    call add(total, values(i))
  end do
  print *, 'total', total
end program batch

integer function twice(n)
  integer :: n
  twice = 2 * n
end function twice

subroutine add(sum, value)
  integer :: sum, value
  sum = sum + value
end subroutine add
