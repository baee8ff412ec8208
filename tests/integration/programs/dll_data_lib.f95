! The library of dll_data: a routine with static data.
subroutine tally(n)
  implicit none
  integer :: n
  integer, save :: total = 555000
  real(8), save :: scale = 555001.5d0
  total = total + n
  scale = scale + n ! stop: tally
end subroutine tally
