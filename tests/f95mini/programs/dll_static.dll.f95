! A DLL whose routines keep static data between calls.
subroutine counter_add(n)
  integer :: n
  integer, save :: total = 0
  integer :: calls
  data calls /0/
  total = total + n
  calls = calls + 1
  print *, 'dll total', total, 'calls', calls
end subroutine counter_add

integer function counter_calls()
  integer :: hits = 100
  hits = hits + 1
  counter_calls = hits
end function counter_calls
