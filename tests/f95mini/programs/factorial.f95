! Recursion through an internal function, host association and a DO loop.
program factorial_test
  implicit none
  integer :: i
  integer(8) :: big
  do i = 0, 6
    print *, 'factorial', i, fact(i)
  end do
  big = 1
  do i = 1, 20
    big = big * i
  end do
  print *, '20! =', big
contains
  recursive function fact(n) result(r)
    integer, intent(in) :: n
    integer :: r
    if (n <= 1) then
      r = 1
    else
      r = n * fact(n - 1)
    end if
  end function fact
end program factorial_test
