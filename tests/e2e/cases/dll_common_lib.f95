! A library routine whose COMMON block lives in the library.
subroutine bump(n)
  implicit none
  integer :: n
  integer :: hits
  real(8) :: level
  common /libstate/ hits, level
  hits = hits + n
  level = level + 0.5d0
  print *, 'bump', hits, level
end subroutine bump
