! Every kind of value the debugger shows. Lines marked "! expect:" carry checks: at a
! stop there, each "EXPRESSION => TEXT" must evaluate to TEXT. "! let:" lines assign
! before the program goes on, and the program's own output then shows the new values.
! Built as a checking build (--undef): never-assigned locals and allocated blocks show as
! UNDEFINED.
module settings
  implicit none
  integer :: mode = 3
  real(8) :: scale = 0.5d0
  integer, parameter :: limit = 42
  integer, pointer :: mptr
  real(8), allocatable :: mbuf(:)
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
  type link
    integer :: v
    type(link), pointer :: next
  end type link
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
  character(len=4) :: names(0:1)
  integer :: odd(-2:3), grid(0:1, 2), seq(5)
  type(point) :: p
  type(shape) :: tri
  type(link), target :: first, second
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
  print *, 'start'                                  ! expect: ptr => POINTER not assigned; buf => ARRAY not allocated; mptr => POINTER not assigned; mbuf => ARRAY not allocated; i1 => UNDEFINED; i2 => UNDEFINED; i4 => UNDEFINED; i8 => UNDEFINED; r4 => UNDEFINED; r8 => UNDEFINED; c8 => UNDEFINED; c16 => UNDEFINED; l1 => UNDEFINED; l2 => UNDEFINED; l4 => UNDEFINED; l8 => UNDEFINED; odd(2) => UNDEFINED; p%x => UNDEFINED
  i1 = -7
  i2 = 300                                          ! expect: i1 => -7; i2 => UNDEFINED
  i4 = 123456
  i8 = -9000000000_8
  r4 = 1.5
  r8 = 0.1d0
  c8 = (1.5, -2.0)
  c16 = (0.25d0, 4.0d0)
  l1 = .true.
  l2 = .false.
  l4 = .true.
  l8 = .false.
  word = 'hi'
  names(0) = 'aa'
  names(1) = 'bbb'
  do i = -2, 3
    odd(i) = i * 10
  end do
  grid(0, 1) = 1
  grid(1, 1) = 2                                    ! expect: grid(0,1) => 1; grid(1,1) => UNDEFINED
  grid(0, 2) = 3
  grid(1, 2) = 4
  do i = 1, 5
    seq(i) = 10 * i
  end do
  p%x = 1.0d0
  p%y = -3.5d0                                      ! expect: p%x => 1; p%y => UNDEFINED; tri%corners => UNDEFINED
  tri%name = 'tri'
  tri%corners = 3
  do i = 1, 3
    tri%vertex(i)%x = i
    tri%vertex(i)%y = 2 * i
  end do
  first%v = 1
  second%v = 2
  first%next => second
  nullify(second%next)
  tgt = 77
  ptr => tgt
  mptr => tgt
  allocate(buf(-1:1))
  buf = 2.5                                         ! expect: buf(0) => UNDEFINED
  allocate(mbuf(2:3))
  mbuf = 1.25d0
  shared = 11
  pair(1) = 6.0d0
  pair(2) = -6.0d0
  print *, i1, i2, i4, i8                          ! expect: i1 => -7; i2 => 300; i4 => 123456; i8 => -9000000000; i1 + 0 => -7
  print *, r4, r8, c8, c16                         ! expect: r4 => 1.5; r8 => 0.1; c8 => (1.5,-2); c16 => (0.25,4); half => 0.5
  print *, l1, l2, l4, l8, word                    ! expect: l1 => .TRUE.; l2 => .FALSE.; l4 => .TRUE.; l8 => .FALSE.; word => 'hi   '; names(0) => 'aa  '; abc => 'abc'
  print *, odd, grid                               ! expect: odd => INTEGER*4 (-2:3); odd(-2) => -20; odd(3) => 30; grid => INTEGER*4 (0:1,2); grid(1,2) => 4; odd(4) => Array subscript out of bounds; names => CHARACTER*4 (0:1); seq => INTEGER*4 (5)
  print *, p%x, p%y, tri%name, tri%corners         ! expect: p => TYPE(POINT); p%y => -3.5; tri%name => 'tri   '; tri%vertex(2)%y => 4; tri%vertex => TYPE(POINT)(3); tri%corners * 2 => 6
  print *, first%v, second%v                       ! expect: first => TYPE(LINK); first%next%v => 2; second%next => POINTER not assigned; first%next%v + first%v => 3
  print *, ptr, tgt, buf                           ! expect: ptr => 77; buf => REAL*4 (-1:1); buf(1) => 2.5; loc(ptr) == loc(tgt) => .TRUE.; mptr => 77; mbuf => REAL*8 (2:3); mbuf(2) => 1.25
  print *, shared, pair, mode, scale, limit        ! expect: shared => 11; pair(2) => -6; mode => 3; scale => 0.5; limit => 42; mode * limit => 126
  print *, i4 + i1 * 2, r8 * 4, len_trim(word)     ! expect: i4 + i1 * 2 => 123442; r4 * 4 => 6; leng(word) => 2; leng(tri%name) => 3; c8 * 2 => (3,-4); p%x + p%y => -2.5
  print *, odd(1), odd(2)                          ! expect: odd(0:2) => INTEGER*4 (0:2); odd(1:2) => INTEGER*4 (2); odd(-5:0) => INTEGER*4 (-2:0); loc(odd(-1)) - loc(odd(-2)) => 4; loc(grid(0,2)) - loc(grid) => 8
  print *, i4 .GT. 100000 .AND. l4                 ! expect: i4 .GT. 100000 .AND. l4 => .TRUE.; i4 < 0 .OR. r4 == 1.5 => .TRUE.; odd(2) .NE. 20 => .FALSE.; .NOT. l2 => .TRUE.; (i2 - 100) / 8 => 25
  call inner(5)
  call span(seq, 3, seq)
  print *, 'let', i4, r8, word, odd(0)             ! let: i4 = 99; r8 = 2.25; word = 'abc'; odd(0) = -1; tri%corners = 4; pair(1) = -0.5; mode = 5; l4 = .FALSE.; ptr = 78; c8 = 3
  print *, 'others', tri%corners, mode, l4, tgt
  print *, mbuf                                    ! expect: tri%corners => 4; pair(1) => -0.5; mode => 5; l4 => .FALSE.; tgt => 78; c8 => (3,0)
contains
  subroutine inner(n)
    integer :: n
    integer :: local
    local = n * 2
    print *, local, n, i4                          ! expect: local => 10; n => 5; i4 => 123456; word => 'hi   '; ptr => 77; buf(-1) => 2.5; buf => REAL*4 (-1:1); local + n => 15
  end subroutine inner

  subroutine span(v, m, w)
    integer :: m
    integer :: v(m), w(*)
    print *, 'span', v(1), v(m), w(5)              ! expect: v(1) => 10; v(m) => 30; w(5) => 50
    print *, v(2)                                  ! expect: v => INTEGER*4 (3); v(3) => 30; w => INTEGER*4 (*); w(2) => 20; m => 3; v(4) => Array subscript out of bounds
  end subroutine span
end program all_types
