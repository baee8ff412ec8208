! Variables of every address type the compiler writes, each holding a value of its own,
! and stops (marked "! stop:") where the test reads them back at the addresses the
! debugger computes.
module shapes
  implicit none
  type point
    integer :: x
    real(8) :: y
  end type point
end module shapes

program address_types
  use shapes
  implicit none
  integer :: host_local
  integer, allocatable :: host_list(:)
  integer, parameter :: answer = 4242
  integer :: first
  real(8) :: second
  common /shared/ first, second
  type(point) :: spot
  integer :: argument
  host_local = 111001
  allocate(host_list(2))
  host_list(1) = 111002
  host_list(2) = 111003
  first = 111004
  second = 111005.5d0
  spot%x = 111006
  spot%y = 111007.5d0
  argument = 111008
  call inside(argument)
  call hosting(222001)
  call keeper
  call common_reader
  print *, host_local, argument, first, second, spot%x, spot%y, answer
contains
  subroutine inside(k)
    integer :: k
    k = k + 1 ! stop: inside
    host_local = host_local + host_list(1)
  end subroutine inside
end program address_types

subroutine hosting(arg)
  implicit none
  integer :: arg
  integer :: mine
  integer, pointer :: view
  integer, target :: target_value
  mine = 222002
  target_value = 222003
  view => target_value
  call nested
  print *, 'hosting', mine
contains
  subroutine nested
    mine = mine + arg + view ! stop: nested
  end subroutine nested
end subroutine hosting

subroutine keeper
  implicit none
  integer, save :: kept = 333001
  real(8), save :: also_kept = 333002.5d0
  kept = kept + 1 ! stop: keeper
  also_kept = also_kept + 1
end subroutine keeper

subroutine common_reader
  implicit none
  integer :: first
  real(8) :: second
  common /shared/ first, second
  first = first + 1 ! stop: common_reader
  second = second + 1
end subroutine common_reader
