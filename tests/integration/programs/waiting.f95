! A program that waits inside the system, called through a C library: paused there, the
! walk starts in system code and hands over to our compiler's frames at the end.
program waiting
  implicit none
  integer :: seconds
  seconds = 30
  call wait_in_c(seconds) ! stop: call wait
  print *, seconds
end program waiting
