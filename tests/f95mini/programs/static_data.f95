! Static data: DATA statements (whole arrays and elements), initialised declarations
! (scalars, broadcast, array constructors), SAVE (also of a whole routine),
! PARAMETER constants of several types, and COMMON blocks (named and blank) declared with
! other member names and a larger size in one routine; last, STOP 'text' (error 345).
program static_data
  implicit none
  integer, parameter :: n = 3
  real(8), parameter :: pi = 3.14159265358979d0
  character(len=*), parameter :: title = 'data'
  logical, parameter :: on = .true.
  complex, parameter :: unit = (0.0, 1.0)
  integer :: table(n), i
  real, dimension(2, 2) :: weights
  character(len=4) :: code
  data table(1), table(3) /10, 30/, table(2) /20/
  data weights /4 * 0.25/, code /'ab'/
  integer :: counter = 7, primes(3) = (/ 2, 3, 5 /)
  real :: halves(2) = 0.5
  integer :: k
  real(8) :: values(3)
  common /state/ k, values
  real :: shared
  common shared
  print *, title, n, pi, on, unit
  print *, table, weights, '[', code, ']', counter, primes, halves
  do i = 1, 3
    call tally(i)
  end do
  call remembers
  call remembers
  k = 3
  values = 0
  shared = 2.5
  call fill
  call report
  print *, 'main sees', k, values, shared
  stop 'Negative input'
end program static_data

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

subroutine fill
  integer :: count
  real(8) :: v(3), extra
  common /state/ count, v, extra
  integer :: i
  do i = 1, count
    v(i) = i * 1.25d0
  end do
  extra = -1
  count = count + 1
end subroutine fill

subroutine report
  integer :: k
  real(8) :: w(4)
  common /state/ k, w
  real :: s
  common // s
  print *, 'report', k, w(4), s
  s = s * 2
end subroutine report
