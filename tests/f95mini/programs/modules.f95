! Module variables, constants, types and procedures; USE with ONLY; module procedures
! calling each other; a module using another module; STOP.
module counters
  implicit none
  integer, parameter :: limit = 5
  integer :: total = 0
  integer :: history(limit)
  character(len=6) :: label = 'count:'
contains
  subroutine bump(by)
    integer, intent(in) :: by
    total = total + by
    call remember
  end subroutine bump
  subroutine remember
    integer :: slot
    slot = mod(total, limit) + 1
    history(slot) = total
  end subroutine remember
  integer function doubled()
    doubled = 2 * total
  end function doubled
end module counters

module reports
  use counters, only: total, label, doubled
  implicit none
  real(8), save :: scale = 1.5d0
contains
  subroutine report()
    print *, label, total, doubled(), total * scale
  end subroutine report
end module reports

program modules
  use counters
  use reports
  implicit none
  integer :: i
  history = 0
  do i = 1, 4
    call bump(i)
  end do
  call report
  scale = 2
  call report
  print *, history, limit
  stop
end program modules
