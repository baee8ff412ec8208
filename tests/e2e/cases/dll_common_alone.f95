! A program without COMMON calling a library that has one.
program dll_common_alone
  implicit none
  call bump(7)
end program dll_common_alone
