! POINTER and ALLOCATABLE: allocatable arrays of rank 1 and 2 with odd bounds, pointers
! to scalars and arrays, ALLOCATED/ASSOCIATED, DEALLOCATE, NULLIFY and => NULL().
program pointers
  implicit none
  real(8), allocatable :: grid(:,:)
  integer, allocatable :: list(:)
  integer, pointer :: p, view(:)
  integer, target :: t, numbers(-1:3)
  real, pointer :: cell
  integer :: i, j, n
  n = 3
  print *, allocated(list), associated(p)
  allocate(list(0:n))
  do i = 0, n
    list(i) = 10 * i
  end do
  print *, list, size(list), allocated(list)
  allocate(grid(-1:1, 2:3))
  do j = 2, 3
    do i = -1, 1
      grid(i, j) = i + 0.5d0 * j
    end do
  end do
  print *, grid(1, 3), grid(-1, 2), size(grid), size(grid, 2)
  t = 7
  p => t
  p = p * 6
  print *, t, associated(p)
  do i = -1, 3
    numbers(i) = i * i
  end do
  view => numbers
  print *, view(2), size(view)
  view(-1) = 100
  print *, numbers(-1)
  allocate(cell)
  cell = 2.5
  print *, cell
  deallocate(cell)
  p => null()
  print *, associated(p), associated(cell)
  deallocate(list)
  print *, allocated(list)
  allocate(list(2))
  list = 4
  print *, list
end program pointers
