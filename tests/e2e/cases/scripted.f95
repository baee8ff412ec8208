! A program for scripted sessions: a loop that calls a subroutine, an array filled as it
! goes, a derived type and a scalar that the script changes.
module shapes
  implicit none
  type point
    real(8) :: x, y
  end type point
end module shapes

program scripted
  use shapes
  implicit none
  integer :: i, total
  integer :: squares(5)
  type(point) :: corner
  real(8) :: scale
  total = 0
  scale = 1.5d0
  corner%x = 1.0d0
  corner%y = -2.0d0
  squares = 0
  do i = 1, 5
    squares(i) = i * i
    call accumulate(total, squares(i))
  end do
  corner%x = corner%x * scale
  print *, 'total', total
  print *, 'corner', corner%x, corner%y
end program scripted

subroutine accumulate(sum, value)
  integer :: sum, value
  sum = sum + value
end subroutine accumulate
