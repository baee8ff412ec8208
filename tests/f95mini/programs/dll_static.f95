! A program calling routines of a DLL built by f95mini; their SAVE and DATA variables
! live in the DLL's own static data.
program dll_static
  implicit none
  integer, external :: counter_calls
  integer :: i
  do i = 1, 3
    call counter_add(i * 10)
  end do
  print *, counter_calls(), counter_calls()
end program dll_static
