! The library that late_dll loads while it runs.
subroutine late_work(n)
  integer :: n
  n = n + 5                  ! late work
  print *, 'late work', n
end subroutine late_work
