! Fortran calling C in a library of its own, which calls back into Fortran: the walk
! crosses from our compiler's code into the system walker's and back.
program callback
  implicit none
  external visit
  integer :: values(3)
  values = 1
  values(2) = 2
  call apply_each(values, 3, visit) ! stop: call C
  call load_and_apply(values, 3, visit) ! stop: call late C
  print *, values
end program callback

subroutine visit(v)
  implicit none
  integer :: v
  v = v + 10 ! stop: visit
end subroutine visit
