! Mixed languages: a C routine that calls back a Fortran routine passed as an argument,
! and a C function called from Fortran.
program c_callback
  implicit none
  external square_it
  integer, external :: c_sum
  integer :: values(4), i
  real(8) :: x
  do i = 1, 4
    values(i) = i
  end do
  call apply_each(values, 4, square_it)
  print *, values
  print *, 'sum from C', c_sum(values, 4)
  x = 2.0d0
  call c_scale(x)
  print *, x
end program c_callback

subroutine square_it(v)
  integer :: v
  v = v * v
end subroutine square_it
