! Internal procedures reaching their host's locals, dummies, pointers and statics;
! siblings calling each other with the host's link; STOP 3 ends the program with status 3.
program host_association
  implicit none
  integer :: level
  real, allocatable :: buffer(:)
  integer, save :: calls = 0
  level = 1
  allocate(buffer(3))
  buffer = 0.5
  call outer(4)
  print *, 'level', level, 'calls', calls, buffer
  call worker(level, calls)
  stop 3
contains
  subroutine outer(depth)
    integer :: depth
    level = level + depth
    calls = calls + 1
    call inner(depth)
  end subroutine outer
  subroutine inner(d)
    integer :: d
    buffer(2) = buffer(2) + d
    calls = calls + 1
  end subroutine inner
end program host_association

subroutine worker(n, m)
  integer :: n, m
  integer :: local
  integer, pointer :: p
  integer, target :: t
  local = 10
  t = 5
  p => t
  call step
  print *, 'worker', n, m, local, t
contains
  subroutine step
    n = n + 1
    m = m * 2
    local = local + n
    p = p + 100
  end subroutine step
end subroutine worker
