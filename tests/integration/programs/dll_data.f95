! A program calling a routine of a library our compiler built; the routine's SAVE data
! lives in the library's own static data.
program dll_data
  implicit none
  integer :: i
  do i = 1, 2
    call tally(i)
  end do
end program dll_data
