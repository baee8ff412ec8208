! COMMON blocks shared between routines, declared with different member names and a
! larger size in one routine; blank COMMON too.
program common_blocks
  implicit none
  integer :: n
  real(8) :: values(3)
  common /state/ n, values
  real :: shared
  common shared
  n = 3
  values = 0
  shared = 2.5
  call fill
  call report
  print *, 'main sees', n, values, shared
end program common_blocks

subroutine fill
  integer :: count
  real(8) :: v(3), extra
  common /state/ count, v, extra
  integer :: i
  do i = 1, count
    v(i) = i * 1.25d0
  end do
  extra = -1
  count = count + 1
end subroutine fill

subroutine report
  integer :: k
  real(8) :: w(4)
  common /state/ k, w
  real :: s
  common // s
  print *, 'report', k, w(4), s
  s = s * 2
end subroutine report
