! A program with a COMMON block of its own calling a library that has another.
program dll_common
  implicit none
  integer :: i, calls
  common /progstate/ calls
  do i = 1, 2
    calls = calls + 1
    call bump(i)
  end do
end program dll_common
