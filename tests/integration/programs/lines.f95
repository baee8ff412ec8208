! The debug tables of a program and two DLLs under Wine: the main program calls routines
! of a DLL linked at build time, and C code loads a second DLL at run time into a place
! where its preferred base is taken, so that it must be relocated. The breakpoint tests
! find lines by the marker comments.
program lines
  implicit none
  integer :: total, i
  integer, external :: triple
  total = 0
  do i = 1, 3
    call accumulate(total, i)
  end do
  total = total + triple(total)
  call lib_add(total)
  call load_moved()                 ! load the library
  print *, 'total', total
end program lines

subroutine accumulate(total, i)
  integer :: total, i
  if (mod(i, 2) == 0) then
    total = total + i
  else
    total = total + 2 * i
  end if
end subroutine accumulate

integer function triple(n)
  integer :: n
  triple = 3 * n
end function triple
