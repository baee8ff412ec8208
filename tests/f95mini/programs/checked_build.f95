! A checking build: --undef fills locals, temporaries and ALLOCATEd blocks with bytes 0x80
! before use, and --check stops a subscript outside its bounds with error 11.
program checked_build
  implicit none
  integer :: never, v(-1:3), i
  integer(2) :: short
  integer, allocatable :: block(:)
  print *, never, short
  allocate(block(2))
  print *, block
  do i = -1, 3
    v(i) = i
  end do
  print *, 'last good', v(3)
  i = 4
  v(i) = 0
  print *, 'not reached'
end program checked_build
