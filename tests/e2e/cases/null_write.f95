! Writes through a pointer that points nowhere: an access violation in the program itself.
program null_write
  implicit none
  integer, pointer :: p
  integer :: n
  n = 1
  nullify(p)
  p = n
  print *, 'never', n
end program null_write
