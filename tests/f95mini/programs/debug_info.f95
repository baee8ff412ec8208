! The debug tables read back at run time: INSPECT (debug_info_helpers.c) locates each variable the way
! the debugger does and prints it; every address type, static and dynamic array bounds,
! derived types (also before their records), COMMON members and constants.
module settings
  implicit none
  integer :: level = 3
  real(8), allocatable :: weights(:)
end module settings

program debug_info
  use settings
  implicit none
  type pair
    integer :: key
    character(len=3) :: tag
  end type pair
  type holder
    type(pair) :: inner
    real :: values(2)
  end type holder
  integer, parameter :: limit = 12
  integer :: count, grid(-1:1, 2)
  real(8) :: ratio
  complex :: z
  logical :: ok
  character(len=5) :: word
  type(holder) :: h
  integer, allocatable :: list(:)
  integer, pointer :: p
  integer, target :: t
  integer, save :: runs = 4
  real :: shared(3)
  common /blk/ shared
  count = 7
  grid = 0
  grid(1, 2) = 5
  ratio = 0.25d0
  z = (1.5, -2.0)
  ok = .true.
  word = 'hello'
  h%inner%key = 9
  h%inner%tag = 'abc'
  h%values(1) = 1.5
  h%values(2) = 2.5
  allocate(list(0:2))
  list(0) = 10
  list(1) = 11
  list(2) = 12
  t = 99
  p => t
  shared(2) = 6.5
  allocate(weights(-2:-1))
  weights(-2) = 0.5d0
  weights(-1) = 1.5d0
  call inspect('count')
  call inspect('grid')
  call inspect('ratio')
  call inspect('z')
  call inspect('ok')
  call inspect('word')
  call inspect('h')
  call inspect('list')
  call inspect('p')
  call inspect('runs')
  call inspect('shared')
  call inspect('limit')
  call inspect('level')
  call inspect('weights')
  call host_view(count)
  call worker(list, 3, word, grid)
contains
  subroutine host_view(n)
    integer :: n
    n = n + 1
    call inspect('n')
    call inspect('count')
    call inspect('list')
    call inspect('runs')
    call inspect('shared')
  end subroutine host_view
end program debug_info

subroutine worker(v, n, s, g)
  integer :: n
  integer :: v(0:n - 1)
  character(len=*) :: s
  integer :: g(3, *)
  integer :: local(2)
  local(1) = n
  local(2) = v(2)
  call inspect('n')
  call inspect('v')
  call inspect('s')
  call inspect('g')
  call inspect('local')
  call inner
contains
  subroutine inner
    call inspect('n')
    call inspect('v')
    call inspect('local')
  end subroutine inner
end subroutine worker
