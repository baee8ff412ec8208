! --undef fills locals, temporaries and ALLOCATEd blocks with bytes 0x80 before use.
program undefined_values
  implicit none
  integer :: never
  integer(2) :: short
  integer, allocatable :: block(:)
  print *, never, short
  allocate(block(2))
  print *, block
  never = 1
  print *, never
end program undefined_values
