! Built with --undef: variables never assigned hold bytes 0x80 and show as UNDEFINED.
program undefined
  implicit none
  integer(1) :: i1
  integer(2) :: i2
  integer :: i4
  integer(8) :: i8
  real(4) :: r4
  real(8) :: r8
  complex(8) :: c16
  logical :: l4
  print *, 'start'                                 ! expect: i1 => UNDEFINED; i2 => UNDEFINED; i4 => UNDEFINED; i8 => UNDEFINED; r4 => UNDEFINED; r8 => UNDEFINED; c16 => UNDEFINED; l4 => UNDEFINED
  i4 = 5
  r8 = 1.0d0
  print *, i4, r8                                  ! expect: i4 => 5; r8 => 1; i8 => UNDEFINED
end program undefined
