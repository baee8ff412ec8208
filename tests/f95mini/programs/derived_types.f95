! Derived types: nested types, array components, arrays of structures, structure
! assignment, a linked list through POINTER components, types as arguments.
module shapes
  implicit none
  type point
    real(8) :: x, y
  end type point
  type polygon
    character(len=8) :: name
    integer :: corners
    type(point) :: vertex(4)
  end type polygon
  type node
    integer :: value
    type(node), pointer :: next
  end type node
end module shapes

program derived_types
  use shapes
  implicit none
  type(point) :: p, q
  type(polygon) :: square
  type(point) :: path(0:2)
  type(node), pointer :: head, cursor
  type(node), target :: first
  integer :: i
  p%x = 1.5d0
  p%y = -2.0d0
  q = p
  q%y = q%y * 2
  print *, p%x, p%y, q%y
  square%name = 'square'
  square%corners = 4
  do i = 1, 4
    square%vertex(i)%x = i
    square%vertex(i)%y = i * 10
  end do
  print *, square%name, square%corners, square%vertex(3)%y
  do i = 0, 2
    path(i) = square%vertex(i + 1)
  end do
  print *, 'path', path(2)%x, length(path(0), path(2))
  call shift(square%vertex(4), 0.5d0)
  print *, 'shifted', square%vertex(4)%x, square%vertex(4)%y
  ! a list 1 -> 2 -> 3 built by ALLOCATE behind a TARGET head
  first%value = 1
  nullify(first%next)
  head => first
  cursor => head
  do i = 2, 3
    allocate(cursor%next)
    cursor => cursor%next
    cursor%value = i
    nullify(cursor%next)
  end do
  cursor => head
  do while (associated(cursor))
    print *, 'node', cursor%value
    cursor => cursor%next
  end do
contains
  real(8) function length(a, b)
    type(point) :: a, b
    length = sqrt((a%x - b%x) ** 2 + (a%y - b%y) ** 2)
  end function length
end program derived_types

subroutine shift(v, d)
  use shapes
  type(point) :: v
  real(8) :: d
  v%x = v%x + d
  v%y = v%y - d
end subroutine shift
