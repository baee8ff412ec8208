! Arrays with odd bounds: sums over rank 1 to 3, dummies whose bounds come from other
! dummies, assumed-size dummies and whole-array printing; frames of 4096 bytes and more,
! allocated by the stack probe (recursion through them touches every page in turn).
program arrays
  implicit none
  integer :: a(-3:4), i, j, k
  real(8) :: m(0:2, -1:1), total
  integer :: cube(2, 3, 2)
  integer, external :: total_of, deep
  real(8) :: big(2000)
  do i = -3, 4
    a(i) = i * i
  end do
  print *, 'a =', a
  print *, 'sum a =', sum_range(a, -3, 4), total_of(a, 8)
  total = 0
  do j = -1, 1
    do i = 0, 2
      m(i, j) = i + 10 * j
      total = total + m(i, j)
    end do
  end do
  print *, 'total m =', total, m(2, -1), m(0, 1)
  call scale(m, 3, 3, 0.5d0)
  print *, 'scaled', m(2, 1)
  do k = 1, 2
    do j = 1, 3
      do i = 1, 2
        cube(i, j, k) = 100 * i + 10 * j + k
      end do
    end do
  end do
  print *, cube
  print *, 'size', size(cube), size(m, 1), size(a)
  do i = 10, 1, -3
    print *, 'down', i
  end do
  big(2000) = 2000
  print *, big(2000), deep(3)
  call huge_locals
contains
  integer function sum_range(v, lo, hi)
    integer :: lo, hi
    integer :: v(lo:hi)
    integer :: n
    sum_range = 0
    do n = lo, hi
      sum_range = sum_range + v(n)
    end do
  end function sum_range
end program arrays

integer function total_of(v, n)
  integer :: n, v(*), i
  total_of = 0
  do i = 1, n
    total_of = total_of + v(i)
  end do
end function total_of

subroutine scale(x, n1, n2, f)
  integer :: n1, n2
  real(8) :: x(n1, n2), f
  integer :: i, j
  do j = 1, n2
    do i = 1, n1
      x(i, j) = x(i, j) * f
    end do
  end do
end subroutine scale

recursive integer function deep(n) result(r)
  integer :: n
  integer :: pad(5000)
  pad(5000) = n
  if (n == 0) then
    r = 0
  else
    r = pad(5000) + deep(n - 1)
  end if
end function deep

subroutine huge_locals
  integer :: block(300000)
  block(1) = 1
  block(300000) = 2
  print *, 'huge', block(1) + block(300000)
end subroutine huge_locals
