! Every kind of value the debugger shows. Lines marked "! expect:" carry checks: at a
! stop there, each "EXPRESSION => TEXT" must evaluate to TEXT; "! let:" lines assign
! before the program goes on, and the program's own output then shows the new value.
module settings
  implicit none
  integer :: mode = 3
  real(8) :: scale = 0.5d0
  integer, parameter :: limit = 42
end module settings

program all_types
  use settings
  implicit none
  type point
    real(8) :: x, y
  end type point
  type shape
    character(len=6) :: name
    integer :: corners
    type(point) :: vertex(3)
  end type shape
  integer(1) :: i1
  integer(2) :: i2
  integer :: i4
  integer(8) :: i8
  real(4) :: r4
  real(8) :: r8
  complex :: c8
  complex(8) :: c16
  logical(1) :: l1
  logical(2) :: l2
  logical :: l4
  logical(8) :: l8
  character(len=5) :: word
  integer :: odd(-2:3), grid(0:1, 2)
  type(point) :: p
  type(shape) :: tri
  integer, pointer :: ptr
  integer, target :: tgt
  real, allocatable :: buf(:)
  integer :: shared
  real(8) :: pair(2)
  common /block/ shared, pair
  integer :: i
  real(8), parameter :: half = 0.5d0
  character(len=3), parameter :: abc = 'abc'

  nullify(ptr)
  print *, 'start'                                  ! expect: ptr => POINTER not assigned; buf => ARRAY not allocated
  i1 = -7
  i2 = 300
  i4 = 123456
  i8 = 9000000000_8
  r4 = 1.5
  r8 = 0.125d0
  c8 = (1.5, -2.0)
  c16 = (0.25d0, 4.0d0)
  l1 = .true.
  l2 = .false.
  l4 = .true.
  l8 = .false.
  word = 'hi'
  do i = -2, 3
    odd(i) = i * 10
  end do
  grid(0, 1) = 1
  grid(1, 1) = 2
  grid(0, 2) = 3
  grid(1, 2) = 4
  p%x = 1.0d0
  p%y = -3.5d0
  tri%name = 'tri'
  tri%corners = 3
  do i = 1, 3
    tri%vertex(i)%x = i
    tri%vertex(i)%y = 2 * i
  end do
  tgt = 77
  ptr => tgt
  allocate(buf(-1:1))
  buf = 2.5
  shared = 11
  pair(1) = 6.0d0
  pair(2) = -6.0d0
  print *, i1, i2, i4, i8                          ! expect: i1 => -7; i2 => 300; i4 => 123456; i8 => 9000000000
  print *, r4, r8, c8, c16                         ! expect: r4 => 1.5; r8 => 0.125; c8 => (1.5,-2); c16 => (0.25,4)
  print *, l1, l2, l4, l8, word                    ! expect: l1 => .TRUE.; l2 => .FALSE.; l4 => .TRUE.; l8 => .FALSE.; word => 'hi   '
  print *, odd, grid                               ! expect: odd => INTEGER*4 (-2:3); odd(-2) => -20; odd(3) => 30; grid => INTEGER*4 (0:1,2); grid(1,2) => 4; odd(4) => Array subscript out of bounds
  print *, p%x, p%y, tri%name, tri%corners         ! expect: p => TYPE(POINT); p%y => -3.5; tri%name => 'tri   '; tri%vertex(2)%y => 4; tri%corners * 2 => 6
  print *, ptr, tgt, buf                           ! expect: ptr => 77; buf => REAL*4 (-1:1); buf(1) => 2.5; loc(ptr) == loc(tgt) => .TRUE.
  print *, shared, pair, mode, scale, limit        ! expect: shared => 11; pair(2) => -6; mode => 3; scale => 0.5; limit => 42; half => 0.5; abc => 'abc'
  print *, i4 + i1 * 2, r8 * 4, len_trim(word)     ! expect: i4 + i1 * 2 => 123442; r8 * 4 => 0.5; leng(word) => 2; odd(1:2) => INTEGER*4 (1:2); i4 .GT. 100000 .AND. l4 => .TRUE.
  call inner(5)
  print *, 'let', i4, r8, word, odd(0)             ! let: i4 = 99; r8 = 2.25; word = 'abc'; odd(0) = -1
  print *, 'after', i4, r8, word, odd(0)           ! expect: i4 => 99; r8 => 2.25; word => 'abc  '; odd(0) => -1
contains
  subroutine inner(n)
    integer :: n
    integer :: local
    local = n * 2
    print *, local, n, i4                          ! expect: local => 10; n => 5; i4 => 123456; word => 'hi   '
  end subroutine inner
end program all_types
