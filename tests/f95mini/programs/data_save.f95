! DATA statements, initialised declarations, SAVE (also SAVE of a whole routine) and
! PARAMETER constants of several types.
program data_save
  implicit none
  integer, parameter :: n = 3
  real(8), parameter :: pi = 3.14159265358979d0
  character(len=*), parameter :: title = 'data'
  logical, parameter :: on = .true.
  complex, parameter :: unit = (0.0, 1.0)
  integer :: table(n), i
  real :: weights(2, 2)
  character(len=4) :: code
  data table /10, 20, 30/
  data weights /4 * 0.25/, code /'ab'/
  integer :: counter = 7
  print *, title, n, pi, on, unit
  print *, table, weights, '[', code, ']', counter
  do i = 1, 3
    call tally(i)
  end do
  call remembers
  call remembers
end program data_save

subroutine tally(k)
  integer :: k
  integer, save :: sum = 0
  integer :: seen
  data seen /0/
  sum = sum + k
  seen = seen + 1
  print *, 'tally', k, sum, seen
end subroutine tally

subroutine remembers
  save
  integer :: visits
  real(8) :: last
  if (visits == 0) last = 1
  visits = visits + 1
  last = last * 2
  print *, 'visits', visits, last
end subroutine remembers
