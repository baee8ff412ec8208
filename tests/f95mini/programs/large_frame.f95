! Frames of 4096 bytes and more are allocated by the stack probe; recursion through such
! frames touches every page in turn.
program large_frame
  implicit none
  real(8) :: big(2000)
  integer :: i
  integer, external :: deep
  do i = 1, 2000
    big(i) = i
  end do
  print *, big(1), big(2000), deep(3)
  call huge_locals
end program large_frame

recursive integer function deep(n) result(r)
  integer :: n
  integer :: pad(5000)
  pad(5000) = n
  if (n == 0) then
    r = 0
  else
    r = pad(5000) + deep(n - 1)
  end if
end function deep

subroutine huge_locals
  integer :: block(300000)
  block(1) = 1
  block(300000) = 2
  print *, 'huge', block(1) + block(300000)
end subroutine huge_locals
