! Built with --undef: variables never assigned hold bytes 0x80 and show as UNDEFINED.
program undefined
  implicit none
  type pair
    integer :: a
    real(8) :: b
  end type pair
  integer(1) :: i1
  integer(2) :: i2
  integer :: i4
  integer(8) :: i8
  real(4) :: r4
  real(8) :: r8
  complex :: c8
  complex(8) :: c16
  logical(1) :: l1
  logical :: l4
  logical(8) :: l8
  integer :: row(3)
  type(pair) :: two
  real(8), allocatable :: block(:)
  print *, 'start'                                 ! expect: i1 => UNDEFINED; i2 => UNDEFINED; i4 => UNDEFINED; i8 => UNDEFINED; r4 => UNDEFINED; r8 => UNDEFINED; c8 => UNDEFINED; c16 => UNDEFINED; l1 => UNDEFINED; l4 => UNDEFINED; l8 => UNDEFINED; row(2) => UNDEFINED; two%a => UNDEFINED; two%b => UNDEFINED; block => ARRAY not allocated
  i4 = 5
  r8 = 1.0d0
  row(1) = 0
  two%a = -1
  allocate(block(2))
  print *, i4, r8, row(1)                          ! expect: i4 => 5; r8 => 1; i8 => UNDEFINED; row(1) => 0; row(3) => UNDEFINED; two%a => -1; two%b => UNDEFINED; block(2) => UNDEFINED
end program undefined
